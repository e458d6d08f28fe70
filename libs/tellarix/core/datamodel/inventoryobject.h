// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/timewindow.h>

#include <limits>
#include <string>

namespace Tellarix {
namespace DataModel {

/** What networks, stations, sensor locations and streams share: a code and a time of operation. */
class TELLARIX_CORE_API InventoryObject : public Core::BaseObject
{
public:
    explicit InventoryObject(std::string code);
    ~InventoryObject() override;

    InventoryObject(const InventoryObject &) = delete;
    InventoryObject &operator=(const InventoryObject &) = delete;

    const std::string &code() const { return _code; }
    void setCode(const std::string &code) { _code = code; }
    /** When the object is in operation; without a valid start since ever, without a valid end until
     *  further notice. */
    const Core::TimeWindow &epoch() const { return _epoch; }
    void setEpoch(const Core::TimeWindow &epoch) { _epoch = epoch; }
    Core::Time start() const { return _epoch.startTime(); }
    void setStart(Core::Time start) { _epoch.setStartTime(start); }
    Core::Time end() const { return _epoch.endTime(); }
    void setEnd(Core::Time end) { _epoch.setEndTime(end); }

private:
    std::string _code;
    Core::TimeWindow _epoch;
};

/** Where something stands, in degrees and metres; what is unknown is not-a-number. */
struct Coordinates
{
    double latitude{std::numeric_limits<double>::quiet_NaN()};  /**< north is positive */
    double longitude{std::numeric_limits<double>::quiet_NaN()}; /**< east is positive */
    double elevation{std::numeric_limits<double>::quiet_NaN()}; /**< above sea level */

    /** Whether latitude and longitude are known. */
    bool isPlace() const { return latitude == latitude && longitude == longitude; }
};

/** An inventory object that stands somewhere. */
class TELLARIX_CORE_API InventorySite : public InventoryObject
{
public:
    using InventoryObject::InventoryObject;
    ~InventorySite() override;

    const Coordinates &coordinates() const { return _coordinates; }
    void setCoordinates(const Coordinates &coordinates) { _coordinates = coordinates; }
    /** Degrees, north and east positive; not-a-number if unknown. */
    double latitude() const { return _coordinates.latitude; }
    void setLatitude(double latitude) { _coordinates.latitude = latitude; }
    double longitude() const { return _coordinates.longitude; }
    void setLongitude(double longitude) { _coordinates.longitude = longitude; }
    /** Metres above sea level; not-a-number if unknown. */
    double elevation() const { return _coordinates.elevation; }
    void setElevation(double elevation) { _coordinates.elevation = elevation; }

private:
    Coordinates _coordinates;
};

} // namespace DataModel
} // namespace Tellarix
