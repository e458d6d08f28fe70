// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/timewindow.h>

#include <algorithm>

namespace Tellarix {
namespace Core {
namespace {

/** Lets queued connections and models carry these types without further ado. */
void registerMetaTypes()
{
    qRegisterMetaType<Time>("Tellarix::Core::Time");
    qRegisterMetaType<TimeSpan>("Tellarix::Core::TimeSpan");
    qRegisterMetaType<TimeWindow>("Tellarix::Core::TimeWindow");
    QMetaType::registerComparators<Time>();
    QMetaType::registerComparators<TimeSpan>();
    QMetaType::registerEqualsComparator<TimeWindow>();
}
Q_CONSTRUCTOR_FUNCTION(registerMetaTypes)

} // namespace

TimeWindow TimeWindow::overlap(const TimeWindow &other) const
{
    if (!valid() || !other.valid() || !overlaps(other))
        return {};

    return {std::max(_start, other._start), std::min(_end, other._end)};
}

TimeWindow TimeWindow::united(const TimeWindow &other) const
{
    if (!valid())
        return other.valid() ? other : TimeWindow();
    if (!other.valid())
        return *this;

    return {std::min(_start, other._start), std::max(_end, other._end)};
}

} // namespace Core
} // namespace Tellarix
