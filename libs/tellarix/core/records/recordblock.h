// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/forward.h>
#include <tellarix/core/records/numericarray.h>
#include <tellarix/core/timewindow.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace Tellarix {

/**
 * Where a record, or a run of neighbouring records, stands in time and between which values; kept
 * side by side in a sequence, so that a view need not look at the records themselves.
 */
struct TELLARIX_CORE_API RecordDigest
{
    RecordDigest() = default;
    explicit RecordDigest(const Record *record);

    Core::Time start;
    Core::Time end;    /**< the start for a record without an end */
    double minimum{0}; /**< infinite and above maximum if there is no finite sample */
    double maximum{0};
    float first{0}; /**< first and last sample, rounded: hold them to minimum and maximum */
    float last{0};
    float sampleInterval{0}; /**< of the first record in seconds; 0 without a usable rate */
    bool isWhole{false}; /**< all samples are finite and follow each other without gap or overlap */

    bool hasSamples() const { return minimum <= maximum; }
    bool hasExtent() const { return end > start; }
    double firstValue() const { return std::clamp<double>(first, minimum, maximum); }
    double lastValue() const { return std::clamp<double>(last, minimum, maximum); }
    /** True if this digest goes on where @p time is, to within half a sample. */
    bool continues(Core::Time time) const
    {
        const Core::TimeSpan step = start - time;
        const auto distance = static_cast<double>(step.usecs());
        return (distance < 0 ? -distance : distance) <= 0.5E6 * sampleInterval;
    }
};

/** What is known of a run of neighbouring records together. */
struct RecordRun
{
    RecordDigest digest;
    double sum{0};    /**< of the finite samples */
    int64_t count{0}; /**< of finite samples */

    SampleSummary summary() const
    {
        return count ? SampleSummary{digest.minimum, digest.maximum, sum, count} : SampleSummary();
    }
    /** Goes on with a run that begins behind this one. */
    void add(const RecordRun &next)
    {
        digest.isWhole = digest.isWhole && next.digest.isWhole && next.digest.continues(digest.end);
        digest.end = next.digest.end;
        digest.minimum = std::min(digest.minimum, next.digest.minimum);
        digest.maximum = std::max(digest.maximum, next.digest.maximum);
        digest.last = next.digest.last;
        sum += next.sum;
        count += next.count;
    }
};

/**
 * Up to Capacity neighbouring records of a sequence, by start time, with their digests and what
 * each RunLength of them have in common.
 *
 * Records have positions from begin() to end(); those before begin() are free. Everything that
 * changes a block costs at most a pass over it.
 */
class TELLARIX_CORE_API RecordBlock
{
public:
    static constexpr int RunLength = 32;
    static constexpr int Capacity = RunLength * RunLength;

    /** An empty block has its free places behind its records, or before them if @p growsToFront. */
    explicit RecordBlock(bool growsToFront = false);

    int begin() const { return _begin; }
    int end() const { return static_cast<int>(_digests.size()); }
    int size() const { return end() - begin(); }
    bool isFull() const { return size() == Capacity; }
    bool canAppend() const { return end() < Capacity; }

    const RecordCPtr &record(int position) const { return _records[static_cast<size_t>(position)]; }
    const RecordDigest &digest(int position) const
    {
        return _digests[static_cast<size_t>(position)];
    }
    /** The record at @p position alone. */
    RecordRun single(int position) const
    {
        const Sum &sum = _sums[static_cast<size_t>(position)];
        return {digest(position), sum.sum, sum.count};
    }
    /** The records from @p position, a multiple of RunLength, to runEnd(). */
    const RecordRun &run(int position) const
    {
        return _runs[static_cast<size_t>(position / RunLength)];
    }
    int runEnd(int position) const { return std::min(position + RunLength, end()); }
    /** All records of the block. */
    const RecordRun &whole() const { return _whole; }
    /**
     * The digest of the most records from @p position on, before position @p last, that is whole
     * and not longer than @p longest; the digest of the one record if there is no such run.
     * @param next  set to the position behind the digest
     */
    const RecordDigest &widestDigest(int position, int last, Core::TimeSpan longest,
                                     int &next) const
    {
        next = position + 1;
        return position % RunLength ? digest(position) : widestRun(position, last, longest, next);
    }

    Core::Time start() const { return digest(begin()).start; }
    /** The latest end of the records with an extent; not valid without one. */
    Core::Time reach() const { return _reaches.back(); }
    /** The same of the records up to and with @p position. */
    Core::Time reachAt(int position) const { return _reaches[static_cast<size_t>(position)]; }

    /** Position of the first record that starts at @p time or behind. */
    int firstStartingFrom(Core::Time time) const;
    /** Position of the first record that starts behind @p time. */
    int firstStartingBehind(Core::Time time) const;
    /** Position of the first record with an extent that ends behind @p time. */
    int firstReachingBehind(Core::Time time) const;

    /**
     * Moves @p reach on over the records from @p position on as long as each starts at most
     * @p tolerance behind it, and no further than is needed to get to @p goal.
     * @return false if there is a hole on the way
     */
    bool extend(Core::Time &reach, int position, Core::TimeSpan tolerance, Core::Time goal) const;

    void append(const RecordCPtr &record);
    /** Puts a record before that at @p position. Records before it move to lower positions if there
     *  are free ones, otherwise those behind it to higher ones. The block must not be full. */
    void insert(int position, const RecordCPtr &record);
    /** Removes fewer records than there are. */
    void removeFront(int count);
    /** Moves the second half of the records of a full block to one of its own. */
    std::unique_ptr<RecordBlock> split();

    /** Without the records. */
    size_t memorySize() const;

private:
    struct Sum
    {
        double sum;
        int64_t count;
    };

    Core::TimeSpan holeIn(int position) const
    {
        return _holes[static_cast<size_t>(position / RunLength)];
    }
    const RecordDigest &widestRun(int position, int last, Core::TimeSpan longest, int &next) const;
    template <typename T>
    void insertInto(std::vector<T> &items, int position, const T &item);
    void update(int first, int last);
    void updateRun(int position);
    void updateWhole();
    void addReach(int position);

    std::vector<RecordCPtr> _records;
    std::vector<RecordDigest> _digests;
    std::vector<Sum> _sums; /**< beside the digests, which views read one after the other */
    std::vector<Core::Time> _reaches; /**< latest end of the records with an extent up to here */
    std::vector<RecordRun> _runs;
    std::vector<Core::TimeSpan> _holes; /**< widest between records with an extent, for each run */
    RecordRun _whole;
    int _begin{0};
};

} // namespace Tellarix
