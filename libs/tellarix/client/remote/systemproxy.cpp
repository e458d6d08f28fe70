// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/systemproxy_p.h>

#include <QHostAddress>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

constexpr int DefaultProxyPort = 8080;

/** A variable by its name in lower case; whatever asks a CGI program can set HTTP_PROXY. */
QString variable(const QByteArray &name)
{
    const QString value = qEnvironmentVariable(name).trimmed();
    return value.isEmpty() && name != "http_proxy"
               ? qEnvironmentVariable(name.toUpper().constData()).trimmed()
               : value;
}

bool isWeb(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

bool isThisMachine(const QString &host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

/** Whether a word of no_proxy means a server. */
bool isMeant(const QString &word, const QUrl &url)
{
    const QString host = url.host().toLower();
    QString name = word.trimmed().toLower();
    const QString port = ':' + QString::number(portOf(url));
    if (name.endsWith(port) && name != host)
        name.chop(port.size());
    if (name.startsWith('*'))
        name.remove(0, 1);
    if (name.isEmpty())
        return word.trimmed() == "*";
    while (name.startsWith('.'))
        name.remove(0, 1);
    return !name.isEmpty() && (host == name || host.endsWith('.' + name));
}

bool isExcluded(const QUrl &url)
{
    const QStringList words = variable("no_proxy").split(',');
    return std::any_of(words.begin(), words.end(),
                       [&](const QString &word) { return isMeant(word, url); });
}

/** The text of the variable that a URL goes by; empty if there is none. */
QString variableFor(const QUrl &url)
{
    QString text;
    if (isWeb(url))
        text = variable(url.scheme().toLatin1() + "_proxy");
    if (text.isEmpty())
        text = variable("all_proxy");
    if (text.isEmpty() && !isWeb(url))
        text = variable("https_proxy");
    return text.isEmpty() && !isWeb(url) ? variable("http_proxy") : text;
}

QNetworkProxy proxyOf(const QString &text)
{
    const QUrl url(text.contains("://") ? text : "http://" + text);
    if (url.host().isEmpty())
        return QNetworkProxy::NoProxy;
    const bool isSocks = url.scheme().startsWith("socks5");
    QNetworkProxy proxy(isSocks ? QNetworkProxy::Socks5Proxy : QNetworkProxy::HttpProxy, url.host(),
                        static_cast<quint16>(url.port(isSocks ? 1080 : DefaultProxyPort)),
                        url.userName(QUrl::FullyDecoded), url.password(QUrl::FullyDecoded));
    return proxy;
}

QNetworkProxyQuery queryFor(const QUrl &url)
{
    return isWeb(url) ? QNetworkProxyQuery(url) : QNetworkProxyQuery(url.host(), url.port());
}

} // namespace

QNetworkProxy systemProxy(const QUrl &url)
{
    if (isThisMachine(url.host()) || isExcluded(url))
        return QNetworkProxy::NoProxy;
    const QString text = variableFor(url);
    if (!text.isEmpty())
        return proxyOf(text);
    // The variables that are left belong to other schemes.
    if (!variable("http_proxy").isEmpty() || !variable("https_proxy").isEmpty())
        return QNetworkProxy::NoProxy;
    const QList<QNetworkProxy> proxies = QNetworkProxyFactory::systemProxyForQuery(queryFor(url));
    for (const QNetworkProxy &proxy : proxies) {
        if (proxy.type() == QNetworkProxy::NoProxy || !proxy.hostName().isEmpty())
            return proxy;
    }
    return QNetworkProxy::NoProxy;
}

bool isOfWebOnly(const QUrl &url)
{
    return !isWeb(url) && variable("all_proxy").isEmpty();
}

QString proxyName(const QNetworkProxy &proxy)
{
    return QString("%1:%2").arg(proxy.hostName()).arg(proxy.port());
}

} // namespace IO
} // namespace Tellarix
