// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/records/streamcodes.h>

#include <algorithm>
#include <utility>

namespace Tellarix {

StreamCodes::StreamCodes(std::string network, std::string station, std::string location,
                         std::string channel)
    : _network(std::move(network)), _station(std::move(station)), _location(std::move(location)),
      _channel(std::move(channel)),
      _id(_network + '.' + _station + '.' + _location + '.' + _channel)
{}

StreamCodesCPtr StreamCodes::FromID(const std::string &id)
{
    if (std::count(id.begin(), id.end(), '.') != 3)
        return nullptr;

    const size_t first = id.find('.');
    const size_t second = id.find('.', first + 1);
    const size_t third = id.find('.', second + 1);
    return new StreamCodes(id.substr(0, first), id.substr(first + 1, second - first - 1),
                           id.substr(second + 1, third - second - 1), id.substr(third + 1));
}

} // namespace Tellarix
