// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/seedlinksession.h>
#include <tellarix/core/time.h>

#include <functional>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** A stream as a server lists it; times are not valid where it tells none. */
struct TELLARIX_CLIENT_API SeedLinkStreamEntry
{
    std::string location;
    std::string channel;
    std::string type; /**< "D" for waveforms */
    Core::Time begin; /**< of what the server holds */
    Core::Time end;
};

/** A station as a server lists it. */
struct TELLARIX_CLIENT_API SeedLinkStation
{
    std::string network;
    std::string code;
    std::string name;
    std::vector<SeedLinkStreamEntry> streams; /**< none if stations alone are listed */
};

using SeedLinkStationHandler = std::function<bool(const SeedLinkStation &)>;

/**
 * Asks a connected server for "STATIONS" or "STREAMS", and hands over each station as it comes.
 * @param handler  false ends the reading, which then fails without an error
 */
TELLARIX_CLIENT_API bool readSeedLinkStations(SeedLinkSession &session, const std::string &level,
                                              const SeedLinkStationHandler &handler,
                                              std::string *error);

/** Lists what a SeedLink server has; read() blocks and belongs to one thread. */
class TELLARIX_CLIENT_API SeedLinkStations
{
public:
    /** Takes an address as SeedLinkStream does, without "seedlink://". */
    bool setSource(const std::string &source);
    /** Connects and lists all stations, with their streams or without. */
    bool read(bool withStreams);
    /** The same with streams, or without where the server tells none. */
    bool readAll();
    /** Ends read() soon, also one that is still to come; any thread may call it. */
    void close() { _session.connection().end(); }

    const std::vector<SeedLinkStation> &stations() const { return _stations; }
    /** Software and site of the server. */
    const std::string &server() const { return _session.greeting(); }
    /** Why setSource() or read() failed, in one line. */
    const std::string &errorString() const { return _errorString; }

private:
    SeedLinkAddress _address;
    SeedLinkSession _session;
    std::vector<SeedLinkStation> _stations;
    std::string _errorString;
    bool _isConnected{false}; /**< the last read() was */
};

} // namespace IO
} // namespace Tellarix
