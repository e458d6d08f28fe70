// SPDX-License-Identifier: LGPL-3.0-or-later

#include "selectionlink.h"

#include "bench/bench.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "bench/tracerows.h"
#include "datastretches.h"
#include "navigation.h"
#include "rowlooks.h"
#include "roworder.h"
#include "timetext.h"
#include "viewhistory.h"
#include "waveforms.h"

#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/math/geo.h>

#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::TraceView;

namespace Workbench {

namespace {

constexpr double SecondsBefore = 60;
constexpr double LeastSecondsAfter = 300;
constexpr double SecondsAfterShearWave = 60;
/** Of direct waves in the crust, and of the fastest surface waves, in km/s. */
constexpr double ShearWaveVelocity = 3.5;

/** Whether a window can't be told from the one that a view shows. */
bool isShown(const Core::TimeWindow &window, const TraceView &view)
{
    const Core::TimeWindow visible = view.visibleTimeWindow();
    const double pixel = visible.length().length() / std::max(1, view.width());
    return std::abs((window.startTime() - visible.startTime()).length()) < pixel &&
           std::abs((window.endTime() - visible.endTime()).length()) < pixel;
}

/** Whether rows have distances, and stand in ascending order of them. */
bool isSortedByDistance(const TraceView &view)
{
    const QList<Trace *> rows = view.items();
    const auto distance = [](const Trace *row) {
        return row->data(Norvu::Gui::TraceDistance).toDouble();
    };
    return !rows.isEmpty() && distance(rows.last()) > distance(rows.first()) &&
           std::is_sorted(rows.begin(), rows.end(), [&](const Trace *a, const Trace *b) {
               return distance(a) < distance(b);
           });
}

} // namespace

Core::TimeWindow eventWindow(const EventFacts &event, double farthestKm)
{
    const double pathKm = std::hypot(farthestKm, event.depthKm.value_or(0));
    const double after =
        std::max(LeastSecondsAfter, pathKm / ShearWaveVelocity + SecondsAfterShearWave);
    return {event.originTime - Core::TimeSpan(SecondsBefore),
            event.originTime + Core::TimeSpan(after)};
}

Core::TimeWindow upToLastData(const Core::TimeWindow &window,
                              const QVector<Core::TimeWindow> &stretches, const Core::Time &moment)
{
    Core::Time end = moment + Core::TimeSpan(SecondsBefore);
    for (const Core::TimeWindow &stretch : stretches) {
        if (stretch.overlaps(window))
            end = std::max(end, withMargins(stretch).endTime());
    }
    return {window.startTime(), std::min(end, window.endTime())};
}

SelectionLink::SelectionLink(Bench *bench, Waveforms *waveforms)
    : QObject(waveforms), _bench(bench), _waveforms(waveforms)
{
    const Selection *selection = _bench->selection();
    connect(selection, SIGNAL(eventChanged()), this, SLOT(followEvent()));
    connect(selection, SIGNAL(eventShown()), this, SLOT(followEvent()));
    connect(selection, SIGNAL(timeChanged()), this, SLOT(followTime()));
    connect(selection, SIGNAL(timeWindowChanged()), this, SLOT(followTimeWindow()));
    connect(selection, SIGNAL(stationsChanged()), this, SLOT(followStations()));
    connect(_bench->stations(), SIGNAL(changed()), this, SLOT(updateDistances()));

    const TraceView *view = _waveforms->view();
    connect(view, SIGNAL(distanceValuesRequired()), this, SLOT(updateDistances()));
    connect(view, SIGNAL(displayChanged(double, double, double)), this, SLOT(chooseTimeWindow()));
    connect(view, SIGNAL(layoutOrContentChanged()), this, SLOT(forgetTimeWindow()));
    connect(view, SIGNAL(itemSelectionChanged()), this, SLOT(chooseStations()));
    connect(view, SIGNAL(itemSelectionCleared()), this, SLOT(chooseStations()));
}

void SelectionLink::updateDistances()
{
    QHash<QString, EventPath> paths;
    const auto &event = _bench->selection()->chosenEvent();
    for (const Trace *row : _waveforms->view()->items()) {
        const QString station = stationOf(*row);
        if (!event || paths.contains(station))
            continue;
        const auto place = _bench->stations()->find(station, event->originTime);
        if (!place)
            continue;
        EventPath path;
        Math::Geo::delaziKm(event->latitude, event->longitude, place->latitude, place->longitude,
                            &path.distanceKm, &path.azimuth);
        if (std::isfinite(path.distanceKm))
            paths.insert(station, path);
    }
    _waveforms->looks()->setPaths(paths);
}

void SelectionLink::followEvent()
{
    const bool isSorted = isSortedByDistance(*_waveforms->view());
    updateDistances();
    const std::optional<EventFacts> event = _bench->selection()->chosenEvent();
    if (event && isSorted && !isSortedByDistance(*_waveforms->view()))
        sortByDistance();
    if (event && event->originTime.valid() && _waveforms->view()->count() > 0)
        showEvent(*event);
}

/** Keeps stations together where the user wants them so. */
void SelectionLink::sortByDistance()
{
    if (_waveforms->order()->name() == "distance")
        _waveforms->order()->sort();
    else
        _waveforms->view()->sortView();
}

void SelectionLink::showEvent(const EventFacts &event)
{
    double farthest = 0;
    for (const EventPath &path : _waveforms->looks()->paths())
        farthest = std::max(farthest, path.distanceKm);
    Core::TimeWindow window = eventWindow(event, farthest);
    if (!hasData(window)) {
        _bench->showStatus(tr("No waveforms from %1 to %2")
                               .arg(timeText(window.startTime()), timeText(window.endTime())));
        return;
    }
    if (!_waveforms->isLoading())
        window = upToLastData(window, _waveforms->stretches(), event.originTime);
    {
        const QScopedValueRollback<bool> following(_isFollowing, true);
        _waveforms->navigation()->history()->keep();
        _waveforms->view()->setAlignment(event.originTime);
        _waveforms->view()->setVisibleTimeWindow(window);
    }
    chooseTimeWindow();
}

bool SelectionLink::hasData(const Core::TimeWindow &window) const
{
    const auto &stretches = _waveforms->stretches();
    return std::any_of(stretches.begin(), stretches.end(),
                       [&](const auto &stretch) { return stretch.overlaps(window); });
}

void SelectionLink::followTime()
{
    const Core::Time time = _bench->selection()->time();
    const Core::TimeWindow moment(time, time + Core::TimeSpan(1));
    if (time.valid() && hasData(moment) && !_waveforms->view()->visibleTimeWindow().contains(time))
        _waveforms->view()->ensureVisible(moment, false);
}

void SelectionLink::followTimeWindow()
{
    TraceView *view = _waveforms->view();
    const Core::TimeWindow window = _bench->selection()->timeWindow();
    if (view->count() == 0 || window.isEmpty() || isShown(window, *view))
        return;
    const QScopedValueRollback<bool> following(_isFollowing, true);
    view->setVisibleTimeWindow(window);
}

void SelectionLink::followStations()
{
    const QStringList stations = _bench->selection()->stations();
    if (stations == selectedStations())
        return;
    const QScopedValueRollback<bool> following(_isFollowing, true);
    TraceView *view = _waveforms->view();
    view->selectMatching("*", false);
    for (const QString &station : stations)
        view->selectMatching(station + ".*", true);
}

/** In the form of a selection. */
QStringList SelectionLink::selectedStations() const
{
    QStringList stations;
    for (const Trace *row : _waveforms->view()->selectedItems())
        stations.append(stationOf(*row));
    stations.sort();
    stations.removeDuplicates();
    return stations;
}

void SelectionLink::chooseTimeWindow()
{
    if (!_isFollowing && _waveforms->view()->count() > 0)
        _bench->selection()->setTimeWindow(_waveforms->view()->visibleTimeWindow());
}

void SelectionLink::chooseStations()
{
    if (!_isFollowing)
        _bench->selection()->setStations(selectedStations());
}

/** Without rows there is nothing along the time axis. */
void SelectionLink::forgetTimeWindow()
{
    if (_waveforms->view()->count() == 0)
        _bench->selection()->setTimeWindow(Core::TimeWindow());
}

} // namespace Workbench
