// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/math/filterdescription.h>

#include <vector>

namespace Tellarix {
namespace Math {
namespace Filtering {

/** The filters that the library itself has. */
std::vector<FilterDescription> libraryFilters();

} // namespace Filtering
} // namespace Math
} // namespace Tellarix
