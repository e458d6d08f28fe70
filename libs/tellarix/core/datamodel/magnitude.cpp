// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/magnitude.h>

namespace Tellarix {
namespace DataModel {

Magnitude::~Magnitude() = default;

} // namespace DataModel
} // namespace Tellarix
