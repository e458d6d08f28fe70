// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/api.h>
#include <tellarix/core/baseobject.h>
#include <tellarix/core/datamodel/creationinfo.h>
#include <tellarix/core/datamodel/focalmechanism.h>
#include <tellarix/core/datamodel/magnitude.h>
#include <tellarix/core/datamodel/origin.h>

#include <string>
#include <vector>

namespace Tellarix {
namespace DataModel {

/** A text about an event. */
struct EventDescription
{
    std::string text;
    std::string type; /**< such as "region name" or "earthquake name"; may be empty */

    bool operator==(const EventDescription &other) const
    {
        return text == other.text && type == other.type;
    }
};

/** A seismic event: its solutions, and which of them are preferred. */
struct TELLARIX_CORE_API Event : public Core::BaseObject
{
    ~Event() override;

    std::string publicID;
    std::string type;          /**< one of EEventTypeNames, or another text; empty if unknown */
    std::string typeCertainty; /**< "known" or "suspected"; empty if unknown */
    std::vector<EventDescription> descriptions;
    std::vector<OriginPtr> origins;
    std::vector<MagnitudePtr> magnitudes;
    std::vector<FocalMechanismPtr> focalMechanisms;
    std::string preferredOriginID;
    std::string preferredMagnitudeID;
    std::string preferredFocalMechanismID;
    CreationInfo creationInfo;

    /**
     * The preferred solution of each kind: that of the preferred id; without such an id, the first
     * that has been reviewed by somebody (mode "manual"), else the first. Null if there is none.
     */
    Origin *preferredOrigin() const;
    Magnitude *preferredMagnitude() const;
    FocalMechanism *preferredFocalMechanism() const;

    /** Text of the first description of this type; empty if there is none. */
    std::string description(const std::string &descriptionType) const;
    std::string region() const { return description("region name"); }
};

using EventPtr = Core::SmartPointer<Event>;

} // namespace DataModel
} // namespace Tellarix
