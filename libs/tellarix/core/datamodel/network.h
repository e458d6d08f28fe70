// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/datamodel/inventoryobject.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Station;

/**
 * A seismic network: the root of a tree of stations, sensor locations and streams.
 *
 * Parents hold their children by counted pointers, children know their parent by a plain one,
 * which is null as soon as the parent is gone.
 */
class TELLARIX_CORE_API Network : public InventoryObject
{
public:
    explicit Network(std::string code = std::string());
    ~Network() override;

    const std::string &description() const { return _description; }
    void setDescription(const std::string &description) { _description = description; }

    /** Adds a station that has no network yet; false for null or one that has. */
    bool add(Station *station);
    int stationCount() const { return static_cast<int>(_stations.size()); }
    Station *station(int index) const { return _stations[index].get(); }
    /** The first station of this code, null if there is none. */
    Station *findStation(const std::string &code) const;

private:
    std::string _description;
    std::vector<Core::SmartPointer<Station>> _stations;
};

using NetworkPtr = Core::SmartPointer<Network>;

} // namespace DataModel
} // namespace Tellarix
