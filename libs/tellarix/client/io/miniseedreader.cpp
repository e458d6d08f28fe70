// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/miniseedreader_p.h>

#include <tellarix/core/records/record.h>
#include <tellarix/core/records/streamcodes.h>

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
    while (!_input.isClosed()) {
        const Step step = _heldStep ? *_heldStep : _scanner.next();
        _heldStep.reset();
        switch (step) {
        case Step::Record:
            if (const RecordPtr record = decodeFound())
                return record;
            break;
        case Step::Fault:
            _input.tell(Severity::Fault, _scanner.offset(), _scanner.cause());
            break;
        case Step::Note:
            _input.tell(Severity::Note, _scanner.offset(), _scanner.cause());
            break;
        case Step::NeedsBytes:
            if (!readMore())
                _scanner.finish();
            break;
        case Step::Pause:
            break;
        case Step::End:
            return RecordPtr();
        }
    }
    return RecordPtr();
}

/** The record that the scanner stands at; null if it is not requested or can't be read. */
RecordPtr MiniSeedReader::decodeFound()
{
    const Formats::MiniSeedHeader &header = _scanner.header();
    const StreamCodes &codes = *_decoder.codes(header);
    if (!_input.isRequested(codes, header.timeWindow()))
        return RecordPtr();

    const auto tell = [&](Severity severity, const std::string &cause) {
        _input.tell(severity, _scanner.offset(), codes.id() + ": " + cause);
    };
    if (!header.cause.empty())
        tell(Severity::Fault, header.cause);
    if (header.sampleCount == 0) {
        tell(Severity::Note, "record has no samples");
        return RecordPtr();
    }

    std::string cause;
    const RecordPtr record = _decoder.decode(header, _scanner.record(), cause);
    if (!cause.empty())
        tell(Severity::Fault, cause);
    if (record)
        _originOffset = _scanner.offset();
    return record;
}

} // namespace IO
} // namespace Tellarix
