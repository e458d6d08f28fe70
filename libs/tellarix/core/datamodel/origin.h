// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/datamodel/creationinfo.h>
#include <tellarix/core/datamodel/quantity.h>

#include <optional>
#include <string>

namespace Tellarix {
namespace DataModel {

/** How well an origin is determined; what is unknown is unset. */
struct TELLARIX_CORE_API OriginQuality
{
    std::optional<int> usedPhaseCount;
    std::optional<int> associatedPhaseCount;
    std::optional<int> usedStationCount;
    std::optional<double> standardError; /**< root mean square of the residuals in seconds */
    std::optional<double> azimuthalGap;  /**< degrees */
    std::optional<double>
        minimumDistance; /**< epicentral distance of the nearest station, degrees */
    std::optional<double> maximumDistance; /**< of the farthest one, degrees */

    bool operator==(const OriginQuality &other) const;
};

/** Where and when: one solution for the hypocentre of an event. */
struct TELLARIX_CORE_API Origin : public Core::BaseObject
{
    ~Origin() override;

    std::string publicID;
    TimeQuantity time;
    RealQuantity latitude;             /**< degrees, north positive */
    RealQuantity longitude;            /**< degrees, east positive */
    std::optional<RealQuantity> depth; /**< km below sea level */
    OriginQuality quality;
    std::string evaluationMode;   /**< "manual" or "automatic"; empty if unknown */
    std::string evaluationStatus; /**< such as "preliminary", "reviewed"; empty if unknown */
    std::string methodID;
    std::string earthModelID;
    CreationInfo creationInfo;
};

using OriginPtr = Core::SmartPointer<Origin>;

} // namespace DataModel
} // namespace Tellarix
