// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/records/envelope.h>
#include <tellarix/core/records/recordblock.h>

#include <algorithm>
#include <array>

namespace Tellarix {

/** Pixel column of an x, far outside limited to what an int holds. */
inline int columnAt(double x)
{
    constexpr double Limit = 1 << 30;
    const double limited = std::clamp(x, -Limit, Limit);
    const int truncated = static_cast<int>(limited);
    return truncated - (limited < truncated);
}

/** A column with one value. */
inline EnvelopeColumn pointAt(double x, double value)
{
    return {columnAt(x), x, x, value, value, value, value};
}

/** Where times stand in the columns of an envelope. */
struct EnvelopeScale
{
    /** @param pixelsPerSecond  above 0 and finite */
    EnvelopeScale(const Core::TimeWindow &window, double pixelsPerSecond);

    double xOf(Core::Time time) const
    {
        return (static_cast<double>(time.usecs()) - startUSecs) * pixelsPerUSec;
    }
    /** Twice the microseconds at which a column ends. */
    double doubleEndOf(int column) const { return 2 * (startUSecs + (column + 1) * uSecsPerPixel); }

    double pixelsPerSecond;
    double startUSecs;
    double pixelsPerUSec;
    double uSecsPerPixel;
    int columnCount; /**< columns of the window */
};

/**
 * Writes the columns of an envelope and divides them into stretches: joins records that continue
 * each other, breaks at gaps and overlaps, and takes away what lies outside of the window.
 */
class EnvelopeStretches
{
public:
    EnvelopeStretches(const EnvelopeScale &scale, Envelope &envelope);

    /** Begins a new stretch unless @p digest goes on where the last record ended. */
    void join(const RecordDigest &digest);
    void breakStretch(EnvelopeStretch::Cause cause);
    /** Ends the last stretch. */
    void close();

    /** Adds a column, to the one before if that is the same and @p merge is true. */
    void add(const EnvelopeColumn &column, bool merge)
    {
        std::vector<EnvelopeColumn> &columns = _envelope.columns;
        const bool begins = isOpenEmpty();
        // Whole records and blocks may count to a column before the one where they begin.
        const int index = begins ? column.column : std::max(column.column, columns.back().column);

        if (begins)
            _openIsDense = merge;
        if (begins || !merge || columns.back().column != index) {
            columns.push_back(column);
            columns.back().column = index;
            _doubleColumnEnd = _scale.doubleEndOf(index);
            return;
        }
        EnvelopeColumn &open = columns.back();
        open.lastX = column.lastX;
        open.last = column.last;
        open.minimum = std::min(open.minimum, column.minimum);
        open.maximum = std::max(open.maximum, column.maximum);
    }

    /** Adds @p count columns behind the last one, each made by @p fill(column, index) in place: a
     *  copy of what was just written value by value would have to wait for it. */
    template <typename Fill>
    void append(int count, Fill fill)
    {
        const size_t size = _envelope.columns.size();
        _envelope.columns.resize(size + static_cast<size_t>(count));
        EnvelopeColumn *target = _envelope.columns.data() + size;
        for (int i = 0; i < count; ++i)
            fill(*target++, i);
        _doubleColumnEnd = _scale.doubleEndOf(lastColumn());
    }

    /** Column that was added last. */
    int lastColumn() const { return _envelope.columns.back().column; }

    /**
     * Takes in a whole record that goes on in the open column, the usual case of a view over many
     * records; false if it isn't such a one.
     * @param longestSnapped   of such records in microseconds
     * @param longestInterval  of their samples in seconds
     */
    bool widen(const RecordDigest &digest, double longestSnapped, double longestInterval)
    {
        const auto begin = static_cast<double>(digest.start.usecs());
        const auto end = static_cast<double>(digest.end.usecs());
        if (!digest.isWhole || digest.start != _end || isOpenEmpty() || !_openIsDense ||
            begin + end >= _doubleColumnEnd || end - begin > longestSnapped ||
            digest.sampleInterval > longestInterval)
            return false;

        _end = digest.end;
        EnvelopeColumn &open = _envelope.columns.back();
        open.lastX = (end - _scale.startUSecs) * _scale.pixelsPerUSec -
                     digest.sampleInterval * _scale.pixelsPerSecond;
        open.minimum = std::min(open.minimum, digest.minimum);
        open.maximum = std::max(open.maximum, digest.maximum);
        open.last = digest.lastValue();
        return true;
    }

private:
    /** Ends of stretches that are remembered while others are drawn over them. */
    static constexpr size_t RememberedTails = 4;

    /** Where a stretch was left for another one. */
    struct Tail
    {
        Core::Time end;
        double x{0};
        double value{0};
    };

    bool isOpenEmpty() const { return _envelope.columns.size() == _open.begin; }
    void widenRange(const EnvelopeStretch &stretch);
    void cut(EnvelopeStretch &stretch);
    bool mergesIntoPrevious(const EnvelopeStretch &stretch) const;
    void mergeIntoPrevious(const EnvelopeStretch &stretch);

    const EnvelopeScale _scale;
    Envelope &_envelope;
    double _doubleColumnEnd{0}; /**< twice the microseconds where the open column ends */
    EnvelopeStretch _open{0, 0, EnvelopeStretch::Begin};
    bool _openIsDense{false};
    bool _previousIsDense{false};
    Core::Time _end;
    std::array<Tail, RememberedTails> _tails;
    size_t _nextTail{0};
};

} // namespace Tellarix
