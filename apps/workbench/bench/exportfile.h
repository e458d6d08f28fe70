// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace Workbench {

/** The folder of the last export, also of former runs. */
QString exportFolder();
void setExportFolder(const QString &folder);

/**
 * Asks for the name of a file to be written, and before one is replaced.
 *
 * @param name     suggested, without a suffix
 * @param filters  such as "PNG picture (*.png)"; the chosen one gives the suffix
 * @return an empty name if the user doesn't want to
 */
QString askForExportFile(QWidget *window, const QString &title, const QString &name,
                         const QStringList &filters);

} // namespace Workbench
