// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>
#include <tellarix/client/io/databaseinterface.h>

#include <optional>

namespace Tellarix {
namespace IO {

/** Where a database is, and how it is connected to; see DatabaseInterface for the text of one. */
struct TELLARIX_CLIENT_API DatabaseAddress
{
    DatabaseInterface::Backend backend{DatabaseInterface::Backend::SQLite};
    QString database; /**< name of the database, or the file */
    QString host;
    int port{-1};
    QString user;
    QString password;
    QString socket;
    std::optional<int> timeoutSeconds;
    bool isReadOnly{false};

    /** Reads the text of an address; not set, with the cause in @p error, if it is none. The cause
     *  shows nothing that may be a password. */
    static std::optional<DatabaseAddress> Read(const QString &text, QString *error = nullptr);
    /** The address of an SQLite file by its path. */
    static DatabaseAddress OfFile(const QString &file);

    /** A text that reads as the same address but for the password, which it leaves out. */
    QString toString() const;
    /** For people: without password and options, and not encoded. */
    QString display() const;
};

} // namespace IO
} // namespace Tellarix
