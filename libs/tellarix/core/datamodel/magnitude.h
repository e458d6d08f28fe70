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

/** One magnitude of an event. */
struct TELLARIX_CORE_API Magnitude : public Core::BaseObject
{
    ~Magnitude() override;

    std::string publicID;
    RealQuantity magnitude;
    std::string type;     /**< such as "Mw", "ML", "mb"; empty if unknown */
    std::string originID; /**< publicID of the origin that it belongs to; empty if unknown */
    std::string methodID;
    std::optional<int> stationCount;
    std::optional<double> azimuthalGap; /**< degrees */
    std::string evaluationMode;         /**< "manual" or "automatic"; empty if unknown */
    std::string evaluationStatus;
    CreationInfo creationInfo;
};

using MagnitudePtr = Core::SmartPointer<Magnitude>;

} // namespace DataModel
} // namespace Tellarix
