// SPDX-License-Identifier: LGPL-3.0-or-later

#include "streamstates.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int UpdateMilliseconds = 1000;
constexpr double LeastDelay = 60;
constexpr double MissingRecords = 3;
/** How much of the usual spacing a new one makes up; a gap counts for little. */
constexpr double SpacingShare = 0.125;
constexpr double LargestGrowth = 4;

QString text(const char *pattern, double value)
{
    return QCoreApplication::translate("Workbench::StreamStates", pattern)
        .arg(static_cast<qint64>(value));
}

} // namespace

double delayOf(const StreamState &state, Core::Time now)
{
    return std::max(0.0, (now - state.lastSample).length());
}

double staleAfter(const StreamState &state)
{
    return std::max(LeastDelay, MissingRecords * state.spacing);
}

bool isStale(const StreamState &state, Core::Time now)
{
    return delayOf(state, now) > staleAfter(state);
}

QString delayText(double seconds)
{
    constexpr double Minute = 60;
    constexpr double Hour = 60 * Minute;
    constexpr double Day = 24 * Hour;
    if (seconds < Minute)
        return text("%1 s", seconds);
    if (seconds < Hour)
        return text("%1 min", seconds / Minute);
    return seconds < Day ? text("%1 h", seconds / Hour) : text("%1 d", seconds / Day);
}

StreamStates::StreamStates(QObject *parent) : QObject(parent), _clock(&Core::Time::GMT)
{
    connect(&_timer, SIGNAL(timeout()), this, SIGNAL(updated()));
}

void StreamStates::note(const std::string &id, const Core::TimeWindow &record)
{
    if (_states.empty())
        _timer.start(UpdateMilliseconds);
    StreamState &state = _states[id];
    state.lastArrival = now();
    const double step = state.lastSample.valid() ? (record.endTime() - state.lastSample).length()
                                                 : record.length().length();
    if (step <= 0)
        return;
    if (state.spacing <= 0)
        state.spacing = record.length().length();
    state.spacing += SpacingShare * (std::min(step, LargestGrowth * state.spacing) - state.spacing);
    state.lastSample = record.endTime();
}

void StreamStates::forget(const std::string &id)
{
    if (_states.erase(id) == 0 || !_states.empty())
        return;
    _timer.stop();
    emit updated();
}

const StreamState *StreamStates::find(const std::string &id) const
{
    const auto state = _states.find(id);
    return state == _states.end() ? nullptr : &state->second;
}

} // namespace Workbench
