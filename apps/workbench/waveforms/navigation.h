// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QString>

#include <QString>
#include <functional>
#include <utility>

namespace Norvu {
namespace Gui {
class TraceView;
} // namespace Gui
} // namespace Norvu

namespace Workbench {

class Bench;
class Coverage;
class RowVisibility;
class ViewHistory;

/** Ways through the time of a view: from stretch to stretch of its data, to times, and no further
 *  out than to all data. */
class Navigation : public QObject
{
    Q_OBJECT

public:
    /** @param view  owns it */
    Navigation(Bench *bench, Norvu::Gui::TraceView *view, const Coverage *coverage,
               RowVisibility *visibility);

    ViewHistory *history() const { return _history; }
    /** Sets what tells where data are awaited, if anywhere; zooming out ends there too. */
    void setAwaitedWindow(std::function<Tellarix::Core::TimeWindow()> awaited)
    {
        _awaited = std::move(awaited);
    }

public slots:
    void showAllData();
    void showNextStretch();
    void showPreviousStretch();
    void zoomOut();
    /** Asks for a time, which comes into the middle of the view. */
    void askForTime();
    void goToTime(const QString &text);
    /** Shows a window, no wider than all data. */
    void showWindow(const Tellarix::Core::TimeWindow &window);
    /** Shows a window far from the one before, with a way back. */
    void leapTo(const Tellarix::Core::TimeWindow &window);
    void updateRangeText();

signals:
    /** Which time is shown. */
    void rangeText(const QString &text);

private slots:
    void showRange(double lower, double upper);

private:
    void showNeighbour(int step);
    QString stretchText(const Tellarix::Core::TimeWindow &visible) const;

    Bench *_bench;
    Norvu::Gui::TraceView *_view;
    const Coverage *_coverage;
    RowVisibility *_visibility;
    ViewHistory *_history;
    std::function<Tellarix::Core::TimeWindow()> _awaited;
};

} // namespace Workbench
