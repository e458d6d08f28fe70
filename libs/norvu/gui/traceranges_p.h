// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QList>

#include <functional>
#include <utility>

namespace Tellarix {
namespace Gui {
class RecordWidget;
} // namespace Gui
} // namespace Tellarix

namespace Norvu {
namespace Gui {

class Trace;

/** Factor of the displayed slot from samples to physical values, 1 if there is no usable one. */
double displayedScale(const Tellarix::Gui::RecordWidget *widget);

/** The part of a row's time in which amplitudes count. */
using WindowOfRow = std::function<Tellarix::Core::TimeWindow(const Tellarix::Gui::RecordWidget *)>;

/**
 * The amplitudes of what rows display, in physical values, the lower first; 0 and 0 without any.
 * @param windowOf  null for all data
 */
std::pair<double, double> commonAmplitudeRange(const QList<Trace *> &rows,
                                               const WindowOfRow &windowOf);

/** From the earliest start to the latest end of the raw records in all slots; empty without any. */
Tellarix::Core::TimeWindow coveredWindow(const QList<Trace *> &rows);

/** The same in seconds relative to each row's alignment; 0 and 0 without any. */
std::pair<double, double> coveredRange(const QList<Trace *> &rows);

/** The window that a view of the length of @p visible has to show to bring @p window into sight. */
Tellarix::Core::TimeWindow windowShowing(const Tellarix::Core::TimeWindow &window,
                                         Tellarix::Core::TimeWindow visible, bool center);

} // namespace Gui
} // namespace Norvu
