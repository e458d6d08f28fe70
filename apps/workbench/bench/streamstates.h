// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/timewindow.h>

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <string>
#include <unordered_map>

namespace Workbench {

/** What is known of a stream whose records come in live. */
struct StreamState
{
    Tellarix::Core::Time lastSample;  /**< end of the latest record */
    Tellarix::Core::Time lastArrival; /**< of any record */
    double spacing{0}; /**< usual time from a record to the next, in s; 0 if unknown */
};

/** Seconds from the last sample to @p now, 0 at least. */
double delayOf(const StreamState &state, Tellarix::Core::Time now);
/** Delay from which on something must be wrong. */
double staleAfter(const StreamState &state);
/** Whether the last sample is so old that something must be wrong: by a minute at least, and by
 * three times the usual spacing of records. */
bool isStale(const StreamState &state, Tellarix::Core::Time now);
/** "3 s", "5 min", "2 h" or "4 d". */
QString delayText(double seconds);

/** The streams that come in live, by their ids "NET.STA.LOC.CHA". */
class StreamStates : public QObject
{
    Q_OBJECT

public:
    using Clock = std::function<Tellarix::Core::Time()>;

    explicit StreamStates(QObject *parent = nullptr);

    /** Replaces the clock of the system. */
    void setClock(Clock clock) { _clock = std::move(clock); }
    Tellarix::Core::Time now() const { return _clock(); }

    /** Notes the arrival of a record. */
    void note(const std::string &id, const Tellarix::Core::TimeWindow &record);
    void forget(const std::string &id);

    /** Null for a stream that isn't live. */
    const StreamState *find(const std::string &id) const;
    const std::unordered_map<std::string, StreamState> &all() const { return _states; }

signals:
    /** Sent once a second while there are any, and when the last one is forgotten. */
    void updated();

private:
    Clock _clock;
    std::unordered_map<std::string, StreamState> _states;
    QTimer _timer;
};

} // namespace Workbench
