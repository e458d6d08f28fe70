// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/recordstream.h>
#include <tellarix/core/records/record.h>

#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

using namespace Tellarix;

namespace {

// One fault for all that is left out, besides those that are told.
constexpr int MostMessages = 1001;

void check(bool holds)
{
    if (!holds)
        std::abort();
}

void readAll(IO::RecordStream &stream, size_t size)
{
    int messages = 0;
    stream.setMessageHandler([&](const IO::StreamMessage &message) {
        check(++messages <= MostMessages);
        check(!message.cause.empty() && message.offset < static_cast<int64_t>(size));
    });
    if (!stream.open()) {
        check(!stream.errorString().empty());
        return;
    }
    int64_t last = -1;
    while (const RecordPtr record = stream.next()) {
        check(record->sampleCount() > 0 && stream.originOffset() > last);
        last = stream.originOffset();
    }
    check(stream.progress() == 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const int file = ::memfd_create("records", MFD_CLOEXEC);
    check(file >= 0 && ::write(file, data, size) == static_cast<ssize_t>(size));
    std::string error;
    const IO::RecordStreamPtr stream =
        IO::RecordStream::Create("file:///proc/self/fd/" + std::to_string(file), &error);
    check(stream || !error.empty());
    if (stream)
        readAll(*stream, size);
    ::close(file);
    return 0;
}
