// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/miniseedreader_p.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

#include <utility>

namespace Tellarix {
namespace IO {

namespace {

using Step = Formats::RecordScanner::Step;
using Severity = StreamMessage::Severity;

// Small enough to stay in the second-level cache between reading and decoding.
constexpr size_t BlockSize = 256 * 1024;
// What is no record within so many bytes from the start makes the file one of another format.
constexpr int64_t MaxGarbage = 16 * 1024 * 1024;
constexpr size_t SignatureSize = 48;
// A smaller file is decoded before other threads have woken up.
constexpr int64_t LeastSizeForThreads = 1024 * 1024;
constexpr int LeastBatches = 6;
constexpr int BatchesPerThread = 2;

} // namespace

RecordFormat miniSeedFormat()
{
    return {"miniSEED",
            {"mseed", "msd", "mseed3", "ms3"},
            SignatureSize,
            Formats::beginsLikeMiniSeed,
            [](RecordInput &input) { return std::make_unique<MiniSeedReader>(input); },
            RecordFormat::Search::BehindDamage};
}

MiniSeedReader::MiniSeedReader(RecordInput &input) : _input(input)
{
    _scanner.setLookAhead(input.size() >= 0);
}

bool MiniSeedReader::begin(std::string &cause)
{
    if (_input.size() < 0)
        return true;
    // What begins like a record is one, or damage that is told.
    if (readMore() && Formats::beginsLikeMiniSeed(_scanner.pending()))
        return true;
    while (!_input.isClosed()) {
        const Step step = _scanner.next();
        if (step == Step::Pause)
            continue;
        if (step != Step::NeedsBytes) {
            _heldStep = step;
            if (step == Step::Record || !_scanner.pending().empty())
                return true;
            break;
        }
        if (_bytesRead > MaxGarbage)
            break;
        if (!readMore())
            _scanner.finish();
    }
    cause = "holds no record of miniSEED";
    return _input.isClosed();
}

/** Blocks of one size, however many bytes are wanted: a damaged header may want any number of
 *  them. */
bool MiniSeedReader::readMore()
{
    const size_t count = _input.read(_scanner.reserve(BlockSize), BlockSize);
    _scanner.commit(count);
    _bytesRead += static_cast<int64_t>(count);
    return count > 0;
}

RecordPtr MiniSeedReader::next()
{
    return _input.size() < LeastSizeForThreads ? nextAlone() : nextOfBatches();
}

RecordPtr MiniSeedReader::nextAlone()
{
    bool pauses = false;
    while (!_input.isClosed() && !_atEnd) {
        _found.clear();
        if (!find(_found, pauses))
            continue;
        _found.decode(_scanner.record(), nullptr, _decoded);
        if (const RecordPtr record = deliver(_found, _decoded))
            return record;
    }
    return RecordPtr();
}

RecordPtr MiniSeedReader::nextOfBatches()
{
    while (!_input.isClosed()) {
        if (_ahead.empty()) {
            lookAhead();
            if (_ahead.empty() && _atEnd)
                break;
            continue;
        }
        if (!_isFrontDone)
            finishFront();
        while (FoundRecord *found = _ahead.front()->next()) {
            if (const RecordPtr record = deliver(*found, _ahead.front()->decoded()))
                return record;
            if (_input.isClosed())
                return RecordPtr();
        }
        _spare.push_back(std::move(_ahead.front()));
        _ahead.pop_front();
        _isFrontDone = false;
        lookAhead();
    }
    return RecordPtr();
}

/** While another thread is at the first batch, which on a busy machine can take a while, this one
 *  goes on with those behind it. */
void MiniSeedReader::finishFront()
{
    _isFrontDone = true;
    for (const auto &batch : _ahead) {
        batch->help();
        if (_ahead.front()->help() || _input.isClosed())
            return;
    }
}

/** Fills up what is ahead, at least by a part: in a stretch without records it stays empty. */
void MiniSeedReader::lookAhead()
{
    const auto most =
        static_cast<size_t>(LeastBatches + BatchesPerThread * MiniSeedBatch::ThreadCount());
    size_t bytes = 0;
    for (const auto &batch : _ahead)
        bytes += batch->byteCount();
    for (size_t count = _ahead.size(); count < most && bytes < most * BlockSize && !_atEnd;
         ++count) {
        if (_spare.empty())
            _spare.push_back(std::make_unique<MiniSeedBatch>());
        fill(*_spare.back());
        if (_spare.back()->isEmpty())
            continue;
        _ahead.push_back(std::move(_spare.back()));
        _spare.pop_back();
        bytes += _ahead.back()->byteCount();
        _ahead.back()->begin();
    }
}

/** Fills a batch up to a pause: what was found must not wait until a long stretch without records
 *  has been read. */
void MiniSeedReader::fill(MiniSeedBatch &batch)
{
    bool pauses = false;
    while (!batch.isFull() && !pauses && !_atEnd && !_input.isClosed()) {
        FoundRecord &found = batch.room();
        if (find(found, pauses))
            batch.add(found.codes ? _scanner.record() : std::string_view());
    }
}

/** Takes a step of the scanner; false if there is nothing to deliver.
 *  @param pauses  set if there was nothing in many bytes */
bool MiniSeedReader::find(FoundRecord &found, bool &pauses)
{
    const Step step = _heldStep ? *_heldStep : _scanner.next();
    _heldStep.reset();
    found.offset = _scanner.offset();
    switch (step) {
    case Step::Record:
        return findRecord(found);
    case Step::Fault:
    case Step::Note:
        found.severity = step == Step::Fault ? Severity::Fault : Severity::Note;
        found.message = _scanner.cause();
        return true;
    case Step::NeedsBytes:
        if (!readMore())
            _scanner.finish();
        break;
    case Step::Pause:
        pauses = true;
        break;
    case Step::End:
        _atEnd = true;
        break;
    }
    return false;
}

/** The record that the scanner stands at, if it is requested. */
bool MiniSeedReader::findRecord(FoundRecord &found)
{
    const Formats::MiniSeedHeader &header = _scanner.header();
    const Formats::MiniSeedDecoder::Stream &stream = _decoder.stream(header);
    if (!_input.isRequested(*stream.codes, header.timeWindow()))
        return false;

    found.header = header;
    found.header.identifier = {};
    found.codes = stream.codes;
    found.memory = stream.memory;
    found.severity = Severity::Fault;
    if (!header.cause.empty())
        found.message = stream.codes->id() + ": " + header.cause;
    return true;
}

/** Tells what there is to tell; null without a record. */
RecordPtr MiniSeedReader::deliver(const FoundRecord &found, DecodedRecord &decoded)
{
    if (!found.message.empty())
        _input.tell(found.severity, found.offset, found.message);
    if (!decoded.cause.empty())
        _input.tell(found.header.sampleCount == 0 ? Severity::Note : Severity::Fault, found.offset,
                    found.codes->id() + ": " + decoded.cause);
    if (decoded.record)
        _originOffset = found.offset;
    return std::move(decoded.record);
}

} // namespace IO
} // namespace Tellarix
