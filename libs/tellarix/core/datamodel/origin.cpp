// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/origin.h>

#include <tuple>

namespace Tellarix {
namespace DataModel {

namespace {

auto fieldsOf(const OriginQuality &quality)
{
    return std::tie(quality.usedPhaseCount, quality.associatedPhaseCount, quality.usedStationCount,
                    quality.standardError, quality.azimuthalGap, quality.minimumDistance,
                    quality.maximumDistance);
}

} // namespace

bool OriginQuality::operator==(const OriginQuality &other) const
{
    return fieldsOf(*this) == fieldsOf(other);
}

Origin::~Origin() = default;

} // namespace DataModel
} // namespace Tellarix
