// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <QRect>
#include <QSize>

#include <cstdint>
#include <vector>

namespace Norvu {
namespace Gui {
namespace Map {

/** Edges of rectangles side by side, so that several are compared at once. */
struct EdgeBlock
{
    static constexpr int Size = 16;

    explicit EdgeBlock(int32_t next);

    // Those that aren't taken touch nothing.
    int32_t left[Size];
    int32_t right[Size];
    int32_t top[Size];
    int32_t bottom[Size];
    int32_t next; /**< index of another block of the same bin, or -1 */
};

/**
 * Room on a canvas, given to labels first come, first served: none overlaps another in the meaning
 * of QRect::intersects(). Rectangles are kept in bins of one row height each, so that a label is
 * compared with those in the rows alone that it touches.
 */
class NORVU_GUI_API LabelBins
{
public:
    /** @param rowHeight  in pixels; below 1 it counts as 1 */
    LabelBins(const QSize &canvas, int rowHeight);

    /**
     * Takes the room of a label. False, with nothing taken, if another label has some of it, if its
     * centre lies left or right of the canvas, or if all of it lies above or below. Rows are
     * counted from the top by truncating division, so the row above the canvas is the first one.
     */
    bool place(const QRect &rect);

private:
    int _width;
    int _rowHeight;
    std::vector<EdgeBlock> _blocks; /**< of all bins */
    std::vector<int32_t> _newest;   /**< block of each bin that is being filled, or -1 */
    std::vector<int> _counts;       /**< rectangles of each bin */
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
