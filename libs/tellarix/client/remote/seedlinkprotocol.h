// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/records/formats/miniseed.h>
#include <tellarix/core/timewindow.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tellarix {
namespace IO {

/** A reply line, as far as it has come. */
struct TELLARIX_CLIENT_API SeedLinkReply
{
    enum class Kind
    {
        NeedsBytes,
        Ok,
        Error, /**< the text is the reason, or empty */
        Text,
        TooLong, /**< no line of this protocol */
    };

    Kind kind{Kind::NeedsBytes};
    size_t size{0};   /**< bytes that belong to it, with the line end */
    std::string text; /**< printable, cut where it gets long */
};

/** Reads one line from the beginning of @p bytes. */
TELLARIX_CLIENT_API SeedLinkReply parseSeedLinkReply(std::string_view bytes);

/** What follows in the flow of data, as far as it has come. */
struct TELLARIX_CLIENT_API SeedLinkPacket
{
    enum class Kind
    {
        NeedsBytes,
        Record,  /**< header and record are set */
        Damaged, /**< a record that can't be read: cause */
        Info,    /**< a piece of an answer: text */
        End,     /**< the server has sent all */
        Error,   /**< the server gives up */
        Lost,    /**< nothing that may stand here */
    };

    Kind kind{Kind::NeedsBytes};
    size_t size{0}; /**< bytes that belong to it */
    uint32_t sequence{0};
    Formats::MiniSeedHeader header;
    std::string_view record;
    std::string_view text;
    bool isLast{false};    /**< of the pieces of an answer */
    bool isRefused{false}; /**< the answer holds nothing, since the server doesn't give it */
    std::string cause;
};

/**
 * Reads one packet from the beginning of @p bytes, into which the result points.
 * @param lastLength  bytes of the record before, by which one is passed over that is damaged
 */
TELLARIX_CLIENT_API SeedLinkPacket parseSeedLinkPacket(std::string_view bytes,
                                                       size_t lastLength = 512);

/** The longest record that is taken; longer ones are damage. */
constexpr size_t SeedLinkMaxRecord = 64 * 1024;

constexpr uint32_t SeedLinkSequences = 1 << 24;
/** The number behind @p sequence. */
inline uint32_t nextSeedLinkSequence(uint32_t sequence)
{
    return (sequence + 1) % SeedLinkSequences;
}
/** True if @p sequence comes behind @p last, the numbers running in a circle. */
inline bool isSeedLinkSequenceBehind(uint32_t sequence, uint32_t last)
{
    const uint32_t step = (sequence - last) % SeedLinkSequences;
    return step != 0 && step < SeedLinkSequences / 2;
}

/** "YYYY,MM,DD,hh,mm,ss", the fraction of the second cut off; years 1 to 9999. */
TELLARIX_CLIENT_API std::string seedLinkTime(Core::Time time);

/**
 * The selectors that let through at least the streams of two patterns.
 *
 * A `*` becomes as many `?` as there is room for; empty characters are asked for by `-`.
 * @param type  one type of records, or 0 for all
 * @return none if no stream of such a server can match
 */
TELLARIX_CLIENT_API std::vector<std::string>
seedLinkSelectors(const std::string &location, const std::string &channel, char type = '\0');

/** Some streams of one station, or of several by wildcards, and the times wanted of them. */
struct TELLARIX_CLIENT_API SeedLinkBlock
{
    std::string network;
    std::string station;
    std::vector<std::string> selectors; /**< none for all streams */
    Core::TimeWindow window;            /**< either end may be unset */

    bool hasWildcards() const;
    /** "NET.STA" */
    std::string id() const { return network + '.' + station; }
};

/**
 * Adds streams to the block of their station; its window grows so that it holds all.
 * @return false if no stream of such a server can match
 */
TELLARIX_CLIENT_API bool addToSeedLinkBlocks(std::vector<SeedLinkBlock> &blocks,
                                             const SeedLinkBlock &station,
                                             const std::string &location,
                                             const std::string &channel, char type);

/** From where on a block is asked for. */
struct SeedLinkPosition
{
    std::optional<uint32_t> sequence;
    Core::TimeWindow window; /**< if there is no number */
};

/** The line that closes a block, without its end; @p fetch for what is there, with no wait. */
TELLARIX_CLIENT_API std::string seedLinkStart(const SeedLinkPosition &position, bool fetch);

/** At most @p length characters of a text of unknown origin, what can't be printed as '?'. */
TELLARIX_CLIENT_API std::string printable(std::string_view text, size_t length = 80);

} // namespace IO
} // namespace Tellarix
