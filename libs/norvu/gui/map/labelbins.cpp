// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/labelbins_p.h>

#include <algorithm>
#include <limits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "norvu/gui/map/labelbins.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Compiled once for each instruction set; the best one is chosen as the program runs.
HWY_BEFORE_NAMESPACE();
namespace Norvu {
namespace Gui {
namespace Map {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/** Whether a rectangle touches none of those in some bins. */
bool hasRoom(const EdgeBlock *blocks, const int32_t *bins, int count, int32_t left, int32_t right,
             int32_t top, int32_t bottom)
{
    const hn::CappedTag<int32_t, EdgeBlock::Size> tag;
    const auto lanes = static_cast<int>(hn::Lanes(tag));
    const auto lefts = hn::Set(tag, left);
    const auto rights = hn::Set(tag, right);
    const auto tops = hn::Set(tag, top);
    const auto bottoms = hn::Set(tag, bottom);
    for (int bin = 0; bin < count; ++bin) {
        // Within a bin, a way out half-way would be guessed wrongly more often than it saves.
        auto apart = hn::Eq(lefts, lefts);
        for (int32_t index = bins[bin]; index >= 0; index = blocks[index].next) {
            const EdgeBlock &block = blocks[index];
            for (int i = 0; i < EdgeBlock::Size; i += lanes) {
                const auto beside = hn::Or(hn::Gt(hn::LoadU(tag, block.left + i), rights),
                                           hn::Gt(lefts, hn::LoadU(tag, block.right + i)));
                const auto beyond = hn::Or(hn::Gt(hn::LoadU(tag, block.top + i), bottoms),
                                           hn::Gt(tops, hn::LoadU(tag, block.bottom + i)));
                apart = hn::And(apart, hn::Or(beside, beyond));
            }
        }
        if (!hn::AllTrue(tag, apart))
            return false;
    }
    return true;
}

} // namespace HWY_NAMESPACE
} // namespace Map
} // namespace Gui
} // namespace Norvu
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Norvu {
namespace Gui {
namespace Map {

HWY_EXPORT(hasRoom);

namespace {

constexpr int32_t Lowest = std::numeric_limits<int32_t>::min();
constexpr int32_t Highest = std::numeric_limits<int32_t>::max();

/** Edges as QRect::intersects() compares them: those of a negative size turned round, those of a
 *  null rectangle so that it touches nothing. */
struct Edges
{
    explicit Edges(const QRect &rect)
        : left(rect.left()), right(rect.right()), top(rect.top()), bottom(rect.bottom())
    {
        if (rect.isNull()) {
            left = Highest;
            right = Lowest;
            return;
        }
        // A size of 0 is not turned round.
        if (int64_t(right) + 1 < left)
            std::swap(left, right);
        if (int64_t(bottom) + 1 < top)
            std::swap(top, bottom);
    }

    int32_t left;
    int32_t right;
    int32_t top;
    int32_t bottom;
};

} // namespace

EdgeBlock::EdgeBlock(int32_t next_) : next(next_)
{
    std::fill(left, left + Size, Highest);
    std::fill(right, right + Size, Lowest);
    std::fill(top, top + Size, Highest);
    std::fill(bottom, bottom + Size, Lowest);
}

// A font without a height would have rows of none.
LabelBins::LabelBins(const QSize &canvas, int rowHeight)
    : _width(canvas.width()), _rowHeight(std::max(rowHeight, 1)),
      _newest(static_cast<size_t>(std::max(canvas.height(), 0) / _rowHeight) + 1, -1),
      _counts(_newest.size())
{}

bool LabelBins::place(const QRect &rect)
{
    const auto center = static_cast<int>((int64_t(rect.left()) + rect.right()) / 2);
    if (center < 0 || center >= _width)
        return false;

    const auto rows = static_cast<int>(_newest.size());
    const int first = rect.top() / _rowHeight;
    const int last = rect.bottom() / _rowHeight;
    if (first >= rows || last < 0)
        return false;

    const Edges edges(rect);
    const int begin = std::max(first, 0);
    const int end = std::min(last, rows - 1) + 1;
    if (!HWY_DYNAMIC_DISPATCH(hasRoom)(_blocks.data(), _newest.data() + begin, end - begin,
                                       edges.left, edges.right, edges.top, edges.bottom))
        return false;

    for (auto bin = static_cast<size_t>(begin); bin < static_cast<size_t>(end); ++bin) {
        const int slot = _counts[bin]++ % EdgeBlock::Size;
        if (slot == 0) {
            _blocks.emplace_back(_newest[bin]);
            _newest[bin] = static_cast<int32_t>(_blocks.size()) - 1;
        }
        EdgeBlock &block = _blocks[static_cast<size_t>(_newest[bin])];
        block.left[slot] = edges.left;
        block.right[slot] = edges.right;
        block.top[slot] = edges.top;
        block.bottom[slot] = edges.bottom;
    }
    return true;
}

} // namespace Map
} // namespace Gui
} // namespace Norvu

#endif
