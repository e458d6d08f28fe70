// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/time.h>

#include <QByteArray>
#include <QJsonObject>

#include <optional>
#include <string>

namespace Tellarix {

namespace DataModel {
class Stream;
} // namespace DataModel

namespace IO {

/** An epoch of a channel as one line of a list. */
struct TELLARIX_CLIENT_API ChannelSummary
{
    std::string id;                 /**< NET.STA.LOC.CHA */
    std::optional<double> latitude; /**< of the station, where the channel has none; as longitude
                                         and elevation */
    std::optional<double> longitude;
    std::optional<double> elevation; /**< in m */
    std::optional<double> depth;     /**< in m below the surface */
    std::optional<double> azimuth;
    std::optional<double> dip;
    std::optional<double> rate; /**< in Hz */
    Core::Time start;           /**< not valid if there is none, as the end */
    Core::Time end;
    std::optional<double> gain; /**< in counts per unit */
    std::string unit;           /**< as the file has it; empty if unknown */

    static ChannelSummary Of(const DataModel::Stream &stream);

    /** The keys of toJson(), as a line of CSV without its end. */
    static QByteArray csvHeader();
    /** A line of CSV (RFC 4180) without its end; what is unknown is empty. */
    QByteArray toCsv() const;
    /** id, latitude, longitude, elevation, depth, azimuth, dip, rate, start, end (ISO 8601 with
     *  microseconds), gain and unit; what is unknown is null. */
    QJsonObject toJson() const;
};

} // namespace IO
} // namespace Tellarix
