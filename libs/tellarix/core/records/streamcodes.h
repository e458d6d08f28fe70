// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>

#include <string>

namespace Tellarix {

class StreamCodes;
using StreamCodesCPtr = Core::SmartPointer<const StreamCodes>;

/**
 * The four codes of a stream and their dotted form, shared by all records of the stream.
 *
 * Equal codes may stand in more than one object; compare id(), not pointers.
 */
class TELLARIX_CORE_API StreamCodes : public Core::BaseObject
{
public:
    StreamCodes(std::string network, std::string station, std::string location,
                std::string channel);

    /** Codes of a dotted id "NET.STA.LOC.CHA"; null unless it has exactly four parts. */
    static StreamCodesCPtr FromID(const std::string &id);

    const std::string &network() const { return _network; }
    const std::string &station() const { return _station; }
    const std::string &location() const { return _location; }
    const std::string &channel() const { return _channel; }
    /** "NET.STA.LOC.CHA"; an empty location leaves nothing between its dots. */
    const std::string &id() const { return _id; }

private:
    std::string _network;
    std::string _station;
    std::string _location;
    std::string _channel;
    std::string _id;
};

} // namespace Tellarix
