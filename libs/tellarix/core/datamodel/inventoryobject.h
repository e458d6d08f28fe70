// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/timewindow.h>

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
    /** When the object is in operation; an invalid end means until further notice. */
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

/** An inventory object that stands somewhere. */
class TELLARIX_CORE_API InventorySite : public InventoryObject
{
public:
    using InventoryObject::InventoryObject;
    ~InventorySite() override;

    /** Degrees, north and east positive. */
    double latitude() const { return _latitude; }
    void setLatitude(double latitude) { _latitude = latitude; }
    double longitude() const { return _longitude; }
    void setLongitude(double longitude) { _longitude = longitude; }
    /** Metres above sea level. */
    double elevation() const { return _elevation; }
    void setElevation(double elevation) { _elevation = elevation; }

private:
    double _latitude{0};
    double _longitude{0};
    double _elevation{0};
};

} // namespace DataModel
} // namespace Tellarix
