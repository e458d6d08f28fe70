// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/fdsnaddress.h>

#include <tellarix/client/remote/httpaccounts.h>

#include <QRegularExpression>
#include <QUrlQuery>

namespace Tellarix {
namespace IO {

namespace {

const auto Prefix = QStringLiteral("fdsnws+");
const auto DefaultBase = QStringLiteral("/fdsnws");

const QRegularExpression &method()
{
    static const QRegularExpression pattern("/(dataselect|event|station)/1(/\\w*)?$");
    return pattern;
}

} // namespace

bool FdsnAddress::IsOne(const QString &text)
{
    return text.startsWith(QLatin1String("fdsnws+https://")) ||
           text.startsWith(QLatin1String("fdsnws+http://"));
}

QString FdsnAddress::ServiceOf(const QString &address)
{
    return method().match(QUrl(address).path()).captured(1);
}

bool FdsnAddress::parse(const QString &address, QString *error)
{
    const QUrl url(address.mid(Prefix.size()), QUrl::StrictMode);
    if (!IsOne(address) || !url.isValid() || url.host().isEmpty()) {
        // The text may hold a password, so it is not repeated.
        if (error)
            *error = "not the address of a web service: fdsnws+https://HOST is wanted";
        return false;
    }
    _base = url.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment | QUrl::StripTrailingSlash);
    _base.setPath(_base.path().remove(method()));
    if (_base.path().isEmpty() || _base.path() == QLatin1String("/"))
        _base.setPath(DefaultBase);
    _words.clear();
    QString query = url.query(QUrl::FullyEncoded);
    query.replace('+', "%20");
    for (const auto &[name, value] : QUrlQuery(query).queryItems(QUrl::FullyDecoded))
        _words.insert(name.toLower(), value);
    return true;
}

QString FdsnAddress::name() const
{
    QString path = _base.path() == DefaultBase ? QString() : _base.path();
    return Prefix + httpServerName(_base) + path;
}

bool FdsnAddress::hasLogin() const
{
    return !_base.userName().isEmpty() || !HttpAccounts::Instance().find(_base).isEmpty();
}

QUrl FdsnAddress::url(const QString &service, const QString &method) const
{
    QUrl url = _base;
    url.setPath(QString("%1/%2/1/%3").arg(_base.path(), service, method));
    return url;
}

QString fdsnStatusText(const HttpAnswer &answer, const QByteArray &body)
{
    const QString text = httpBodyText(body);
    QString meaning = answer.statusText();
    if (answer.status == 401)
        meaning += ", the login failed or none was given";
    else if (answer.status == 403)
        meaning += ", the data are restricted or the login failed";
    return text.isEmpty() ? meaning : QString("%1: %2").arg(meaning, text);
}

} // namespace IO
} // namespace Tellarix
