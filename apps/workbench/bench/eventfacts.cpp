// SPDX-License-Identifier: LGPL-3.0-or-later

#include "eventfacts.h"

#include <cmath>

namespace Workbench {

namespace {

bool isSame(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool isSame(const std::optional<double> &a, const std::optional<double> &b)
{
    return a.has_value() == b.has_value() && (!a || isSame(*a, *b));
}

} // namespace

bool operator==(const EventFacts &a, const EventFacts &b)
{
    return a.publicID == b.publicID && a.originTime == b.originTime &&
           isSame(a.latitude, b.latitude) && isSame(a.longitude, b.longitude) &&
           isSame(a.depthKm, b.depthKm) && isSame(a.magnitude, b.magnitude) && a.region == b.region;
}

} // namespace Workbench
