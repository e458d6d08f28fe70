// SPDX-License-Identifier: LGPL-3.0-or-later

#include "datastretches.h"

#include <algorithm>
#include <utility>

using Tellarix::Core::Time;
using Tellarix::Core::TimeSpan;
using Tellarix::Core::TimeWindow;

namespace Workbench {

namespace {

constexpr double ShortestBreak = 60;
constexpr double MarginShare = 0.01;
constexpr double ShortestMargin = 0.01;
constexpr double LengthTolerance = 1E-6;

} // namespace

QVector<TimeWindow> mergedWindows(QVector<TimeWindow> windows, TimeSpan longestGap)
{
    windows.erase(std::remove_if(windows.begin(), windows.end(),
                                 [](const TimeWindow &window) { return window.isEmpty(); }),
                  windows.end());
    std::sort(windows.begin(), windows.end(), [](const TimeWindow &a, const TimeWindow &b) {
        return a.startTime() < b.startTime();
    });
    QVector<TimeWindow> result;
    for (const TimeWindow &window : windows) {
        if (result.isEmpty() || window.startTime() - result.last().endTime() > longestGap)
            result.append(window);
        else
            result.last() = result.last().united(window);
    }
    return result;
}

QVector<TimeWindow> dataStretches(QVector<TimeWindow> windows)
{
    const QVector<TimeWindow> covered = mergedWindows(std::move(windows), TimeSpan());
    double length = 0;
    for (const TimeWindow &window : covered)
        length += window.length().length();
    return mergedWindows(covered, TimeSpan(std::max(ShortestBreak, 0.5 * length)));
}

int neighbouringStretch(const QVector<TimeWindow> &stretches, const TimeWindow &visible, int step)
{
    const auto isWhole = [&](const TimeWindow &stretch) { return visible.contains(stretch); };
    const auto first = std::find_if(stretches.begin(), stretches.end(), isWhole);
    const int wholeCount =
        static_cast<int>(std::count_if(stretches.begin(), stretches.end(), isWhole));
    const int firstWhole = static_cast<int>(first - stretches.begin());
    if (wholeCount > 1)
        return step > 0 ? firstWhole : firstWhole + wholeCount - 1;

    const Time middle = visible.startTime() + visible.length() / 2.0;
    int next = 0;
    while (next < stretches.size() && stretches[next].startTime() <= middle)
        ++next;
    if (step > 0)
        return next < stretches.size() ? next : -1;
    const bool isInside = next > 0 && middle < stretches[next - 1].endTime();
    return std::max(-1, next - (isInside ? 2 : 1));
}

TimeWindow limitedZoom(const TimeWindow &wanted, const TimeWindow &visible, const TimeWindow &all)
{
    const bool isZoom = wanted.length() > visible.length() * (1 + LengthTolerance);
    if (all.isEmpty() || !isZoom || wanted.length() <= all.length())
        return wanted;
    return visible.length() > all.length() ? visible : all;
}

TimeWindow withMargins(const TimeWindow &window)
{
    const TimeSpan margin(std::max(ShortestMargin, MarginShare * window.length().length()));
    return TimeWindow(window.startTime() - margin, window.endTime() + margin);
}

} // namespace Workbench
