// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/sac.h>
#include <tellarix/core/records/record.h>

#include <cstdlib>

using namespace Tellarix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    std::string cause;
    const RecordPtr record = Formats::decodeSac(bytes, cause);
    if (!record && cause.empty())
        std::abort();
    if (record && static_cast<size_t>(record->sampleCount()) * 4 > size)
        std::abort();
    return 0;
}
