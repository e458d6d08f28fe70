// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QVector>

namespace Workbench {

/**
 * Groups the windows of records into stretches that are worth looking at one by one.
 *
 * Recordings of single events may lie years apart, so that a view of all of them shows nothing but
 * thin lines. A new stretch begins where no window covers a time longer than half of all that is
 * covered, and longer than a minute.
 *
 * @param windows  windows in any order, which may overlap; empty ones don't count
 * @return stretches in ascending order, disjoint
 */
QVector<Tellarix::Core::TimeWindow> dataStretches(QVector<Tellarix::Core::TimeWindow> windows);

/**
 * Windows in ascending order, those united that overlap or are no further apart than @p longestGap.
 * @param windows  in any order; empty ones don't count
 */
QVector<Tellarix::Core::TimeWindow> mergedWindows(QVector<Tellarix::Core::TimeWindow> windows,
                                                  Tellarix::Core::TimeSpan longestGap);

/**
 * Index of the stretch that follows (@p step = 1) or precedes (@p step = -1) the one in the middle
 * of what is visible, or the middle itself if it lies between two. From several stretches that are
 * visible as a whole, the first or the last one is next.
 * @return -1 if there is none
 */
int neighbouringStretch(const QVector<Tellarix::Core::TimeWindow> &stretches,
                        const Tellarix::Core::TimeWindow &visible, int step);

/**
 * The window to show when a user asks for @p wanted: zooming out ends at @p all, or where the view
 * is if it shows more already.
 */
Tellarix::Core::TimeWindow limitedZoom(const Tellarix::Core::TimeWindow &wanted,
                                       const Tellarix::Core::TimeWindow &visible,
                                       const Tellarix::Core::TimeWindow &all);

/** @p window with 1 percent of its length, at least 10 ms, added on either side. */
Tellarix::Core::TimeWindow withMargins(const Tellarix::Core::TimeWindow &window);

} // namespace Workbench
