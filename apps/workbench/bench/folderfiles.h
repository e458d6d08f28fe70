// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QStringList>

namespace Workbench {

/** The sources given, with all files in and below a folder in its place, in order of their names;
 *  hidden ones are left out. */
QStringList withFilesOfFolders(const QStringList &sources);

} // namespace Workbench
