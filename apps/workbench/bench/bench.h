// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QStringList>

namespace Workbench {

class Jobs;
class MapView;
class Replay;
class Selection;
class ShownEvents;
class Stations;
class StreamStates;
class Tasks;
class TraceRows;

/** What panels share. They get it when they are made, and it outlives them. */
class Bench : public QObject
{
    Q_OBJECT

public:
    explicit Bench(QObject *parent = nullptr);

    /** Chosen event, time, time window and stations. */
    Selection *selection() const { return _selection; }
    /** The events that the list has loaded. */
    ShownEvents *shownEvents() const { return _shownEvents; }
    /** What is known of stations: places, channels, gains. */
    Stations *stations() const { return _stations; }
    /** Delays of the streams that come in live. */
    StreamStates *streamStates() const { return _streamStates; }
    /** Work in the background, which the status bar shows. */
    Tasks *tasks() const { return _tasks; }
    /** Programs that run beside the workbench. */
    Jobs *jobs() const { return _jobs; }
    /** The rows of waveforms, for panels that add to them. */
    TraceRows *rows() const { return _rows; }
    /** The map, for panels that lay something over it. */
    MapView *mapView() const { return _mapView; }
    /** Whether events are shown as they came. */
    Replay *replay() const { return _replay; }

    /** The window to which everything that is loaded is limited; not valid without a limit. */
    const Tellarix::Core::TimeWindow &dataWindow() const { return _dataWindow; }
    void setDataWindow(const Tellarix::Core::TimeWindow &window) { _dataWindow = window; }

    /** What events are stored into, for the user; empty if they can only be looked at. */
    const QString &eventStore() const { return _eventStore; }
    void setEventStore(const QString &name) { _eventStore = name; }

public slots:
    /** Lists problems for the user, each of which names the thing and the cause. */
    void tell(const QStringList &problems);
    /** Has sources opened as the user's own ones are, by whichever panels can. */
    void open(const QStringList &sources);
    /** Has the events of files or services stored into the eventStore(). */
    void importEvents(const QStringList &sources);
    /** Shows a line in the status bar for a while; an empty one takes the last one away. */
    void showStatus(const QString &text);

signals:
    void problemsTold(const QStringList &problems);
    void statusShown(const QString &text);
    void openRequested(const QStringList &sources);
    void eventImportRequested(const QStringList &sources);

private:
    Selection *_selection;
    ShownEvents *_shownEvents;
    Stations *_stations;
    StreamStates *_streamStates;
    Tasks *_tasks;
    Jobs *_jobs;
    TraceRows *_rows;
    MapView *_mapView;
    Replay *_replay;
    Tellarix::Core::TimeWindow _dataWindow;
    QString _eventStore;
};

} // namespace Workbench
