// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/seedlinkstations.h>
#include <tellarix/core/datamodel/network.h>
#include <tellarix/core/timewindow.h>

#include <QByteArray>
#include <QString>

#include <limits>
#include <string>
#include <vector>

namespace Workbench {

/** A channel that a source has; `*` for both codes where it tells no channels. */
struct ListedChannel
{
    std::string location;
    std::string code;
    double rate{0}; /**< in Hz, 0 if unknown */
    bool isLive{false};
    bool isArchived{false};

    /** "LOC.CHA" */
    std::string id() const { return location + '.' + code; }
    bool isAny() const { return code == "*"; }
};

/** A station that a source has; coordinates are not-a-number where they are unknown. */
struct ListedStation
{
    std::string network;
    std::string code;
    QString site; /**< name of its place; may be empty */
    double latitude{std::numeric_limits<double>::quiet_NaN()};
    double longitude{std::numeric_limits<double>::quiet_NaN()};
    std::vector<ListedChannel> channels; /**< in the order of ids, each of them once */

    /** "NET.STA" */
    std::string id() const { return network + '.' + code; }
    bool hasPlace() const { return latitude == latitude && longitude == longitude; }
};

/** What a source has. */
struct StationListing
{
    std::vector<ListedStation> stations; /**< in the order of ids, each of them once */
    Tellarix::Core::TimeWindow window;   /**< in which the channels are in force; unset for now */
    Tellarix::Core::Time time;           /**< when it was asked for */
};

/** What a live server has; without streams, of all kinds. */
StationListing listingOf(const std::vector<Tellarix::IO::SeedLinkStation> &stations);
/** What an archive has, by epochs of stations, channels or both. */
StationListing listingOf(const std::vector<Tellarix::DataModel::NetworkPtr> &networks);
/** Both in one, with what either knows. */
StationListing joinedListing(const StationListing &a, const StationListing &b);

/** Stations with their coordinates, of those that have any. */
std::vector<Tellarix::DataModel::NetworkPtr>
networksOf(const std::vector<const ListedStation *> &stations);

/** A form for files. */
QByteArray listingBytes(const StationListing &listing);
/** False if the bytes are damaged or of another form. */
bool readListing(const QByteArray &bytes, StationListing *listing);

} // namespace Workbench
