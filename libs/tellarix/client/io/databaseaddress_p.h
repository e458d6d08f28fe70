// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/io/databaseinterface.h>

#include <optional>

namespace Tellarix {
namespace IO {

/** Where a database is, and how it is connected to. */
struct DatabaseAddress
{
    DatabaseInterface::Backend backend{DatabaseInterface::Backend::SQLite};
    QString display;  /**< the address without password and options */
    QString database; /**< name of the database, or the file */
    QString host;
    int port{-1};
    QString user;
    QString password;
    QString socket;
    std::optional<int> timeoutSeconds;

    /** Reads the text of an address; not set, with the cause in @p error, if it is none. */
    static std::optional<DatabaseAddress> Read(const QString &url, QString *error);
};

} // namespace IO
} // namespace Tellarix
