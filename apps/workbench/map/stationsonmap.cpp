// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationsonmap.h"

#include "bench/bench.h"
#include "bench/selection.h"
#include "bench/stations.h"
#include "bench/streamstates.h"
#include "bench/tracerows.h"
#include "stationmark.h"

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/symbollayer.h>
#include <norvu/gui/trace.h>
#include <norvu/gui/traceview.h>
#include <tellarix/core/records/recordsequence.h>
#include <tellarix/qt/records/recordwidget.h>
#include <tellarix/qt/scheme.h>

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

using namespace Tellarix;
using Norvu::Gui::Trace;
using Norvu::Gui::Map::Symbol;
using Norvu::Gui::Map::SymbolLayer;

namespace Workbench {

namespace {

constexpr int StateInterval = 500; // ms

/** A station is late until its last sample is so many times as old as one that is stale may be. */
constexpr double LateSpans = 10;

/** "NET.STA" of "NET.STA.LOC.CHA". */
QString stationOfStream(const std::string &id)
{
    return QString::fromStdString(id).section('.', 0, 1);
}

bool hasData(const Trace &row)
{
    const RecordSequence *records = row.recordWidget()->records(0);
    return records && !records->isEmpty();
}

} // namespace

StationsOnMap::StationsOnMap(Bench *bench, Norvu::Gui::Annotations *annotations, QObject *parent)
    : QObject(parent), _bench(bench), _annotations(annotations), _layer(new SymbolLayer(this)),
      _legend(new DelayLegend(_layer))
{
    _legend->setEnabled(false);
    _layer->addLegend(_legend);
    _layer->setName(tr("Stations"));
    connect(_bench->stations(), SIGNAL(changed()), this, SLOT(rebuild()));
    connect(_bench->selection(), SIGNAL(stationsChanged()), this, SLOT(followSelection()));
    connect(_layer, SIGNAL(symbolHovered(Norvu::Gui::Map::Symbol *)), this,
            SLOT(hover(Norvu::Gui::Map::Symbol *)));
    connect(_layer, SIGNAL(symbolPressed(Norvu::Gui::Map::Symbol *)), this,
            SLOT(choose(Norvu::Gui::Map::Symbol *)));
    // Data come record by record, and nobody tells of each of them.
    connect(&_stateTimer, SIGNAL(timeout()), this, SLOT(updateStates()));
    _stateTimer.start(StateInterval);
    rebuild();
}

StationsOnMap::~StationsOnMap()
{
    // The codes have to go before the annotations that hold them.
    disconnect(_layer, nullptr, this, nullptr);
    _layer->clear();
}

void StationsOnMap::rebuild()
{
    _layer->clear();
    _marks.clear();
    _states.clear();
    const auto &places = _bench->stations()->all();
    // In a fixed order, since of two codes at one place the first one is shown.
    QStringList stations = places.keys();
    stations.sort();
    for (const QString &station : qAsConst(stations)) {
        const StationPlace place = places.value(station);
        auto *mark = new StationMark(station, place.longitude, place.latitude);
        mark->setPriority(Symbol::High);
        mark->setAnnotation(_codes ? station : QString(), _annotations);
        _marks.insert(station, mark);
        _layer->addSymbol(mark);
    }
    _layer->sortSymbols();
    followSelection();
    updateStates();
    _layer->update();
}

QHash<QString, StationsOnMap::State> StationsOnMap::statesOfRows() const
{
    QHash<QString, State> states;
    const Norvu::Gui::TraceView *view = _bench->rows()->view();
    if (!view)
        return states;

    for (const Trace *row : view->items()) {
        const State state = hasData(*row)                ? State::Present
                            : row->color() == Qt::yellow ? State::Waiting
                                                         : State::Missing;
        State &known = states[stationOf(*row)];
        // One component with data is enough.
        if (known != State::Present)
            known = state;
    }
    return states;
}

void StationsOnMap::updateStates()
{
    if (_marks.isEmpty() || !_layer->isVisible())
        return;

    if (_byDelay) {
        updateDelays();
        return;
    }
    const QHash<QString, State> states = statesOfRows();
    if (states == _states && !_states.isEmpty())
        return;

    _states = states;
    for (StationMark *mark : qAsConst(_marks))
        mark->setFill(colorOf(states.value(mark->station(), State::NoRow)));
    emit _layer->updateRequested({});
}

void StationsOnMap::updateDelays()
{
    const StreamStates &states = *_bench->streamStates();
    const Core::Time now = states.now();
    _delays.clear();
    for (const auto &[id, state] : states.all()) {
        Delay &least = _delays[stationOfStream(id)];
        const double seconds = delayOf(state, now);
        if (least.grade != DelayGrade::Never && least.seconds <= seconds)
            continue;
        least.seconds = seconds;
        least.grade = !isStale(state, now)                      ? DelayGrade::Fresh
                      : seconds < LateSpans * staleAfter(state) ? DelayGrade::Late
                                                                : DelayGrade::Stale;
    }
    bool hasChanged = false;
    for (StationMark *mark : qAsConst(_marks)) {
        const QColor color = Workbench::colorOf(_delays.value(mark->station()).grade);
        hasChanged = hasChanged || mark->fill() != color;
        mark->setFill(color);
    }
    if (hasChanged)
        emit _layer->updateRequested({});
    if (_hovered)
        emit hoveredChanged();
}

QColor StationsOnMap::colorOf(State state)
{
    const Gui::Scheme::Status &status = Gui::Scheme::Current().status;
    switch (state) {
    case State::Waiting:
        return status.waiting;
    case State::Present:
        return status.present;
    case State::Missing:
        return status.missing;
    case State::NoRow:
        break;
    }
    return QColor(45, 105, 191);
}

QString StationsOnMap::textOf(State state)
{
    switch (state) {
    case State::Waiting:
        return tr("waiting for data");
    case State::Present:
        return tr("has data");
    case State::Missing:
        return tr("no data");
    case State::NoRow:
        break;
    }
    return tr("no row");
}

QString StationsOnMap::hoveredText() const
{
    if (!_hovered)
        return QString();
    return QString("%1, %2").arg(_hovered->station(), stateText(_hovered->station()));
}

QString StationsOnMap::stateText(const QString &station) const
{
    if (!_byDelay)
        return textOf(_states.value(station, State::NoRow));
    const Delay delay = _delays.value(station);
    return delay.grade == DelayGrade::Never
               ? tr("nothing has come in live")
               : tr("last sample %1 ago").arg(delayText(delay.seconds));
}

void StationsOnMap::hover(Symbol *symbol)
{
    _hovered = dynamic_cast<StationMark *>(symbol);
    emit hoveredChanged();
}

void StationsOnMap::choose(Symbol *symbol)
{
    const auto *mark = dynamic_cast<StationMark *>(symbol);
    if (!mark)
        return;

    QStringList stations{mark->station()};
    if (QGuiApplication::keyboardModifiers() & Qt::ControlModifier) {
        stations = _bench->selection()->stations();
        if (!stations.removeOne(mark->station()))
            stations.append(mark->station());
    }
    _bench->selection()->setStations(stations);
}

void StationsOnMap::followSelection()
{
    const QStringList &chosen = _bench->selection()->stations();
    const QColor highlight = QGuiApplication::palette().color(QPalette::Highlight);
    for (StationMark *mark : qAsConst(_marks)) {
        const bool isChosen = std::binary_search(chosen.begin(), chosen.end(), mark->station());
        mark->setPen(isChosen ? highlight : QColor(68, 68, 68, 128));
        mark->setPenWidth(isChosen ? 3 : 1.5);
        mark->setAnnotationHighlight(isChosen);
    }
    emit _layer->updateRequested({});
}

void StationsOnMap::setShown(bool shown)
{
    _layer->setVisible(shown);
}

void StationsOnMap::setShadows(bool shown)
{
    _layer->setShadows(shown);
}

void StationsOnMap::setColoredByDelay(bool on)
{
    if (on == _byDelay)
        return;
    _byDelay = on;
    _legend->setEnabled(on);
    _states.clear();
    updateStates();
}

void StationsOnMap::setLegendsShown(bool shown)
{
    _legend->setVisible(shown);
}

void StationsOnMap::setCodes(bool shown)
{
    if (shown == _codes)
        return;
    _codes = shown;
    rebuild();
}

} // namespace Workbench
