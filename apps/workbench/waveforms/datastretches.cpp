// SPDX-License-Identifier: LGPL-3.0-or-later

#include "datastretches.h"

#include <algorithm>

using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;

namespace Workbench {

namespace {

constexpr double ShortestBreak = 60;
constexpr double MarginShare = 0.01;
constexpr double ShortestMargin = 0.01;

/** Merges ascending windows that are no further apart than @p longestGap. */
QVector<TimeWindow> merged(const QVector<TimeWindow> &ascending, TimeSpan longestGap)
{
    QVector<TimeWindow> result;
    for (const TimeWindow &window : ascending) {
        if (result.isEmpty() || window.startTime() - result.last().endTime() > longestGap)
            result.append(window);
        else
            result.last() = result.last().united(window);
    }
    return result;
}

} // namespace

QVector<TimeWindow> dataStretches(QVector<TimeWindow> windows)
{
    windows.erase(std::remove_if(windows.begin(), windows.end(),
                                 [](const TimeWindow &window) { return window.isEmpty(); }),
                  windows.end());
    std::sort(windows.begin(), windows.end(), [](const TimeWindow &a, const TimeWindow &b) {
        return a.startTime() < b.startTime();
    });

    const QVector<TimeWindow> covered = merged(windows, TimeSpan());
    double length = 0;
    for (const TimeWindow &window : covered)
        length += window.length().length();
    return merged(covered, TimeSpan(std::max(ShortestBreak, 0.5 * length)));
}

int neighbouringStretch(const QVector<TimeWindow> &stretches, const TimeWindow &visible, int step)
{
    if (step > 0) {
        for (int i = 0; i < stretches.size(); ++i) {
            if (stretches[i].startTime() >= visible.endTime())
                return i;
        }
        return -1;
    }
    for (int i = stretches.size() - 1; i >= 0; --i) {
        if (stretches[i].endTime() <= visible.startTime())
            return i;
    }
    return -1;
}

TimeWindow withMargins(const TimeWindow &window)
{
    const TimeSpan margin(std::max(ShortestMargin, MarginShare * window.length().length()));
    return TimeWindow(window.startTime() - margin, window.endTime() + margin);
}

} // namespace Workbench
