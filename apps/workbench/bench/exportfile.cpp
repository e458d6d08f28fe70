// SPDX-License-Identifier: LGPL-3.0-or-later

#include "exportfile.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QSettings>

namespace Workbench {

namespace {

constexpr auto FolderSetting = "Workbench/exportFolder";

QString suffixOf(const QString &filter)
{
    const int dot = filter.indexOf("*.") + 2;
    return filter.mid(dot, filter.indexOf(')', dot) - dot);
}

} // namespace

QString exportFolder()
{
    return QSettings().value(FolderSetting, QDir::homePath()).toString();
}

void setExportFolder(const QString &folder)
{
    QSettings().setValue(FolderSetting, folder);
}

QString askForExportFile(QWidget *window, const QString &title, const QString &name,
                         const QStringList &filters)
{
    QFileDialog dialog(window, title, exportFolder());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters(filters);
    dialog.setDefaultSuffix(suffixOf(filters.first()));
    // The dialog itself adds the suffix, so that it also asks before that file is replaced.
    QObject::connect(
        &dialog, &QFileDialog::filterSelected, &dialog,
        [&dialog](const QString &filter) { dialog.setDefaultSuffix(suffixOf(filter)); });
    dialog.selectFile(name + '.' + suffixOf(filters.first()));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return QString();

    const QString file = dialog.selectedFiles().first();
    setExportFolder(QFileInfo(file).absolutePath());
    return file;
}

} // namespace Workbench
