// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/formats/recordscanner.h>

#include <algorithm>
#include <cstring>

namespace Tellarix {
namespace Formats {

namespace {

// With so many bytes it is certain whether a record begins somewhere.
constexpr size_t SignatureSize = 48;
constexpr size_t MinFillerSize = 256;
constexpr size_t MaxFillerSize = 32768;
constexpr int64_t PauseSize = 256 * 1024;
constexpr size_t SkipSize = 64 * 1024;

bool isBlank(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == '\0' || c == ' '; });
}

/** The first place from @p position on at which a data record might begin; the end if none. */
size_t nextCandidate(std::string_view bytes, size_t position)
{
    for (; position + 8 <= bytes.size(); ++position) {
        const char *at = bytes.data() + position;
        const bool version2 = (at[7] == ' ' || at[7] == '\0') &&
                              (at[6] == 'D' || at[6] == 'R' || at[6] == 'Q' || at[6] == 'M');
        const bool version3 = at[0] == 'M' && at[1] == 'S' && at[2] == 3;
        if ((version2 || version3) && beginsLikeMiniSeed(bytes.substr(position)))
            return position;
    }
    return bytes.size();
}

std::string cutOff(int64_t length, size_t rest)
{
    return "record of " + std::to_string(length) + " bytes is cut off after " +
           std::to_string(rest) + " bytes";
}

} // namespace

char *RecordScanner::reserve(size_t size)
{
    consume(_used);
    _used = 0;
    if (_end + size <= _buffer.size())
        return _buffer.data() + _end;

    // Half as much again as there is: bytes are moved a few times each, in however many pieces
    // they come.
    const size_t used = _end - _begin;
    const size_t wanted = used + used / 2 + size;
    std::vector<char> larger(wanted > _buffer.size() ? wanted : 0);
    std::vector<char> &target = larger.empty() ? _buffer : larger;
    if (used > 0)
        std::memmove(target.data(), _buffer.data() + _begin, used);
    if (!larger.empty())
        _buffer.swap(larger);
    _begin = 0;
    _end = used;
    return _buffer.data() + _end;
}

void RecordScanner::commit(size_t size)
{
    Q_ASSERT(_end + size <= _buffer.size());
    _end += size;
}

void RecordScanner::append(std::string_view bytes)
{
    if (bytes.empty())
        return;
    std::memcpy(reserve(bytes.size()), bytes.data(), bytes.size());
    commit(bytes.size());
}

void RecordScanner::reset()
{
    _complete = false;
    _begin = _end = _used = 0;
    _baseOffset = 0;
    _lastLength = 0;
    _skipping = false;
    _insideEnd = 0;
    _checksums.clear();
}

std::string_view RecordScanner::pending() const
{
    return std::string_view(_buffer.data() + _begin, _end - _begin);
}

bool RecordScanner::isInsideRecord() const
{
    MiniSeedHeader header;
    const Finding finding = parseMiniSeedHeader(pending(), false, header);
    const bool isCut =
        finding == Finding::Record && header.length > static_cast<int64_t>(pending().size());
    return !pending().empty() && (isCut || finding == Finding::Incomplete);
}

RecordScanner::Step RecordScanner::next()
{
    consume(_used);
    _used = 0;
    const int64_t pauseOffset = _baseOffset + PauseSize;
    while (_baseOffset < pauseOffset) {
        if (const OptionalStep step = _skipping ? stepSkip() : stepRecord())
            return *step;
    }
    return Step::Pause;
}

RecordScanner::OptionalStep RecordScanner::stepRecord()
{
    if (pending().empty())
        return _complete ? Step::End : needs(1);

    switch (findRecord(0, _header)) {
    case Finding::Record:
        return stepFoundRecord();
    case Finding::Filler:
        return stepFiller();
    case Finding::Incomplete:
        return needs(_header.needed);
    case Finding::Damaged:
    case Finding::Foreign:
        beginSkip(_header.cause);
        break;
    }
    return {};
}

RecordScanner::OptionalStep RecordScanner::stepFoundRecord()
{
    const size_t length = static_cast<size_t>(_header.length);
    if (_lookAhead && !_complete && pending().size() < length + SignatureSize)
        return needs(length + SignatureSize);

    // The check sum vouches for version 3. A damaged length may also swallow the next records, in
    // which case something does follow it.
    if (_header.version == 2 && (_header.length != _lastLength || !isFollowed(length))) {
        size_t position = 0;
        MiniSeedHeader inside;
        const Finding finding = findInside(length, position, inside);
        if (finding == Finding::Incomplete)
            return needs(position + inside.needed);
        if (finding == Finding::Record) {
            const int64_t offset = _baseOffset;
            consume(position);
            return tell(Step::Fault, offset, cutOff(_header.length, position));
        }
    }
    _record = pending().substr(0, length);
    _used = length;
    _lastLength = _header.length;
    return tell(Step::Record, _baseOffset, _header.cause);
}

/** Control headers don't tell their length: it is a power of two, and something follows them. */
RecordScanner::OptionalStep RecordScanner::stepFiller()
{
    for (size_t size = MinFillerSize; size <= MaxFillerSize; size *= 2) {
        if (pending().size() < size + SignatureSize && !_complete)
            return needs(size + SignatureSize);
        if (size < pending().size() && beginsLikeMiniSeed(pending().substr(size))) {
            consume(size);
            return {};
        }
    }
    beginSkip(std::string(), true);
    return {};
}

RecordScanner::OptionalStep RecordScanner::stepSkip()
{
    const std::string_view bytes = pending().substr(0, SkipSize);
    const size_t position = nextCandidate(bytes, 0);
    if (position < bytes.size()) {
        skip(position);
        MiniSeedHeader candidate;
        const Finding finding = findRecord(0, candidate);
        if (finding == Finding::Record)
            return endSkip();
        if (finding == Finding::Incomplete)
            return needs(candidate.needed);
        skip(1);
        return {};
    }
    const bool all = bytes.size() == pending().size();
    if (all && _complete) {
        skip(bytes.size());
        return endSkip();
    }
    // The beginning of a record may stand at the end of what is there.
    skip(bytes.size() - std::min(bytes.size(), SignatureSize));
    if (all)
        return needs(2 * SignatureSize);
    return {};
}

RecordScanner::Step RecordScanner::needs(size_t size)
{
    _wanted = size > pending().size() ? size - pending().size() : 1;
    return Step::NeedsBytes;
}

RecordScanner::Step RecordScanner::tell(Step step, int64_t offset, const std::string &cause)
{
    _stepOffset = offset;
    _cause = cause;
    return step;
}

void RecordScanner::beginSkip(const std::string &cause, bool quiet)
{
    _skipping = true;
    _skipOffset = _baseOffset;
    _skipCause = cause;
    _skipQuiet = quiet;
    _skipBlank = cause.empty();
    skip(1);
}

RecordScanner::OptionalStep RecordScanner::endSkip()
{
    _skipping = false;
    if (_skipQuiet)
        return {};

    const std::string size = std::to_string(_baseOffset - _skipOffset);
    if (_skipBlank)
        return tell(Step::Note, _skipOffset, size + " empty bytes");
    return tell(Step::Fault, _skipOffset,
                _skipCause.empty() ? size + " bytes that are no record" : _skipCause);
}

void RecordScanner::skip(size_t size)
{
    _skipBlank = _skipBlank && isBlank(pending().substr(0, size));
    consume(size);
}

void RecordScanner::consume(size_t size)
{
    _begin += size;
    _baseOffset += static_cast<int64_t>(size);
}

/** A record that is there with all its bytes at @p position of the pending ones. */
Finding RecordScanner::findRecord(size_t position, MiniSeedHeader &header)
{
    const std::string_view bytes = pending().substr(position);
    const Finding finding = parseMiniSeedHeader(bytes, _complete, header);
    if (finding != Finding::Record)
        return finding;

    if (header.length == 0) {
        const int64_t length = guessMiniSeedLength(bytes, _complete);
        header.needed = bytes.size() + 1;
        if (length == 0)
            return Finding::Incomplete;
        header.cause = "record does not tell its length, nor does what follows it";
        if (length < 0)
            return Finding::Damaged;
        header.cause.clear();
        if (!header.setLength(length))
            return Finding::Damaged;
    }
    const bool all = bytes.size() >= static_cast<size_t>(header.length);
    if (!all && _complete) {
        header.cause = cutOff(header.length, bytes.size());
        return Finding::Damaged;
    }
    if (header.version == 3 && !hasChecksum(position, header)) {
        header.cause = "check sum of the record is wrong";
        return Finding::Damaged;
    }
    header.needed = static_cast<size_t>(header.length);
    return all ? Finding::Record : Finding::Incomplete;
}

/** True also as long as bytes are missing, of which those that are there are summed up by then. */
bool RecordScanner::hasChecksum(size_t position, const MiniSeedHeader &header)
{
    const int64_t offset = _baseOffset + static_cast<int64_t>(position);
    const size_t length = static_cast<size_t>(header.length);
    const std::string_view bytes = pending().substr(position, length);
    if (bytes.size() == length)
        return miniSeed3Checksum(bytes, offset, _checksums) == header.checksum;
    _checksums.prepare(bytes, offset);
    return true;
}

bool RecordScanner::isFollowed(size_t length) const
{
    const std::string_view rest = pending().substr(length);
    return rest.size() < SignatureSize || beginsLikeMiniSeed(rest);
}

/** Looks for a record that begins before the end of the first @p length pending bytes. */
Finding RecordScanner::findInside(size_t length, size_t &position, MiniSeedHeader &header)
{
    // With the end of the last signature, which may stand behind the record's.
    const std::string_view bytes = pending().substr(0, length + SignatureSize);
    position = SignatureSize;
    if (_insideEnd > _baseOffset)
        position = std::max(position, static_cast<size_t>(_insideEnd - _baseOffset));
    for (position = nextCandidate(bytes, position); position < length;
         position = nextCandidate(bytes, position + 1)) {
        const Finding finding = findRecord(position, header);
        _insideEnd = _baseOffset + static_cast<int64_t>(position);
        if (finding == Finding::Record || finding == Finding::Incomplete)
            return finding;
    }
    return Finding::Foreign;
}

} // namespace Formats
} // namespace Tellarix
