// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/station.h>

#include <tellarix/core/datamodel/sensorlocation.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

Station::Station(std::string code) : InventorySite(std::move(code))
{}

Station::~Station()
{
    for (const SensorLocationPtr &location : _locations)
        location->_station = nullptr;
}

bool Station::add(SensorLocation *location)
{
    if (!location || location->_station)
        return false;

    location->_station = this;
    _locations.emplace_back(location);
    return true;
}

SensorLocation *Station::findSensorLocation(const std::string &code) const
{
    for (const SensorLocationPtr &location : _locations) {
        if (location->code() == code)
            return location.get();
    }
    return nullptr;
}

} // namespace DataModel
} // namespace Tellarix
