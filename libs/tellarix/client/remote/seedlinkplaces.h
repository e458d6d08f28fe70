// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/timewindow.h>

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace Tellarix {
namespace IO {

/**
 * How far the records of each station have come from a server, so that the next connection goes on
 * from there: without a record lost that the server still has, and without one that comes twice.
 *
 * The next packet is asked for by its number. A server that has begun to count anew gives others by
 * that number, or none; that shows by what comes first, and then the station is asked for by time.
 */
class TELLARIX_CLIENT_API SeedLinkPlaces
{
public:
    enum class Verdict
    {
        New,
        Known,   /**< a record that has come before */
        Doubtful /**< the number didn't lead where it should: ask by time */
    };

    /** A connection has been lost: what then comes first of each stream shows whether records were
     *  lost with it. Streams that are far behind the others had ended before. */
    void noteLoss();
    /** A connection begins; what the numbers of before are worth has to show. */
    void beginConnection();
    /**
     * Judges the next record, and remembers it unless it is doubtful.
     * @param isAhead  its clock is wrong: it doesn't count for where to go on
     */
    Verdict take(const std::string &station, const std::string &stream, uint32_t sequence,
                 const Core::TimeWindow &record, double samplingFrequency, bool isAhead);
    /** What the server no longer had when it was asked to go on, between the stream's record
     *  before and the one that was taken last; empty if nothing was lost. */
    const Core::TimeWindow &lost() const { return _lost; }

    /** The number to go on behind, which then is expected to lead there; nothing if there is none,
     *  or it can't be relied on. */
    std::optional<uint32_t> resume(const std::string &station);
    /** The time to go on from, for all stations of a pattern "NET.STA". Not valid as long as all
     *  that has come is remembered: then streams of theirs may not have come at all yet, and it is
     *  best to ask for everything again. */
    Core::Time timeOf(const std::string &pattern) const;
    /** Stations that were asked for by number and have not been heard of on this connection are
     *  asked for by time from now on; false if there are none. */
    bool doubtSilent();
    /** All numbers have lost their meaning. */
    void doubtAll();

    /** Makes the record that was taken last count for the text form, too. */
    void confirm() { _last = Undo(); }
    /** Text form, a line for each stream. */
    std::string toText(const std::string &server) const;
    /** False, with nothing changed, if the text is damaged; a text of another @p server is read,
     * but its numbers don't count. */
    bool fromText(const std::string &text, const std::string &server);

private:
    using Key = std::pair<int64_t, int64_t>; /**< start and end of a record in microseconds */

    struct Stream
    {
        Core::Time latestEnd;
        Core::Time floor;       /**< what ends up to here and is not among the recent is known */
        std::deque<Key> recent; /**< those behind the floor, as they came */
        bool isChecked{false};  /**< against the place at which it should go on */
        bool isInDoubt{false};  /**< since a loss nothing has come of it */
    };

    struct Station
    {
        std::optional<uint32_t> sequence;
        bool isByTime{false};
        bool isResumed{false}; /**< this connection goes on by number */
        bool isHeard{false};   /**< on this connection */
        std::map<std::string, Stream> streams;
    };

    static bool isKnown(const Stream &stream, Key key, bool isByTime);
    static bool isDoubtful(const Station &station, const Stream &stream, uint32_t sequence,
                           const Core::TimeWindow &record, double samplingFrequency);
    static bool isBehindGap(const Stream &stream, Core::Time start, double samplingFrequency);
    static void remember(Stream &stream, Key key);

    /** What held before the last record was taken. */
    struct Undo
    {
        const Station *station{nullptr};
        const Stream *stream{nullptr};
        std::optional<uint32_t> sequence;
        Core::Time latestEnd;
    };

    std::map<std::string, Station> _stations;
    Undo _last;
    Core::TimeWindow _lost;
};

} // namespace IO
} // namespace Tellarix
