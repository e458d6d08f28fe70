// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseaddress_p.h>

#include <QUrl>
#include <QUrlQuery>

namespace Tellarix {
namespace IO {

namespace {

using Backend = DatabaseInterface::Backend;

constexpr char Forms[] = "sqlite:///FOLDER/FILE, postgresql://USER@HOST/DATABASE or "
                         "mysql://USER@HOST/DATABASE";

struct Scheme
{
    const char *prefix;
    Backend backend;
};

constexpr Scheme Schemes[] = {
    {"sqlite://", Backend::SQLite},
    {"postgresql://", Backend::PostgreSQL},
    {"mysql://", Backend::MariaDB},
};

/** Takes the options of the query part; the cause if one is unknown or has no sense. */
QString readOptions(DatabaseAddress &address, const QString &text)
{
    for (const auto &[name, value] : QUrlQuery(text).queryItems(QUrl::FullyDecoded)) {
        if (name == "timeout") {
            bool isNumber = false;
            address.timeoutSeconds = value.toInt(&isNumber);
            if (!isNumber || *address.timeoutSeconds < 1)
                return QString("the timeout \"%1\" is no number of seconds").arg(value);
        } else if (name == "socket" && address.backend != Backend::SQLite) {
            address.socket = value;
        } else {
            return QString("unknown option \"%1\"").arg(name);
        }
    }
    return {};
}

/** Not by QUrl, which would take the first folder of "sqlite://FOLDER/FILE" for a host. */
QString readFile(DatabaseAddress &address, const QString &rest)
{
    address.database = QUrl::fromPercentEncoding(rest.section('?', 0, 0).toUtf8());
    address.display = "sqlite://" + address.database;
    if (address.database.isEmpty() || address.database.endsWith('/'))
        return QString("it names no file");
    return readOptions(address, rest.section('?', 1));
}

QString readServer(DatabaseAddress &address, const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
        return url.errorString();

    address.display = url.toDisplayString(QUrl::RemovePassword | QUrl::RemoveQuery);
    address.database = url.path(QUrl::FullyDecoded).mid(1);
    address.host = url.host(QUrl::FullyDecoded);
    address.port = url.port();
    address.user = url.userName(QUrl::FullyDecoded);
    address.password = url.password(QUrl::FullyDecoded);
    if (address.database.isEmpty() || address.database.contains('/'))
        return QString("it names no database");
    return readOptions(address, url.query(QUrl::FullyEncoded));
}

} // namespace

std::optional<DatabaseAddress> DatabaseAddress::Read(const QString &url, QString *error)
{
    // A text that is no address may hold a password all the same.
    QString problem = QString("the form of an address is ") + Forms;
    QString shown = QUrl(url).toDisplayString(QUrl::RemovePassword | QUrl::RemoveQuery);
    for (const Scheme &scheme : Schemes) {
        if (!url.startsWith(scheme.prefix))
            continue;
        DatabaseAddress address;
        address.backend = scheme.backend;
        problem = scheme.backend == Backend::SQLite
                      ? readFile(address, url.mid(static_cast<int>(qstrlen(scheme.prefix))))
                      : readServer(address, url);
        if (problem.isEmpty())
            return address;
    }
    if (error)
        *error = QString("\"%1\" is no address of a database: %2").arg(shown, problem);
    return std::nullopt;
}

} // namespace IO
} // namespace Tellarix
