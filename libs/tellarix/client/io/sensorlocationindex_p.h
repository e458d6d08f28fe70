// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/station.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace Tellarix {
namespace IO {

/** The sensor locations of a station while its streams are read: one for each code and place. */
class SensorLocationIndex
{
public:
    explicit SensorLocationIndex(DataModel::Station &station) : _station(station) {}

    /** The sensor location of a code at a place, which is made if need be. */
    DataModel::SensorLocation &at(const std::string &code, const DataModel::Coordinates &place);

private:
    /** Bits of the numbers: one that is none has to equal itself. */
    using Key = std::pair<std::string, std::array<uint64_t, 3>>;

    DataModel::Station &_station;
    std::map<Key, DataModel::SensorLocation *> _locations;
};

/** A location code as records carry it: files write an empty one as blanks or "--". */
std::string locationCodeOf(const std::string &text);

/** Takes a latitude or longitude beyond the globe away; false if there was one. */
bool keepOnGlobe(DataModel::Coordinates &place);

} // namespace IO
} // namespace Tellarix
