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

/** One of the two planes along which an earthquake may have slipped; angles in degrees. */
class NodalPlane
{
public:
    NodalPlane() = default;
    NodalPlane(double strike, double dip, double rake) : _strike(strike), _dip(dip), _rake(rake) {}

    const RealQuantity &strike() const { return _strike; }
    void setStrike(const RealQuantity &strike) { _strike = strike; }
    const RealQuantity &dip() const { return _dip; }
    void setDip(const RealQuantity &dip) { _dip = dip; }
    const RealQuantity &rake() const { return _rake; }
    void setRake(const RealQuantity &rake) { _rake = rake; }

    bool operator==(const NodalPlane &other) const
    {
        return _strike == other._strike && _dip == other._dip && _rake == other._rake;
    }

private:
    RealQuantity _strike;
    RealQuantity _dip;
    RealQuantity _rake;
};

/** How an earthquake slipped: its nodal planes. */
struct TELLARIX_CORE_API FocalMechanism : public Core::BaseObject
{
    ~FocalMechanism() override;

    std::string publicID;
    std::optional<NodalPlane> nodalPlane1;
    std::optional<NodalPlane> nodalPlane2;
    std::optional<int> preferredPlane; /**< 1 or 2 */
    std::string triggeringOriginID;
    std::optional<double> azimuthalGap; /**< degrees */
    std::optional<int> stationPolarityCount;
    std::optional<double> misfit; /**< 0 to 1 */
    std::string evaluationMode;
    std::string evaluationStatus;
    CreationInfo creationInfo;
};

using FocalMechanismPtr = Core::SmartPointer<FocalMechanism>;

/**
 * The other nodal plane of a double couple; after Aki and Richards, Quantitative Seismology (2002),
 * section 4.2, from slip vector and normal changing places.
 */
TELLARIX_CORE_API NodalPlane auxiliaryPlane(const NodalPlane &plane);

} // namespace DataModel
} // namespace Tellarix
