// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <string>

namespace Tellarix {
namespace IO {

/**
 * Address of a SeedLink server, "HOST[:PORT][?OPTION=VALUE&...]".
 *
 * | option    | default | meaning                                                           |
 * |-----------|---------|-------------------------------------------------------------------|
 * | timeout   | 120     | seconds without a byte after which a connection counts as lost    |
 * | keepalive | 30      | seconds without a byte after which the server is asked for a sign |
 * |           |         | of life; 0 for never                                              |
 * | retry     | 60      | longest pause between two attempts to connect again, which grows  |
 * |           |         | from a second on; 0 ends the stream when the connection is lost   |
 * | settle    | 5       | seconds of silence after which a server has sent what it holds    |
 * | state     |         | file in which the place in each station is kept over restarts     |
 * | fetch     | no      | "yes" ends the stream when the server has sent what it holds      |
 * | type      |         | asks for one type of records only, e.g. "D"; not all servers      |
 * |           |         | heed it                                                           |
 */
struct TELLARIX_CLIENT_API SeedLinkAddress
{
    std::string host;
    int port{18000};
    double timeout{120};
    double keepAlive{30};
    double longestPause{60};
    double settle{5};
    std::string stateFile;
    bool fetch{false};
    char type{'\0'};

    /** "HOST:PORT" */
    std::string name() const;
};

/** Reads an address; false with a reason, which shows nothing that may be a secret. */
TELLARIX_CLIENT_API bool parseSeedLinkAddress(const std::string &text, SeedLinkAddress &address,
                                              std::string &error);

} // namespace IO
} // namespace Tellarix
