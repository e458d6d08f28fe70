// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/waveformstreamid.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

WaveformStreamID::WaveformStreamID(std::string networkCode, std::string stationCode,
                                   std::string locationCode, std::string channelCode,
                                   std::string resourceURI)
    : _networkCode(std::move(networkCode)), _stationCode(std::move(stationCode)),
      _locationCode(std::move(locationCode)), _channelCode(std::move(channelCode)),
      _resourceURI(std::move(resourceURI))
{}

std::string WaveformStreamID::id() const
{
    return _networkCode + '.' + _stationCode + '.' + _locationCode + '.' + _channelCode;
}

bool WaveformStreamID::operator==(const WaveformStreamID &other) const
{
    return _networkCode == other._networkCode && _stationCode == other._stationCode &&
           _locationCode == other._locationCode && _channelCode == other._channelCode &&
           _resourceURI == other._resourceURI;
}

} // namespace DataModel
} // namespace Tellarix
