// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/connection.h>
#include <tellarix/client/remote/seedlinkaddress.h>
#include <tellarix/client/remote/seedlinkprotocol.h>

#include <string>

namespace Tellarix {
namespace IO {

/**
 * The talk with a SeedLink server: a command and its reply, or the packets of the flow.
 *
 * Calls block up to the time-out of the address; end() makes them return soon. What fails leaves
 * the connection of no use, with a cause().
 */
class TELLARIX_CLIENT_API SeedLinkSession
{
public:
    enum class Outcome
    {
        Done,
        Refused,  /**< the server says no, with a cause() or none */
        TimedOut, /**< only of next() */
        Failed,
    };

    void setAddress(const SeedLinkAddress &address) { _address = address; }

    /** Connects, and asks for the name of the server. */
    Outcome open();
    /** Software and site as the server gives them. */
    const std::string &greeting() const { return _greeting; }

    /** Sends a line and waits for OK. */
    Outcome command(const std::string &line);
    /** Sends lines that have no reply, or whose replies come in the flow. */
    bool send(const std::string &lines);
    /** Opens the block of a station, names its streams and closes it by @p start. */
    Outcome request(const SeedLinkBlock &block, const std::string &start);

    /** Waits for the next packet, which holds until the next call. */
    Outcome next(SeedLinkPacket &packet, int msecs);
    /** The next piece of the answer to INFO. */
    Outcome readInfo(std::string &text, bool &isLast);

    Connection &connection() { return _connection; }
    const Connection &connection() const { return _connection; }
    const std::string &cause() const { return _cause; }

private:
    Outcome reply(SeedLinkReply &reply);
    Outcome fail(const std::string &cause);
    Outcome fail(Connection::Outcome outcome);
    int timeoutMSecs() const;

    SeedLinkAddress _address;
    Connection _connection;
    std::string _greeting;
    std::string _cause;
    size_t _packetSize{0}; /**< of the packet given out last, which is still in the buffer */
    size_t _lastLength{512};
};

} // namespace IO
} // namespace Tellarix
