// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/network.h>

#include <tellarix/core/datamodel/station.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

Network::Network(std::string code) : InventoryObject(std::move(code))
{}

Network::~Network()
{
    for (const StationPtr &station : _stations)
        station->_network = nullptr;
}

bool Network::add(Station *station)
{
    if (!station || station->_network)
        return false;

    station->_network = this;
    _stations.emplace_back(station);
    return true;
}

Station *Network::findStation(const std::string &code) const
{
    for (const StationPtr &station : _stations) {
        if (station->code() == code)
            return station.get();
    }
    return nullptr;
}

} // namespace DataModel
} // namespace Tellarix
