// SPDX-License-Identifier: LGPL-3.0-or-later

#include "folderfiles.h"

#include <QDirIterator>
#include <QFileInfo>

namespace Workbench {

namespace {

QStringList filesOf(const QString &folder)
{
    QStringList files;
    QDirIterator entries(folder, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
        files.append(entries.next());
    files.sort();
    return files;
}

} // namespace

QStringList withFilesOfFolders(const QStringList &sources)
{
    QStringList files;
    for (const QString &source : sources) {
        if (QFileInfo(source).isDir())
            files += filesOf(source);
        else
            files.append(source);
    }
    return files;
}

} // namespace Workbench
