// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/event.h>

#include <cmath>
#include <limits>

namespace Tellarix {
namespace IO {

/**
 * What is stored of an object, column by column, told to a visitor: one makes tables of it, one
 * checks, one writes and one reads. Visitors have
 *
 *     key(name, std::string &)                      a short text that is looked for
 *     text(name, std::string &)                     empty for NULL
 *     real(name, suffix, std::optional<double> &)   in the column name + suffix
 *     number(name, suffix, double &)                not-a-number for NULL
 *     integer(name, std::optional<int> &)
 *     time(name, Core::Time &)                      in two columns, name and name + "_ms"
 */
namespace EventColumns {

template <typename Visitor>
void visit(Visitor &visitor, const char *name, DataModel::Uncertainty &uncertainty)
{
    visitor.real(name, "_symmetric", uncertainty.symmetric);
    visitor.real(name, "_lower", uncertainty.lower);
    visitor.real(name, "_upper", uncertainty.upper);
    visitor.real(name, "_confidenceLevel", uncertainty.confidenceLevel);
}

template <typename Visitor>
void visit(Visitor &visitor, const char *name, DataModel::RealQuantity &quantity)
{
    double value = quantity.value();
    DataModel::Uncertainty uncertainty = quantity.uncertainty();
    visitor.number(name, "_value", value);
    visit(visitor, name, uncertainty);
    quantity = DataModel::RealQuantity(value, uncertainty);
}

template <typename Visitor>
void visit(Visitor &visitor, const char *name, std::optional<DataModel::RealQuantity> &quantity)
{
    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    DataModel::RealQuantity known = quantity.value_or(Unknown);
    visit(visitor, name, known);
    quantity.reset();
    if (!std::isnan(known.value()))
        quantity = known;
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::CreationInfo &info)
{
    visitor.text("creationInfo_agencyID", info.agencyID);
    visitor.text("creationInfo_author", info.author);
    visitor.time("creationInfo_creationTime", info.creationTime);
    visitor.time("creationInfo_modificationTime", info.modificationTime);
    visitor.text("creationInfo_version", info.version);
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::EventDescription &description)
{
    visitor.text("text", description.text);
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::Event &event)
{
    visitor.text("type", event.type);
    visitor.text("typeCertainty", event.typeCertainty);
    visitor.key("preferredOriginID", event.preferredOriginID);
    visitor.key("preferredMagnitudeID", event.preferredMagnitudeID);
    visitor.key("preferredFocalMechanismID", event.preferredFocalMechanismID);
    visit(visitor, event.creationInfo);
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::OriginQuality &quality)
{
    visitor.integer("quality_usedPhaseCount", quality.usedPhaseCount);
    visitor.integer("quality_associatedPhaseCount", quality.associatedPhaseCount);
    visitor.integer("quality_usedStationCount", quality.usedStationCount);
    visitor.real("quality_standardError", "", quality.standardError);
    visitor.real("quality_azimuthalGap", "", quality.azimuthalGap);
    visitor.real("quality_minimumDistance", "", quality.minimumDistance);
    visitor.real("quality_maximumDistance", "", quality.maximumDistance);
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::Origin &origin)
{
    Core::Time time = origin.time.value();
    DataModel::Uncertainty uncertainty = origin.time.uncertainty();
    visitor.time("time_value", time);
    visit(visitor, "time", uncertainty);
    origin.time = DataModel::TimeQuantity(time, uncertainty);
    visit(visitor, "latitude", origin.latitude);
    visit(visitor, "longitude", origin.longitude);
    visit(visitor, "depth", origin.depth);
    visit(visitor, origin.quality);
    visitor.text("evaluationMode", origin.evaluationMode);
    visitor.text("evaluationStatus", origin.evaluationStatus);
    visitor.text("methodID", origin.methodID);
    visitor.text("earthModelID", origin.earthModelID);
    visit(visitor, origin.creationInfo);
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::Magnitude &magnitude)
{
    visit(visitor, "magnitude", magnitude.magnitude);
    visitor.text("type", magnitude.type);
    visitor.text("originID", magnitude.originID);
    visitor.text("methodID", magnitude.methodID);
    visitor.integer("stationCount", magnitude.stationCount);
    visitor.real("azimuthalGap", "", magnitude.azimuthalGap);
    visitor.text("evaluationMode", magnitude.evaluationMode);
    visitor.text("evaluationStatus", magnitude.evaluationStatus);
    visit(visitor, magnitude.creationInfo);
}

/** Names of the columns of a nodal plane's angles. */
struct PlaneNames
{
    const char *strike;
    const char *dip;
    const char *rake;
};

constexpr PlaneNames FirstPlane{"nodalPlanes_nodalPlane1_strike", "nodalPlanes_nodalPlane1_dip",
                                "nodalPlanes_nodalPlane1_rake"};
constexpr PlaneNames SecondPlane{"nodalPlanes_nodalPlane2_strike", "nodalPlanes_nodalPlane2_dip",
                                 "nodalPlanes_nodalPlane2_rake"};

template <typename Visitor>
void visit(Visitor &visitor, const PlaneNames &names, std::optional<DataModel::NodalPlane> &plane)
{
    std::optional<DataModel::RealQuantity> strike, dip, rake;
    if (plane) {
        strike = plane->strike();
        dip = plane->dip();
        rake = plane->rake();
    }
    visit(visitor, names.strike, strike);
    visit(visitor, names.dip, dip);
    visit(visitor, names.rake, rake);
    plane.reset();
    if (!strike && !dip && !rake)
        return;

    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    plane.emplace();
    plane->setStrike(strike.value_or(Unknown));
    plane->setDip(dip.value_or(Unknown));
    plane->setRake(rake.value_or(Unknown));
}

template <typename Visitor>
void visit(Visitor &visitor, DataModel::FocalMechanism &mechanism)
{
    visit(visitor, FirstPlane, mechanism.nodalPlane1);
    visit(visitor, SecondPlane, mechanism.nodalPlane2);
    visitor.integer("nodalPlanes_preferredPlane", mechanism.preferredPlane);
    visitor.text("triggeringOriginID", mechanism.triggeringOriginID);
    visitor.real("azimuthalGap", "", mechanism.azimuthalGap);
    visitor.integer("stationPolarityCount", mechanism.stationPolarityCount);
    visitor.real("misfit", "", mechanism.misfit);
    visitor.text("evaluationMode", mechanism.evaluationMode);
    visitor.text("evaluationStatus", mechanism.evaluationStatus);
    visit(visitor, mechanism.creationInfo);
}

/** Names of the tables of a type. */
template <typename T>
constexpr const char *TableOf = nullptr;
template <>
inline constexpr const char *TableOf<DataModel::Event> = "Event";
template <>
inline constexpr const char *TableOf<DataModel::EventDescription> = "EventDescription";
template <>
inline constexpr const char *TableOf<DataModel::Origin> = "Origin";
template <>
inline constexpr const char *TableOf<DataModel::Magnitude> = "Magnitude";
template <>
inline constexpr const char *TableOf<DataModel::FocalMechanism> = "FocalMechanism";

} // namespace EventColumns
} // namespace IO
} // namespace Tellarix
