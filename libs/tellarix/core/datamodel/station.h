#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/timewindow.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Network;
class SensorLocation;

/** A station of a network. */
class TELLARIX_CORE_API Station : public Core::BaseObject
{
public:
    explicit Station(std::string code = std::string());
    ~Station() override;

    Station(const Station &) = delete;
    Station &operator=(const Station &) = delete;

    const std::string &code() const { return _code; }
    void setCode(const std::string &code) { _code = code; }
    const std::string &description() const { return _description; }
    void setDescription(const std::string &description) { _description = description; }
    /** Degrees, north and east positive. */
    double latitude() const { return _latitude; }
    void setLatitude(double latitude) { _latitude = latitude; }
    double longitude() const { return _longitude; }
    void setLongitude(double longitude) { _longitude = longitude; }
    /** Metres above sea level. */
    double elevation() const { return _elevation; }
    void setElevation(double elevation) { _elevation = elevation; }
    /** When the station is in operation; an invalid end means until further notice. */
    const Core::TimeWindow &epoch() const { return _epoch; }
    void setEpoch(const Core::TimeWindow &epoch) { _epoch = epoch; }
    Core::Time start() const { return _epoch.startTime(); }
    void setStart(Core::Time start) { _epoch.setStartTime(start); }
    Core::Time end() const { return _epoch.endTime(); }
    void setEnd(Core::Time end) { _epoch.setEndTime(end); }

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

    std::string _code;
    std::string _description;
    double _latitude{0};
    double _longitude{0};
    double _elevation{0};
    Core::TimeWindow _epoch;
    Network *_network{nullptr};
    std::vector<Core::SmartPointer<SensorLocation>> _locations;
};

using StationPtr = Core::SmartPointer<Station>;

} // namespace DataModel
} // namespace Tellarix
