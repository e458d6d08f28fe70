// SPDX-License-Identifier: LGPL-3.0-or-later

#include "folderfiles.h"

#include <QDirIterator>
#include <QFileInfo>

namespace Workbench {

namespace {

/** What usually lies beside data: documents, pictures, programs and packed files. */
bool isDocument(const QFileInfo &file)
{
    static const QStringList suffixes{"md",  "rst", "pdf", "htm", "html", "doc",   "docx", "odt",
                                      "png", "jpg", "svg", "py",  "sh",   "ipynb", "zip"};
    return file.completeBaseName().compare("README", Qt::CaseInsensitive) == 0 ||
           suffixes.contains(file.suffix(), Qt::CaseInsensitive);
}

QStringList filesOf(const QString &folder)
{
    QStringList files;
    QDirIterator entries(folder, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString file = entries.next();
        if (!isDocument(entries.fileInfo()))
            files.append(file);
    }
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
