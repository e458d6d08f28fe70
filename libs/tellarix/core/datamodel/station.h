// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Network;
class SensorLocation;

/** A station of a network. */
class TELLARIX_CORE_API Station : public InventorySite
{
public:
    explicit Station(std::string code = std::string());
    ~Station() override;

    const std::string &description() const { return _description; }
    void setDescription(const std::string &description) { _description = description; }

    /** Name of the place, such as a town. */
    const std::string &siteName() const { return _siteName; }
    void setSiteName(const std::string &name) { _siteName = name; }

    /** The network that the station was added to, null if there is none. */
    Network *network() const { return _network; }

    /** Adds a sensor location that has no station yet; false for null or one that has. */
    bool add(SensorLocation *location);
    int sensorLocationCount() const { return static_cast<int>(_locations.size()); }
    SensorLocation *sensorLocation(int index) const { return _locations[index].get(); }
    /** The first sensor location of this code, null if there is none. */
    SensorLocation *findSensorLocation(const std::string &code) const;

private:
    friend class Network;

    std::string _description;
    std::string _siteName;
    Network *_network{nullptr};
    std::vector<Core::SmartPointer<SensorLocation>> _locations;
};

using StationPtr = Core::SmartPointer<Station>;

} // namespace DataModel
} // namespace Tellarix
