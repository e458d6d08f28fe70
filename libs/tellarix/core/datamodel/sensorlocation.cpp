// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/sensorlocation.h>

#include <tellarix/core/datamodel/stream.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

SensorLocation::SensorLocation(std::string code) : InventorySite(std::move(code))
{}

SensorLocation::~SensorLocation()
{
    for (const StreamPtr &stream : _streams)
        stream->_location = nullptr;
}

bool SensorLocation::add(Stream *stream)
{
    if (!stream || stream->_location)
        return false;

    stream->_location = this;
    _streams.emplace_back(stream);
    return true;
}

Stream *SensorLocation::findStream(const std::string &code) const
{
    for (const StreamPtr &stream : _streams) {
        if (stream->code() == code)
            return stream.get();
    }
    return nullptr;
}

} // namespace DataModel
} // namespace Tellarix
