// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/seedlinkstations.h>
#include <tellarix/core/datamodel/network.h>

#include <vector>

namespace Tellarix {
namespace IO {

/**
 * What a live server has as networks and their parts, without places. Streams begin and end as what
 * the server holds of them; those that hold no waveforms are left out. A station without any has a
 * stream with `*` for its codes.
 */
TELLARIX_CLIENT_API std::vector<DataModel::NetworkPtr>
networksOf(const std::vector<SeedLinkStation> &stations);

} // namespace IO
} // namespace Tellarix
