// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/core/datamodel/network.h>

#include <QString>

#include <vector>

class QIODevice;

namespace Tellarix {
namespace IO {

/**
 * Writes networks as StationXML 1.1, so that readInventory() reads all that it keeps of them.
 * @param source   whose data they are
 * @param created  when the text was made
 * @return false if the device fails, which says why
 */
TELLARIX_CLIENT_API bool writeStationXML(QIODevice &device,
                                         const std::vector<DataModel::NetworkPtr> &networks,
                                         const QString &source, Core::Time created);

} // namespace IO
} // namespace Tellarix
