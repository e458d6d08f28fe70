// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/utils.h>

#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <cmath>

namespace Tellarix {
namespace DataModel {

WaveformStreamID waveformStreamID(const Stream *stream)
{
    WaveformStreamID result;
    if (!stream)
        return result;

    const SensorLocation *location = stream->sensorLocation();
    const Station *station = location ? location->station() : nullptr;
    const Network *network = station ? station->network() : nullptr;
    if (network)
        result.setNetworkCode(network->code());
    if (station)
        result.setStationCode(station->code());
    if (location)
        result.setLocationCode(location->code());
    result.setChannelCode(stream->code());
    return result;
}

std::string id(const Stream *stream, const std::string &emptyCode, bool keepEmptyCode)
{
    if (!stream)
        return std::string();

    const WaveformStreamID codes = waveformStreamID(stream);
    std::string location = codes.locationCode().empty() ? emptyCode : codes.locationCode();
    if (!location.empty() || keepEmptyCode)
        location += '.';
    return codes.networkCode() + '.' + codes.stationCode() + '.' + location + codes.channelCode();
}

Coordinates coordinates(const Stream *stream)
{
    const SensorLocation *location = stream ? stream->sensorLocation() : nullptr;
    const Station *station = location ? location->station() : nullptr;
    Coordinates result = station ? station->coordinates() : Coordinates();
    if (!location)
        return result;
    if (location->coordinates().isPlace()) {
        result.latitude = location->latitude();
        result.longitude = location->longitude();
    }
    if (!std::isnan(location->elevation()))
        result.elevation = location->elevation();
    return result;
}

} // namespace DataModel
} // namespace Tellarix
