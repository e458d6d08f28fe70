// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/formats/checksumindex.h>
#include <tellarix/core/records/formats/miniseed.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace Formats {

/**
 * Finds the miniSEED records of either version in a run of bytes that arrives in pieces.
 *
 * What is no record is skipped up to the next place that holds one; each such run of bytes is told
 * once. The scanner reads no payload beyond the check sum of version 3: the header of a found
 * record is sound, its samples may still turn out not to be. Time grows with the number of bytes,
 * whatever they are; memory is bounded by the longest record plus the pieces that are written.
 */
class TELLARIX_CORE_API RecordScanner
{
public:
    enum class Step
    {
        Record,     /**< header() and record() are set */
        Fault,      /**< bytes from offset() on could not be read: cause() */
        Note,       /**< bytes from offset() on hold nothing: cause() */
        NeedsBytes, /**< at least wanted() more bytes, or finish() */
        Pause,      /**< nothing in the last 256 KB or so: call again */
        End,        /**< all bytes are used up */
    };

    RecordScanner() = default;

    /**
     * Whether bytes behind a record are asked for before it is given out, so that one that was cut
     * off in the middle of a file is found. On at first; off where bytes come slowly.
     */
    void setLookAhead(bool on) { _lookAhead = on; }

    /** Room for @p size further bytes; what next() gave out before is gone. */
    char *reserve(size_t size);
    /** Tells that the first @p size bytes of the room have been written. */
    void commit(size_t size);
    /** Copies @p bytes behind those that are there. */
    void append(std::string_view bytes);
    /** No further bytes will come. */
    void finish() { _complete = true; }
    /** Forgets everything; the next byte has offset 0. */
    void reset();

    /** The next thing in the bytes so far. */
    Step next();

    const MiniSeedHeader &header() const { return _header; }
    /** All bytes of the record; valid until the next call of reserve(), append() or next(). */
    std::string_view record() const { return _record; }
    /** Where the record or the run begins, counted from the first byte ever written. */
    int64_t offset() const { return _stepOffset; }
    const std::string &cause() const { return _cause; }
    /** Bytes missing after NeedsBytes, at least 1. */
    size_t wanted() const { return _wanted; }

    /** The bytes that are not used up yet. */
    std::string_view pending() const;
    /** Whether these are the beginning of a record and no more. */
    bool isInsideRecord() const;

private:
    // Nothing means: go on from where the scanner stands now.
    using OptionalStep = std::optional<Step>;

    OptionalStep stepRecord();
    OptionalStep stepFoundRecord();
    OptionalStep stepFiller();
    OptionalStep stepSkip();
    Step needs(size_t size);
    Step tell(Step step, int64_t offset, const std::string &cause);
    void beginSkip(const std::string &cause, bool quiet = false);
    OptionalStep endSkip();
    void skip(size_t size);
    void consume(size_t size);

    Finding findRecord(size_t position, MiniSeedHeader &header);
    bool hasChecksum(size_t position, const MiniSeedHeader &header);
    bool isFollowed(size_t length) const;
    Finding findInside(size_t length, size_t &position, MiniSeedHeader &header);

    bool _lookAhead{true};
    bool _complete{false};
    std::vector<char> _buffer;
    size_t _begin{0};
    size_t _end{0};
    int64_t _baseOffset{0};
    size_t _used{0};
    size_t _wanted{0};
    int64_t _lastLength{0}; /**< of the record before */

    bool _skipping{false};
    int64_t _skipOffset{0};
    std::string _skipCause;
    bool _skipQuiet{false};
    bool _skipBlank{true};

    int64_t _insideEnd{0}; /**< no record begins before it inside of the one at the base */
    ChecksumIndex _checksums;

    MiniSeedHeader _header;
    std::string_view _record;
    int64_t _stepOffset{0};
    std::string _cause;
};

} // namespace Formats
} // namespace Tellarix
