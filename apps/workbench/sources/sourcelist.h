// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "datasource.h"

#include <QObject>

namespace Workbench {

/**
 * The named sources: those of a file that is installed, and the user's own, which are kept in the
 * folder of configuration. One of the user's with the name of a built-in one stands in its stead.
 */
class SourceList : public QObject
{
    Q_OBJECT

public:
    /** Reads nothing yet. */
    SourceList(const QString &builtInFile, const QString &userFile, QObject *parent = nullptr);
    /** With the files of the installation and of the user. */
    explicit SourceList(QObject *parent = nullptr);

    /** Reads both files. What can't be read is told; the user's own file is then kept under
     *  another name, so that it isn't written over.
     *  @return one text for each problem */
    QStringList read();

    /** In the order of names, the hidden ones among them. */
    QVector<DataSource> all() const;
    /** The source of a name; without a name if there is none. */
    DataSource find(const QString &name) const;
    bool isBuiltIn(const QString &name) const;

    // Each of these writes the user's file at once; if that fails, or a source is wrong, nothing
    // is changed and the reason is told.

    /** Adds a source, or puts it in the stead of the one that was called @p formerName. */
    bool set(const DataSource &source, const QString &formerName, QString *error);
    /** Removes one of the user's own; a built-in one of this name shows again. */
    bool remove(const QString &name, QString *error);
    bool setHidden(const QString &name, bool hidden, QString *error);

signals:
    void changed();

private:
    QString keepAside() const;
    bool write(const DataSourceFile &file, QString *error);

    QString _builtInFile;
    QString _userFile;
    QVector<DataSource> _builtIn;
    DataSourceFile _own;
};

} // namespace Workbench
