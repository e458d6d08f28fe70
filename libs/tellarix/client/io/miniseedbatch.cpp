// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/miniseedbatch_p.h>

#include <QGlobalStatic>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace IO {

namespace {

// Some hundred microseconds of work, beside which it costs next to nothing to wake a thread.
constexpr size_t BatchBytes = 256 * 1024;
constexpr size_t BatchRecords = 4096;
// Short records are decoded several at a time.
constexpr size_t ChunkRecords = 16;
constexpr int MostThreads = 8;

/** Not the global pool: there, paint events would find no idle thread while a file is opened. */
class DecoderPool : public QThreadPool
{
public:
    DecoderPool()
    {
        // The one that waits decodes too.
        setMaxThreadCount(std::clamp(QThread::idealThreadCount() - 1, 1, MostThreads));
    }
};

Q_GLOBAL_STATIC(DecoderPool, decoderPool)
Core::PoolWork Waiting;

} // namespace

void FoundRecord::clear()
{
    message.clear();
    codes.reset();
}

void FoundRecord::decode(std::string_view bytes, SampleMemory *memory, DecodedRecord &decoded) const
{
    decoded.record.reset();
    decoded.cause.clear();
    if (!codes)
        return;
    if (header.sampleCount == 0)
        decoded.cause = "record has no samples";
    else
        decoded.record = Formats::decodeMiniSeed(header, bytes, codes, decoded.cause, memory);
}

MiniSeedBatch::MiniSeedBatch() : _content(std::make_shared<Content>())
{}

MiniSeedBatch::~MiniSeedBatch() = default;

int MiniSeedBatch::ThreadCount()
{
    return decoderPool()->maxThreadCount();
}

FoundRecord &MiniSeedBatch::room()
{
    std::vector<FoundRecord> &found = _content->found;
    if (_content->count == found.size())
        found.resize(std::max<size_t>(ChunkRecords, 2 * found.size()));
    found[_content->count].clear();
    return found[_content->count];
}

void MiniSeedBatch::add(std::string_view record)
{
    std::vector<char> &bytes = _content->bytes;
    _content->found[_content->count++].position = bytes.size();
    bytes.insert(bytes.end(), record.begin(), record.end());
}

bool MiniSeedBatch::isFull() const
{
    return byteCount() >= BatchBytes || _content->count >= BatchRecords;
}

void MiniSeedBatch::begin()
{
    if (_content->decoded.size() < _content->count)
        _content->decoded.resize(_content->found.size());
    const size_t chunks = (_content->count + ChunkRecords - 1) / ChunkRecords;
    _decoding = std::make_unique<Core::SharedCalls>(
        static_cast<int>(chunks), [content = _content](int chunk) { content->decode(chunk); });
    Waiting.start(decoderPool(), _decoding->part());
}

bool MiniSeedBatch::help()
{
    if (!_decoding->isDone())
        _decoding->part()();
    return _decoding->isDone();
}

FoundRecord *MiniSeedBatch::next()
{
    // Whoever comes later to decode finds nothing left, and does not look into the content.
    if (_next == 0)
        _decoding->finish();
    if (_next < _content->count)
        return &_content->found[_next++];
    _content->count = _next = 0;
    _content->bytes.clear();
    return nullptr;
}

void MiniSeedBatch::Content::decode(int chunk)
{
    const size_t first = static_cast<size_t>(chunk) * ChunkRecords;
    const size_t last = std::min(count, first + ChunkRecords);
    const std::string_view all(bytes.data(), bytes.size());
    for (size_t i = first; i < last; ++i)
        found[i].decode(all.substr(found[i].position, static_cast<size_t>(found[i].header.length)),
                        found[i].memory.get(), decoded[i]);
}

} // namespace IO
} // namespace Tellarix
