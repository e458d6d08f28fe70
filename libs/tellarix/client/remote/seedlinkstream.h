// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/seedlinkplaces.h>
#include <tellarix/client/remote/seedlinksession.h>

#include <QElapsedTimer>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/**
 * Live records of a SeedLink server, and those of the past that it still holds:
 * "seedlink://HOST[:PORT][?OPTION=VALUE&...]"; SeedLinkAddress lists the options.
 *
 * Wildcards in the codes of stations are left to the server; one that refuses them, or sends
 * nothing by them, is asked for the stations that it lists.
 *
 * Without a window, or with an end alone that is still to come, records are delivered from now on.
 * A window with a beginning brings those that the server holds of it, and without an end goes on
 * with the present. Streams of one station are asked for in one window that holds all of theirs;
 * what nobody asked for is left out, and told if it is of a foreign stream.
 *
 * A connection that is lost is told once, and made again after pauses that grow up to a limit and
 * begin anew when data have come. The stream goes on where it was: see SeedLinkPlaces. That is a
 * note; what the server no longer had then is a fault, told with stream and time. It ends when
 * all windows have an end that has passed and the server says that it has sent all, or has sent
 * nothing of them for some seconds although it answers; with `fetch=yes` when the server says so.
 *
 * Records whose time lies in the future are delivered and told once for each stream; they don't
 * count for where to go on, nor for the end of a window.
 *
 * A close() that comes before the first open() counts: open() then fails.
 */
class TELLARIX_CLIENT_API SeedLinkStream : public RecordStream
{
public:
    ~SeedLinkStream() override;

    bool setSource(const std::string &source) override;
    /** Also fails if no stream of such a server can match the codes. */
    bool addStream(const std::string &network, const std::string &station,
                   const std::string &location, const std::string &channel,
                   const Core::TimeWindow &window = Core::TimeWindow()) override;
    /** True if any window has no end, or one that is still to come. */
    bool isLive() const override;
    /** Connects and asks for the streams; fails if the server takes none of the requests, or can't
     *  be reached, unless it is live and persistent. Records of the wait then come with the others,
     *  if the server has them. */
    bool open() override;
    RecordPtr next() override;
    void close() override;

    std::string originName() const override { return _address.name(); }
    /** Share of the windows that has come, if all have both ends. */
    double progress() const override { return _progress; }
    std::string outage() const override;

private:
    enum class Step
    {
        Record,
        Nothing,
        Lost,  /**< the connection; the session has the cause */
        Again, /**< connect at once */
        End,
    };

    struct Station
    {
        std::string network;
        std::string station;
    };

    std::vector<SeedLinkBlock> blocksOf(const std::vector<Station> *known) const;
    void setWindows(const std::vector<SeedLinkBlock> &blocks);
    bool connect();
    bool listStations(std::vector<Station> &stations);
    bool request(const std::vector<SeedLinkBlock> &blocks);
    std::string startOf(const SeedLinkBlock &block);

    Step step(RecordPtr &record);
    Step takePacket(const SeedLinkPacket &packet, RecordPtr &record);
    Step takeRecord(const SeedLinkPacket &packet, RecordPtr &record);
    Step takeSilence();
    Step takeEnd();
    bool doubtWildcards();
    bool isOfWildcards(const StreamCodes &codes) const;
    Step lost(const std::string &cause);
    RecordPtr decode(const SeedLinkPacket &packet, const StreamCodes &codes);
    int msecsToWait() const;
    bool arePast() const;
    bool isAhead(const StreamCodes &codes, Core::Time start);
    void noteProgress(Core::Time end);

    bool reconnect();
    void lose();
    void setOutage(const std::string &cause);
    void tellLost(const StreamCodes &codes);
    void noteLife();
    void tell(StreamMessage::Severity severity, const std::string &cause);
    void tellOnce(const std::string &subject, const std::string &cause);

    void loadPlaces();
    void savePlaces();

    SeedLinkAddress _address;
    SeedLinkSession _session;
    std::string _greeting;            /**< of the connection before */
    bool _isResolving{false};         /**< the server takes no wildcards for stations */
    bool _isDoubtingWildcards{false}; /**< it does, but nothing has come by them */
    bool _areWildcardsHeard{false};   /**< something has come by wildcards, or there are none */
    Core::TimeWindow _allWindows;     /**< an end is set if all have one */
    SeedLinkPlaces _places;
    bool _arePlacesLoaded{false}; /**< from a file: they are none of this run */
    Formats::MiniSeedDecoder _decoder;

    bool _wasOpened{false};
    bool _isReading{false}; /**< inside of next(), where close() must not touch the connection */
    bool _isFlowing{false};
    bool _isAtEnd{false};
    Core::Time _firstFlow; /**< when live data were asked for first */
    std::string _cause;    /**< why the connection is of no use any more */
    bool _isLossTold{false};
    bool _isPauseSkipped{false};
    double _pauseSeconds{1};
    QElapsedTimer _sinceLoss;
    QElapsedTimer _sinceFlow;
    QElapsedTimer _sinceBytes;  /**< any packet */
    QElapsedTimer _sinceWanted; /**< a record that was asked for, or the beginning of the flow */
    QElapsedTimer _sinceSaved;
    bool _isSilenceChecked{false};
    bool _isAsked{false};     /**< for a sign of life since the last packet */
    bool _hasAnswered{false}; /**< with anything else since the last wanted record */
    int _messages{0};
    std::set<std::string> _told; /**< what is told once */
    std::atomic<bool> _closed{false};
    std::atomic<double> _progress{-1};
    mutable std::mutex _outageMutex;
    std::string _outage;
};

} // namespace IO
} // namespace Tellarix
