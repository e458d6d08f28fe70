// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/records/rowtimes_p.h>

#include <algorithm>
#include <cmath>

namespace Tellarix {
namespace Gui {

namespace {

// Far beyond any screen, and sums with it stay within an int.
constexpr double PixelLimit = 1 << 30;
// Times are whole microseconds, so a pixel border can be missed by rounding alone.
constexpr double PixelTolerance = 1E-6;

} // namespace

Core::Time RowTimes::left() const
{
    return alignment + Core::TimeSpan(tmin);
}

Core::Time RowTimes::right(int canvasWidth) const
{
    return timeAt(canvasWidth);
}

int RowTimes::xOf(double seconds) const
{
    const double x = (seconds - tmin) * pixelsPerSecond;
    if (std::isnan(x))
        return 0;
    return static_cast<int>(std::floor(std::clamp(x, -PixelLimit, PixelLimit) + PixelTolerance));
}

int RowTimes::xOf(const Core::Time &time) const
{
    return xOf((time - alignment).length());
}

Core::Time RowTimes::timeAt(int x) const
{
    return left() + Core::TimeSpan(x / pixelsPerSecond);
}

} // namespace Gui
} // namespace Tellarix
