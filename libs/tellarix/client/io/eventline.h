// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/event.h>

#include <QByteArray>
#include <QJsonObject>

#include <optional>
#include <string>

namespace Tellarix {
namespace IO {

/** An event as one line of a list: its preferred solutions. */
struct TELLARIX_CLIENT_API EventLine
{
    std::string id;
    Core::Time time; /**< invalid without an origin, as what follows is unset */
    std::optional<double> latitude;
    std::optional<double> longitude;
    std::optional<double> depthKm;
    std::optional<double> magnitude;
    std::string magnitudeType; /**< empty if unknown, as the other texts */
    std::optional<int> phases;
    std::string status; /**< of the evaluation, or its mode where that is all there is */
    std::string type;
    std::string region;

    static EventLine Of(const DataModel::Event &event);

    /** The keys of toJson(), as a line of CSV without its end. */
    static QByteArray csvHeader();
    /** A line of CSV (RFC 4180) without its end; what is unknown is empty. */
    QByteArray toCsv() const;
    /** id, time (ISO 8601 with microseconds), latitude, longitude, depth (km), magnitude,
     *  magnitudeType, phases, status, type and region; what is unknown is null. */
    QJsonObject toJson() const;
};

} // namespace IO
} // namespace Tellarix
