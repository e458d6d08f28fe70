// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/databaseaddress.h>

#include <QFileInfo>
#include <QStringList>
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

QString prefixOf(Backend backend)
{
    for (const Scheme &scheme : Schemes) {
        if (scheme.backend == backend)
            return scheme.prefix;
    }
    return {};
}

QString encoded(const QString &text, const char *but = "")
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, but));
}

/** Takes the options of the query part; the cause if one is unknown or has no sense. */
QString readOptions(DatabaseAddress &address, const QString &text)
{
    for (const auto &[name, value] : QUrlQuery(text).queryItems(QUrl::FullyDecoded)) {
        if (name == "timeout") {
            bool isNumber = false;
            address.timeoutSeconds = value.toInt(&isNumber);
            if (!isNumber || *address.timeoutSeconds < 1)
                return QString("the timeout is no number of seconds");
        } else if (name == "access" && (value == "read" || value == "write")) {
            address.isReadOnly = value == "read";
        } else if (name == "socket" && address.backend != Backend::SQLite) {
            address.socket = value;
        } else {
            return QString(
                "options are timeout=SECONDS, access=read and, for servers, socket=FILE");
        }
    }
    return {};
}

/** Not by QUrl, which would take the first folder of "sqlite://FOLDER/FILE" for a host. */
QString readFile(DatabaseAddress &address, const QString &rest)
{
    address.database = QUrl::fromPercentEncoding(rest.section('?', 0, 0).toUtf8());
    if (address.database.isEmpty() || address.database.endsWith('/'))
        return QString("it names no file");
    return readOptions(address, rest.section('?', 1));
}

QString readServer(DatabaseAddress &address, const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    // QUrl tells what is wrong with the whole text in it, password and all.
    if (!url.isValid() || url.hasFragment())
        return QString("a character in it has to be percent-encoded, or the port is no number");

    address.database = url.path(QUrl::FullyDecoded).mid(1);
    address.host = url.host(QUrl::FullyDecoded);
    address.port = url.port();
    address.user = url.userName(QUrl::FullyDecoded);
    address.password = url.password(QUrl::FullyDecoded);
    if (address.database.isEmpty() || address.database.contains('/'))
        return QString("it names no database");
    return readOptions(address, url.query(QUrl::FullyEncoded));
}

/**
 * What may be shown of a text that is no address: one with a slip may well have its password where
 * none is looked for. It begins with the first ":" and ends with the last "@" or anywhere if there
 * is none; options aren't shown either.
 */
QString withoutSecrets(const QString &text)
{
    const int schemeEnd = text.indexOf("://");
    const QString scheme = schemeEnd < 0 ? QString() : text.left(schemeEnd + 3);
    const QString rest = text.mid(scheme.size());
    if (scheme == "sqlite://")
        return scheme + rest.section('?', 0, 0);

    const int at = rest.lastIndexOf('@');
    if (at < 0)
        return scheme + rest.section(':', 0, 0).section('?', 0, 0);
    const QString place = rest.mid(at + 1).section('?', 0, 0).section('#', 0, 0);
    const int slash = place.indexOf('/');
    return scheme + rest.left(at).section(':', 0, 0) + '@' +
           place.section('/', 0, 0).section(':', 0, 0) + (slash < 0 ? QString() : place.mid(slash));
}

} // namespace

std::optional<DatabaseAddress> DatabaseAddress::Read(const QString &text, QString *error)
{
    QString problem = QString("the form of an address is ") + Forms;
    for (const Scheme &scheme : Schemes) {
        if (!text.startsWith(scheme.prefix))
            continue;
        DatabaseAddress address;
        address.backend = scheme.backend;
        problem = scheme.backend == Backend::SQLite
                      ? readFile(address, text.mid(static_cast<int>(qstrlen(scheme.prefix))))
                      : readServer(address, text);
        if (problem.isEmpty())
            return address;
    }
    if (error)
        *error =
            QString("\"%1\" is no address of a database: %2").arg(withoutSecrets(text), problem);
    return std::nullopt;
}

DatabaseAddress DatabaseAddress::OfFile(const QString &file)
{
    DatabaseAddress address;
    address.database = QFileInfo(file).absoluteFilePath();
    return address;
}

QString DatabaseAddress::toString() const
{
    QString text = prefixOf(backend);
    if (backend == Backend::SQLite) {
        text += encoded(database, "/");
    } else {
        if (!user.isEmpty())
            text += encoded(user) + '@';
        text += host.contains(':') ? '[' + host + ']' : host;
        if (port >= 0)
            text += ':' + QString::number(port);
        text += '/' + encoded(database);
    }

    QStringList options;
    if (!socket.isEmpty())
        options << "socket=" + encoded(socket);
    if (timeoutSeconds)
        options << "timeout=" + QString::number(*timeoutSeconds);
    if (isReadOnly)
        options << "access=read";
    return options.isEmpty() ? text : text + '?' + options.join('&');
}

QString DatabaseAddress::display() const
{
    const QString text = prefixOf(backend);
    if (backend == Backend::SQLite)
        return text + database;
    return text + (user.isEmpty() ? QString() : user + '@') + host +
           (port < 0 ? QString() : ':' + QString::number(port)) + '/' + database;
}

} // namespace IO
} // namespace Tellarix
