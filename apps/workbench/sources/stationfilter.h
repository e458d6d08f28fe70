// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/region.h"
#include "stationlisting.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace Workbench {

/** Which channels are wanted: patterns of codes, and of these perhaps the vertical ones only. */
class ChannelPatterns
{
public:
    ChannelPatterns() = default;
    /** @param text  such as "BH?, 00.HH?", with the location or without; all if it is blank */
    explicit ChannelPatterns(const QString &text, bool verticalOnly = false);

    bool match(const ListedChannel &channel) const;
    /** "LOC.CHA" for requests: of the channel itself, or patterns where it isn't known. */
    std::vector<std::string> requested(const ListedChannel &channel) const;

private:
    struct Pattern
    {
        std::string location; /**< "*" if any */
        std::string channel;
    };

    std::vector<Pattern> _patterns;
    bool _verticalOnly{false};
};

/** Which part of a listing is shown. */
struct StationFilter
{
    /** Words that all have to be in "NET.STA" or the name of the place; one with `*` or `?` has to
     *  match a code, both or the name as a whole. Case doesn't matter. */
    QString search;
    std::optional<Region> region; /**< stations without a place are in none */
    ChannelPatterns channels;
};

/** A station that is shown: indices of it and of its channels. */
struct ShownStation
{
    int station;
    std::vector<int> channels;
};

/** Stations with at least one wanted channel, in the order of the listing. */
std::vector<ShownStation> filterStations(const StationListing &listing,
                                         const StationFilter &filter);

} // namespace Workbench
