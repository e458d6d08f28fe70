// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/seedlinkinventory.h>

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <map>

namespace Tellarix {
namespace IO {

namespace {

bool hasWaveforms(const SeedLinkStreamEntry &entry)
{
    return entry.type.empty() || entry.type == "D";
}

DataModel::StationPtr stationOf(const SeedLinkStation &listed)
{
    const DataModel::StationPtr station(new DataModel::Station(listed.code));
    station->setSiteName(listed.name);
    std::map<std::string, DataModel::SensorLocationPtr> locations;
    const auto add = [&](const SeedLinkStreamEntry &entry) {
        DataModel::SensorLocationPtr &location = locations[entry.location];
        if (!location)
            location = new DataModel::SensorLocation(entry.location);
        const DataModel::StreamPtr stream(new DataModel::Stream(entry.channel));
        stream->setStart(entry.begin);
        stream->setEnd(entry.end);
        location->add(stream.get());
    };
    for (const SeedLinkStreamEntry &entry : listed.streams) {
        if (hasWaveforms(entry))
            add(entry);
    }
    if (listed.streams.empty())
        add({"*", "*", "D", {}, {}});
    for (const auto &[code, location] : locations)
        station->add(location.get());
    return station;
}

} // namespace

std::vector<DataModel::NetworkPtr> networksOf(const std::vector<SeedLinkStation> &stations)
{
    std::map<std::string, DataModel::NetworkPtr> networks;
    for (const SeedLinkStation &listed : stations) {
        DataModel::NetworkPtr &network = networks[listed.network];
        if (!network)
            network = new DataModel::Network(listed.network);
        network->add(stationOf(listed).get());
    }
    std::vector<DataModel::NetworkPtr> result;
    for (const auto &[code, network] : networks)
        result.push_back(network);
    return result;
}

} // namespace IO
} // namespace Tellarix
