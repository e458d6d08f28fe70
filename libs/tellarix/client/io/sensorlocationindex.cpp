// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/sensorlocationindex_p.h>

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/strings.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace Tellarix {
namespace IO {

namespace {

uint64_t bitsOf(double value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

} // namespace

DataModel::SensorLocation &SensorLocationIndex::at(const std::string &code,
                                                   const DataModel::Coordinates &place)
{
    const Key key(code, {bitsOf(place.latitude), bitsOf(place.longitude), bitsOf(place.elevation)});
    DataModel::SensorLocation *&location = _locations[key];
    if (!location) {
        location = new DataModel::SensorLocation(code);
        location->setCoordinates(place);
        _station.add(location);
    }
    return *location;
}

std::string locationCodeOf(const std::string &text)
{
    const std::string code = Core::trimmed(text);
    return code == "--" ? std::string() : code;
}

bool keepOnGlobe(DataModel::Coordinates &place)
{
    const bool isBeyond = std::abs(place.latitude) > 90 || std::abs(place.longitude) > 360;
    if (isBeyond)
        place.latitude = place.longitude = std::numeric_limits<double>::quiet_NaN();
    return !isBeyond;
}

} // namespace IO
} // namespace Tellarix
