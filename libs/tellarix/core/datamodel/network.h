#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/timewindow.h>

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
class TELLARIX_CORE_API Network : public Core::BaseObject
{
public:
    explicit Network(std::string code = std::string());
    ~Network() override;

    Network(const Network &) = delete;
    Network &operator=(const Network &) = delete;

    const std::string &code() const { return _code; }
    void setCode(const std::string &code) { _code = code; }
    const std::string &description() const { return _description; }
    void setDescription(const std::string &description) { _description = description; }
    /** When the network is in operation; an invalid end means until further notice. */
    const Core::TimeWindow &epoch() const { return _epoch; }
    void setEpoch(const Core::TimeWindow &epoch) { _epoch = epoch; }
    Core::Time start() const { return _epoch.startTime(); }
    void setStart(Core::Time start) { _epoch.setStartTime(start); }
    Core::Time end() const { return _epoch.endTime(); }
    void setEnd(Core::Time end) { _epoch.setEndTime(end); }

    /** Adds a station that has no network yet; false for null or one that has. */
    bool add(Station *station);
    int stationCount() const { return static_cast<int>(_stations.size()); }
    Station *station(int index) const { return _stations[index].get(); }
    /** The first station of this code, null if there is none. */
    Station *findStation(const std::string &code) const;

private:
    std::string _code;
    std::string _description;
    Core::TimeWindow _epoch;
    std::vector<Core::SmartPointer<Station>> _stations;
};

using NetworkPtr = Core::SmartPointer<Network>;

} // namespace DataModel
} // namespace Tellarix
