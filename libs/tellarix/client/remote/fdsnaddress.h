// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/httpclient.h>

#include <QMap>
#include <QString>
#include <QUrl>

namespace Tellarix {
namespace IO {

/**
 * Address of a data centre's web services, "fdsnws+https://[USER[:PASSWORD]@]HOST[:PORT][/BASE]" or
 * the same with http, and words behind a "?". Services lie below BASE, which is "/fdsnws" if it is
 * not given; a method of a service behind it, "/event/1/query", is passed over.
 */
class TELLARIX_CLIENT_API FdsnAddress
{
public:
    /** Takes a whole address; false, with name and cause in @p error, if it is none. */
    bool parse(const QString &address, QString *error = nullptr);
    /** Whether a text begins like such an address. */
    static bool IsOne(const QString &text);

    /** The service whose method an address names, e.g. "event" of "HOST/fdsnws/event/1/query";
     * empty if it names none. */
    static QString ServiceOf(const QString &address);

    /** The address for messages: without login and words. */
    QString name() const;
    /** The address of a method, e.g. "dataselect" and "query"; with the login. */
    QUrl url(const QString &service, const QString &method) const;
    /** Whether a login is known, which stands in the address or is kept for its host. */
    bool hasLogin() const;
    /** What stands behind the "?", decoded; names in lower case. */
    const QMap<QString, QString> &words() const { return _words; }

private:
    QUrl _base;
    QMap<QString, QString> _words;
};

/** What a server means by a status other than success, in one line with its own words. */
TELLARIX_CLIENT_API QString fdsnStatusText(const HttpAnswer &answer, const QByteArray &body);

} // namespace IO
} // namespace Tellarix
