// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/time.h>
#include <tellarix/qt/api.h>

namespace Tellarix {
namespace Gui {

/** Where times lie in a canvas: seconds are counted from the alignment, pixels from tmin. */
struct TELLARIX_GUI_API RowTimes
{
    Core::Time alignment;
    double tmin{0};
    double tmax{0}; /**< kept for asking: the scale decides how far a canvas reaches */
    double pixelsPerSecond{1};

    /** Time at the left edge, and at the right edge of a canvas. */
    Core::Time left() const;
    Core::Time right(int canvasWidth) const;
    /** Pixel of a time; limited to what an int holds. */
    int xOf(double seconds) const;
    int xOf(const Core::Time &time) const;
    Core::Time timeAt(int x) const;
};

} // namespace Gui
} // namespace Tellarix
