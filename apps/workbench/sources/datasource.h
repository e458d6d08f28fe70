// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace Workbench {

/** A data centre or server under a name: addresses of its services, of which any may be empty. */
struct DataSource
{
    QString name;
    QString live;     /**< URL of a record stream that goes on, seedlink://HOST */
    QString past;     /**< URL of a record stream for windows, fdsnws+https://HOST */
    QString stations; /**< address of the stations, where it isn't that of the past */
    QString events;
    QString user;      /**< at the loginHost(); the password stands elsewhere */
    bool isOwn{false}; /**< of the user, perhaps in the stead of a built-in one */
    bool isHidden{false};

    /** The web service that lists its stations; empty if there is none. */
    QString stationService() const;
    /** Hosts of live and past, for the user. */
    QString hostsText() const;
    /** What listings of its stations are kept by: its addresses and user, not its name. */
    QString listingKey() const;
    /** "host" or "host:port" of the first web service that it has, to which the login belongs;
     * empty if there is none. */
    QString loginHost() const;
    /** The same source with the name of the user in the addresses of the loginHost(). */
    DataSource withUserInAddresses() const;
    /** Takes a login out of the addresses, where none of it belongs. @return the password */
    QString takeLogin();
};

bool operator==(const DataSource &a, const DataSource &b);

/** "host:port" of an address; empty if it has none. */
QString hostOf(const QString &address);

/** Whether a source has a name, something to open, and addresses of known schemes.
 *  @param error  the first thing that is wrong */
bool checkDataSource(const DataSource &source, QString *error);

/** What a file of sources holds. */
struct DataSourceFile
{
    QVector<DataSource> sources;
    QStringList hidden; /**< names */
};

/** Reads the text of a file; false, with line or entry and cause, if anything in it is wrong. */
bool parseDataSources(const QByteArray &text, DataSourceFile *file, QString *error);
QByteArray dataSourcesText(const DataSourceFile &file);

} // namespace Workbench
