#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

class Station;
class Stream;

/** A place of a station at which sensors stand; its code is often empty. */
class TELLARIX_CORE_API SensorLocation : public Core::BaseObject
{
public:
    explicit SensorLocation(std::string code = std::string());
    ~SensorLocation() override;

    SensorLocation(const SensorLocation &) = delete;
    SensorLocation &operator=(const SensorLocation &) = delete;

    const std::string &code() const { return _code; }
    void setCode(const std::string &code) { _code = code; }
    /** Degrees, north and east positive. */
    double latitude() const { return _latitude; }
    void setLatitude(double latitude) { _latitude = latitude; }
    double longitude() const { return _longitude; }
    void setLongitude(double longitude) { _longitude = longitude; }
    /** Metres above sea level. */
    double elevation() const { return _elevation; }
    void setElevation(double elevation) { _elevation = elevation; }

    /** The station that the location was added to, null if there is none. */
    Station *station() const { return _station; }

    /** Adds a stream that has no sensor location yet; false for null or one that has. */
    bool add(Stream *stream);
    int streamCount() const { return static_cast<int>(_streams.size()); }
    Stream *stream(int index) const { return _streams[index].get(); }
    /** The first stream of this code, null if there is none. */
    Stream *findStream(const std::string &code) const;

private:
    friend class Station;

    std::string _code;
    double _latitude{0};
    double _longitude{0};
    double _elevation{0};
    Station *_station{nullptr};
    std::vector<Core::SmartPointer<Stream>> _streams;
};

using SensorLocationPtr = Core::SmartPointer<SensorLocation>;

} // namespace DataModel
} // namespace Tellarix
