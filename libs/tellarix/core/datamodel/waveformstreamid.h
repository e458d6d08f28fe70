// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>

#include <string>

namespace Tellarix {
namespace DataModel {

/** Codes that name one stream of waveforms. */
class TELLARIX_CORE_API WaveformStreamID
{
public:
    WaveformStreamID() = default;
    WaveformStreamID(std::string networkCode, std::string stationCode, std::string locationCode,
                     std::string channelCode, std::string resourceURI = std::string());

    const std::string &networkCode() const { return _networkCode; }
    const std::string &stationCode() const { return _stationCode; }
    const std::string &locationCode() const { return _locationCode; }
    const std::string &channelCode() const { return _channelCode; }
    const std::string &resourceURI() const { return _resourceURI; }
    void setNetworkCode(const std::string &code) { _networkCode = code; }
    void setStationCode(const std::string &code) { _stationCode = code; }
    void setLocationCode(const std::string &code) { _locationCode = code; }
    void setChannelCode(const std::string &code) { _channelCode = code; }
    void setResourceURI(const std::string &uri) { _resourceURI = uri; }

    /** "NET.STA.LOC.CHA" */
    std::string id() const;

    bool operator==(const WaveformStreamID &other) const;
    bool operator!=(const WaveformStreamID &other) const { return !(*this == other); }

private:
    std::string _networkCode;
    std::string _stationCode;
    std::string _locationCode;
    std::string _channelCode;
    std::string _resourceURI;
};

} // namespace DataModel
} // namespace Tellarix
