// SPDX-License-Identifier: LGPL-3.0-or-later

#include "navigation.h"

#include "bench/bench.h"
#include "coverage.h"
#include "datastretches.h"
#include "rowvisibility.h"
#include "timetext.h"
#include "viewhistory.h"

#include <norvu/gui/traceview.h>
#include <tellarix/qt/records/timescale.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QInputDialog>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::TraceView;

namespace Workbench {

Navigation::Navigation(Bench *bench, TraceView *view, const Coverage *coverage,
                       RowVisibility *visibility)
    : QObject(view), _bench(bench), _view(view), _coverage(coverage), _visibility(visibility),
      _history(new ViewHistory(view))
{
    connect(_view, SIGNAL(displayChanged(double, double, double)), this, SLOT(updateRangeText()));
    // Whatever zooms out ends at all data.
    disconnect(_view->timeScale(), SIGNAL(rangeChangeRequested(double, double)), _view, nullptr);
    connect(_view->timeScale(), SIGNAL(rangeChangeRequested(double, double)), this,
            SLOT(showRange(double, double)));
    for (QAction *action : _view->controlActions()) {
        if (action->shortcut() != QKeySequence("<"))
            continue;
        disconnect(action, SIGNAL(triggered()), _view, nullptr);
        connect(action, SIGNAL(triggered()), this, SLOT(zoomOut()));
    }
}

void Navigation::showAllData()
{
    _history->keep();
    _view->setCoveredTimeRange();
    _visibility->update();
}

void Navigation::showNextStretch()
{
    showNeighbour(1);
}

void Navigation::showPreviousStretch()
{
    showNeighbour(-1);
}

void Navigation::showNeighbour(int step)
{
    const int index = neighbouringStretch(_coverage->stretches(), _view->visibleTimeWindow(), step);
    if (index >= 0)
        leapTo(withMargins(_coverage->stretches()[index]));
}

void Navigation::showRange(double lower, double upper)
{
    const Gui::TimeScale *scale = _view->timeScale();
    showWindow({scale->timeAt(lower), scale->timeAt(upper)});
}

void Navigation::showWindow(const Core::TimeWindow &window)
{
    const Core::TimeWindow covered = _coverage->extent();
    const Core::TimeWindow extent = _awaited ? covered.united(_awaited()) : covered;
    _view->setVisibleTimeWindow(limitedZoom(window, _view->visibleTimeWindow(),
                                            extent.isEmpty() ? extent : withMargins(extent)));
}

void Navigation::zoomOut()
{
    const double half = (_view->tmax() - _view->tmin()) / 2;
    showRange(_view->tmin() - half, _view->tmax() + half);
}

void Navigation::askForTime()
{
    const Core::Time start = _view->visibleTimeWindow().startTime();
    const Core::Time copied = timeInText(QGuiApplication::clipboard()->text(), Core::Time());
    auto *dialog = new QInputDialog(_view);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Go to time"));
    dialog->setLabelText(tr("Date, time of the day, or both (UTC):"));
    dialog->setTextValue(timeText(copied.valid() ? copied : start));
    connect(dialog, SIGNAL(textValueSelected(QString)), this, SLOT(goToTime(QString)));
    dialog->open();
}

void Navigation::goToTime(const QString &text)
{
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    const Core::Time time = timeInText(text, visible.startTime());
    if (!time.valid()) {
        _bench->showStatus(tr("\"%1\" is no time; write 2024-01-05 10:11:12").arg(text));
        return;
    }
    const Core::TimeSpan half = visible.length() / 2.0;
    leapTo({time - half, time + half});
    if (!_coverage->hasData(_view->visibleTimeWindow()))
        _bench->showStatus(tr("No waveforms about %1").arg(timeText(time)));
}

void Navigation::leapTo(const Core::TimeWindow &window)
{
    _history->keep();
    _view->setVisibleTimeWindow(window);
    _visibility->update();
}

void Navigation::updateRangeText()
{
    if (_view->count() == 0 || _coverage->stretches().isEmpty()) {
        emit rangeText(QString());
        return;
    }
    const Core::TimeWindow visible = _view->visibleTimeWindow();
    // Seconds as soon as whole ones would tell both ends apart badly.
    const double resolution = std::min(1.0, visible.length().length() / 60);
    const QString text = tr("%1 to %2 UTC")
                             .arg(timeText(visible.startTime(), resolution),
                                  timeText(visible.endTime(), resolution));
    emit rangeText(text + stretchText(visible));
}

/** Which of several stretches are in sight. */
QString Navigation::stretchText(const Core::TimeWindow &visible) const
{
    const auto &stretches = _coverage->stretches();
    QStringList shown;
    for (int i = 0; stretches.size() > 1 && i < stretches.size(); ++i) {
        if (stretches[i].overlaps(visible))
            shown.append(QString::number(i + 1));
    }
    if (shown.isEmpty())
        return QString();
    if (shown.size() == 1)
        return tr("  ·  stretch %1 of %2").arg(shown.first()).arg(stretches.size());
    return tr("  ·  stretches %1 to %2 of %3")
        .arg(shown.first(), shown.last())
        .arg(stretches.size());
}

} // namespace Workbench
