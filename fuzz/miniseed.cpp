// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/recordscanner.h>
#include <tellarix/core/records/record.h>

#include <algorithm>
#include <cstdlib>

using namespace Tellarix::Formats;

// The first byte says in which pieces the others arrive and whether the scanner looks ahead.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;

    const size_t pieceSize = 1 + (data[0] >> 1) * 16u;
    std::string_view rest(reinterpret_cast<const char *>(data + 1), size - 1);
    RecordScanner scanner;
    scanner.setLookAhead(data[0] & 1);
    MiniSeedDecoder decoder;
    std::string cause;
    int64_t last = -1;
    for (;;) {
        const RecordScanner::Step step = scanner.next();
        if (step == RecordScanner::Step::End)
            return 0;
        if (step == RecordScanner::Step::Pause)
            continue;
        if (step == RecordScanner::Step::NeedsBytes) {
            if (rest.empty())
                scanner.finish();
            const size_t count = std::min(pieceSize, rest.size());
            scanner.append(rest.substr(0, count));
            rest.remove_prefix(count);
            continue;
        }
        // A scanner that stood still would never come to the end.
        if (scanner.offset() <= last || scanner.offset() >= static_cast<int64_t>(size))
            std::abort();
        last = scanner.offset();
        if (step == RecordScanner::Step::Record &&
            !decoder.decode(scanner.header(), scanner.record(), cause) && cause.empty())
            std::abort();
    }
}
