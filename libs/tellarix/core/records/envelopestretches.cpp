// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/envelopestretches_p.h>

#include <cmath>
#include <limits>

namespace Tellarix {
namespace {

/** Where the line from the last value of @p a to the first value of @p b passes @p x. */
EnvelopeColumn crossing(const EnvelopeColumn &a, const EnvelopeColumn &b, double x)
{
    const double share = (x - a.lastX) / (b.firstX - a.lastX);
    return pointAt(x, a.last + share * (b.first - a.last));
}

} // namespace

EnvelopeScale::EnvelopeScale(const Core::TimeWindow &window, double pixelsPerSecond)
    : pixelsPerSecond(pixelsPerSecond), startUSecs(static_cast<double>(window.startTime().usecs())),
      pixelsPerUSec(pixelsPerSecond * 1E-6), uSecsPerPixel(1 / pixelsPerUSec)
{
    constexpr double MostColumns = 1 << 24;
    constexpr double Rounding = 1E-6;
    const double width = std::ceil(window.length().length() * pixelsPerSecond - Rounding);
    columnCount = static_cast<int>(std::clamp(width, 1.0, MostColumns));
}

EnvelopeStretches::EnvelopeStretches(const EnvelopeScale &scale, Envelope &envelope)
    : _scale(scale), _envelope(envelope)
{}

void EnvelopeStretches::join(const RecordDigest &digest)
{
    const Core::Time end = _end;
    _end = digest.end;
    if (!end.valid() || digest.continues(end))
        return;

    if (!isOpenEmpty()) {
        const EnvelopeColumn &tail = _envelope.columns.back();
        _tails[_nextTail++ % RememberedTails] = {end, tail.lastX, tail.last};
    }
    breakStretch(digest.start < end ? EnvelopeStretch::Overlap : EnvelopeStretch::Gap);

    // A record that goes on behind another one than the last is joined to that by a point of it.
    const auto left = std::find_if(_tails.begin(), _tails.end(), [&](const Tail &tail) {
        return tail.end.valid() && digest.continues(tail.end);
    });
    if (left != _tails.end())
        add(pointAt(left->x, left->value), false);
}

void EnvelopeStretches::breakStretch(EnvelopeStretch::Cause cause)
{
    close();
    _open.cause = cause;
}

void EnvelopeStretches::close()
{
    EnvelopeStretch closed = _open;
    closed.end = _envelope.columns.size();
    if (closed.begin == closed.end)
        return;

    if (mergesIntoPrevious(closed)) {
        mergeIntoPrevious(closed);
    } else {
        cut(closed);
        if (closed.begin < closed.end) {
            widenRange(closed);
            _envelope.stretches.push_back(closed);
            _previousIsDense = _openIsDense;
        }
    }
    _open.begin = _envelope.columns.size();
}

void EnvelopeStretches::mergeIntoPrevious(const EnvelopeStretch &stretch)
{
    const EnvelopeColumn &column = _envelope.columns.back();
    EnvelopeColumn &previous = _envelope.columns[stretch.begin - 1];
    previous.minimum = std::min(previous.minimum, column.minimum);
    previous.maximum = std::max(previous.maximum, column.maximum);
    previous.lastX = std::max(previous.lastX, column.lastX);
    previous.last = column.last;
    _envelope.columns.pop_back();
    widenRange(_envelope.stretches.back());
}

void EnvelopeStretches::widenRange(const EnvelopeStretch &stretch)
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    double minimum = Infinity;
    double maximum = -Infinity;
    for (size_t i = stretch.begin; i < stretch.end; ++i) {
        const EnvelopeColumn &column = _envelope.columns[i];
        if (column.column < 0 || column.column >= _scale.columnCount)
            continue;
        minimum = std::min(minimum, column.minimum);
        maximum = std::max(maximum, column.maximum);
    }
    if (minimum > maximum)
        return;
    const bool isFirst = _envelope.minimum > _envelope.maximum;
    _envelope.minimum = isFirst ? minimum : std::min(_envelope.minimum, minimum);
    _envelope.maximum = isFirst ? maximum : std::max(_envelope.maximum, maximum);
}

bool EnvelopeStretches::mergesIntoPrevious(const EnvelopeStretch &stretch) const
{
    if (_envelope.stretches.empty() || !_openIsDense || !_previousIsDense)
        return false;
    const EnvelopeStretch &previous = _envelope.stretches.back();
    return stretch.end - stretch.begin == 1 && previous.end - previous.begin == 1 &&
           _envelope.columns[stretch.begin].column == _envelope.columns[previous.begin].column;
}

/** Takes away what lies outside of the window save one point on each side. */
void EnvelopeStretches::cut(EnvelopeStretch &stretch)
{
    std::vector<EnvelopeColumn> &columns = _envelope.columns;
    const auto begin = columns.begin() + static_cast<std::ptrdiff_t>(stretch.begin);
    auto first = begin;
    auto last = columns.end() - 1;
    if (last->column < 0 || first->column >= _scale.columnCount) {
        columns.erase(begin, columns.end());
        stretch.end = stretch.begin;
        return;
    }

    while (first != last && (first + 1)->column < 0)
        ++first;
    while (last != first && (last - 1)->column >= _scale.columnCount)
        --last;
    const double right = _scale.columnCount;
    if (first != last && first->lastX < -1 && (first + 1)->firstX > -1)
        *first = crossing(*first, *(first + 1), -1);
    if (first != last && last->firstX > right && (last - 1)->lastX < right)
        *last = crossing(*(last - 1), *last, right);
    columns.erase(last + 1, columns.end());
    columns.erase(begin, first);
    stretch.end = columns.size();
}

} // namespace Tellarix
