// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/version.h>

namespace Tellarix {
namespace Core {

const FrameworkVersion CurrentVersion(TELLARIX_VERSION_MAJOR, TELLARIX_VERSION_MINOR,
                                      TELLARIX_VERSION_PATCH);

std::string FrameworkVersion::toString() const
{
    return std::to_string(_major) + '.' + std::to_string(_minor) + '.' + std::to_string(_patch);
}

} // namespace Core
} // namespace Tellarix
