// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/inventory.h>

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace Tellarix {
namespace DataModel {

namespace {

template <typename T>
using EpochsByID = std::unordered_map<std::string, std::vector<const T *>>;

template <typename T>
std::unordered_map<std::string, EpochSequence<T>> sequencesOf(EpochsByID<T> &&epochs)
{
    std::unordered_map<std::string, EpochSequence<T>> sequences;
    sequences.reserve(epochs.size());
    while (!epochs.empty()) {
        auto node = epochs.extract(epochs.begin());
        sequences.emplace(std::move(node.key()), EpochSequence<T>(node.mapped()));
    }
    return sequences;
}

template <typename T>
const T *find(const std::unordered_map<std::string, EpochSequence<T>> &sequences,
              const std::string &id, Core::Time time)
{
    const auto sequence = sequences.find(id);
    return sequence == sequences.end() ? nullptr : sequence->second.find(time);
}

/** Calls a function for each station of networks. */
template <typename Function>
void forEachStation(const std::vector<NetworkPtr> &networks, Function function)
{
    for (const NetworkPtr &network : networks) {
        for (int i = 0; i < network->stationCount(); ++i)
            function(*network->station(i));
    }
}

/** Calls a function for each stream of a station. */
template <typename Function>
void forEachStream(const Station &station, Function function)
{
    for (int i = 0; i < station.sensorLocationCount(); ++i) {
        const SensorLocation *location = station.sensorLocation(i);
        for (int j = 0; j < location->streamCount(); ++j)
            function(*location->stream(j));
    }
}

} // namespace

template <typename T>
EpochSequence<T>::EpochSequence(const std::vector<const T *> &epochs)
{
    // Times at which epochs begin and end, and those that are in force from there on.
    struct Step
    {
        Core::Time time;
        int index;
        bool begins;
    };
    const auto isBefore = [&](int a, int b) {
        return std::make_pair(epochs[static_cast<size_t>(a)]->start(), a) <
               std::make_pair(epochs[static_cast<size_t>(b)]->start(), b);
    };
    std::vector<Step> steps;
    for (int i = 0; i < static_cast<int>(epochs.size()); ++i) {
        const T *epoch = epochs[static_cast<size_t>(i)];
        if (!_last || !(epoch->start() < _last->start()))
            _last = epoch;
        if (epoch->end().valid() && epoch->end() <= epoch->start())
            continue;
        steps.push_back({epoch->start(), i, true});
        if (epoch->end().valid())
            steps.push_back({epoch->end(), i, false});
    }
    std::sort(steps.begin(), steps.end(),
              [](const Step &a, const Step &b) { return a.time < b.time; });

    std::set<int, decltype(isBefore)> covering(isBefore);
    for (size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].begins)
            covering.insert(steps[i].index);
        else
            covering.erase(steps[i].index);
        if (i + 1 < steps.size() && steps[i + 1].time == steps[i].time)
            continue;
        const T *epoch =
            covering.empty() ? nullptr : epochs[static_cast<size_t>(*covering.rbegin())];
        if (_pieces.empty() || _pieces.back().epoch != epoch)
            _pieces.push_back({steps[i].time, epoch});
    }
}

/** The first piece that begins after a time. */
template <typename T>
typename std::vector<typename EpochSequence<T>::Piece>::const_iterator
EpochSequence<T>::nextPiece(Core::Time time) const
{
    return std::upper_bound(
        _pieces.begin(), _pieces.end(), time,
        [](Core::Time moment, const Piece &piece) { return moment < piece.begin; });
}

template <typename T>
const T *EpochSequence<T>::find(Core::Time time) const
{
    if (!time.valid())
        return _last;
    const auto next = nextPiece(time);
    return next == _pieces.begin() ? nullptr : std::prev(next)->epoch;
}

template <typename T>
std::vector<const T *> EpochSequence<T>::find(const Core::TimeWindow &window) const
{
    std::vector<const T *> epochs;
    if (window.isEmpty())
        return epochs;
    epochs.push_back(find(window.startTime()));
    for (auto piece = nextPiece(window.startTime());
         piece != _pieces.end() && piece->begin < window.endTime(); ++piece)
        epochs.push_back(piece->epoch);
    return epochs;
}

Inventory::Inventory(std::vector<NetworkPtr> networks) : _networks(std::move(networks))
{
    EpochsByID<Station> stations;
    EpochsByID<Stream> streams;
    forEachStation(_networks, [&](const Station &station) {
        const std::string id = station.network()->code() + '.' + station.code();
        stations[id].push_back(&station);
        forEachStream(station, [&](const Stream &stream) {
            const std::string place = '.' + stream.sensorLocation()->code() + '.';
            streams[id + place + stream.code()].push_back(&stream);
        });
    });
    _stations = sequencesOf(std::move(stations));
    _streams = sequencesOf(std::move(streams));
}

const Stream *Inventory::findStream(const std::string &id, Core::Time time) const
{
    return find(_streams, id, time);
}

std::vector<const Stream *> Inventory::findStreams(const std::string &id,
                                                   const Core::TimeWindow &window) const
{
    const auto sequence = _streams.find(id);
    return sequence == _streams.end() ? std::vector<const Stream *>{nullptr}
                                      : sequence->second.find(window);
}

const Station *Inventory::findStation(const std::string &id, Core::Time time) const
{
    return find(_stations, id, time);
}

Coordinates Inventory::coordinates(const std::string &id, Core::Time time) const
{
    const Station *station = findStation(id, time);
    return station ? station->coordinates() : Coordinates();
}

std::vector<std::string> Inventory::stationIDs() const
{
    std::vector<std::string> ids;
    for (const auto &[id, sequence] : _stations)
        ids.push_back(id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::vector<const Stream *> Inventory::streams() const
{
    std::vector<std::pair<std::string, const Stream *>> all;
    forEachStation(_networks, [&](const Station &station) {
        forEachStream(station,
                      [&](const Stream &stream) { all.emplace_back(id(&stream), &stream); });
    });
    std::stable_sort(all.begin(), all.end(), [](const auto &a, const auto &b) {
        const int order = a.first.compare(b.first);
        return order < 0 || (order == 0 && a.second->start() < b.second->start());
    });
    std::vector<const Stream *> streams;
    for (const auto &[id, stream] : all)
        streams.push_back(stream);
    return streams;
}

} // namespace DataModel
} // namespace Tellarix
