// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httpclient.h>

#include <tellarix/client/remote/httpaccounts.h>
#include <tellarix/client/remote/httpconnection_p.h>
#include <tellarix/client/remote/httplogin_p.h>
#include <tellarix/core/version.h>

#include <QRegularExpression>

#include <algorithm>

namespace Tellarix {
namespace IO {

namespace {

// What is left of a body is read rather than a new connection made, up to so many bytes.
constexpr qint64 MaxDrained = 64 << 10;
constexpr int MaxChunkLine = 4 << 10;
constexpr int MaxReason = 200;

const char *nameOf(HttpRequest::Method method)
{
    switch (method) {
    case HttpRequest::Method::Head:
        return "HEAD";
    case HttpRequest::Method::Post:
        return "POST";
    case HttpRequest::Method::Get:
        break;
    }
    return "GET";
}

bool isKnownScheme(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

QByteArray targetOf(const QUrl &url)
{
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (!target.startsWith('/'))
        target.prepend('/');
    if (url.hasQuery())
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    return target;
}

QByteArray hostOf(const QUrl &url)
{
    const QByteArray host = url.host(QUrl::FullyEncoded).toLatin1();
    const QByteArray name = host.contains(':') ? '[' + host + ']' : host;
    return url.port() < 0 ? name : name + ':' + QByteArray::number(url.port());
}

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool contains(const QByteArray &list, const char *word)
{
    return list.toLower().replace(' ', "").split(',').contains(word);
}

/** A text of a server as one line for a person. */
QString oneLine(const QString &text, int maxLength)
{
    QString line = text;
    for (QChar &c : line) {
        if (!c.isPrint())
            c = QLatin1Char(' ');
    }
    line = line.simplified();
    return line.size() <= maxLength ? line : line.left(maxLength - 3) + QLatin1String("...");
}

} // namespace

void HttpRequest::setRange(qint64 first, qint64 last)
{
    const QByteArray end = last < 0 ? QByteArray() : QByteArray::number(last);
    headers.push_back({"Range", "bytes=" + QByteArray::number(first) + '-' + end});
}

void HttpRequest::setKnown(const QByteArray &entityTag, const QByteArray &lastModified)
{
    if (!entityTag.isEmpty())
        headers.push_back({"If-None-Match", entityTag});
    if (!lastModified.isEmpty())
        headers.push_back({"If-Modified-Since", lastModified});
}

QByteArray HttpAnswer::header(const char *name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return QByteArray();
}

QString HttpAnswer::statusText() const
{
    const QString text = QString("%1 %2").arg(status).arg(reason).trimmed();
    return loginProblem.isEmpty() ? text : QString("%1 (%2)").arg(text, loginProblem);
}

namespace {

/** The login that stands in a URL or settings, or is kept for the URL. */
HttpLogin loginFor(const QUrl &url, const HttpSettings &settings)
{
    const QString user = url.userName(QUrl::FullyDecoded);
    const QString password = url.password(QUrl::FullyDecoded);
    if (!user.isEmpty() && !password.isEmpty())
        return HttpLogin(user, password);
    if (user.isEmpty() && !settings.user.isEmpty())
        return HttpLogin(settings.user, settings.password);
    const HttpAccount account = HttpAccounts::Instance().find(url);
    return account.isEmpty() ? HttpLogin(user, password)
                             : HttpLogin(account.user, account.password);
}

} // namespace

bool HttpAnswer::isBounded() const
{
    return length >= 0 || header("Transfer-Encoding").toLower() == "chunked";
}

/** The exchange of one request and answer after another over one connection. */
class HttpClient::Private
{
public:
    Private(const HttpSettings &settings, HttpAnswer &answer)
        : settings(settings), connection(settings), answer(answer)
    {}

    void setLogin(const QUrl &url, const HttpLogin &newLogin);
    /** Whether there is a login for the server of a URL, after redirects perhaps another one. */
    bool hasLoginFor(const QUrl &url);
    bool exchange(const HttpRequest &request);
    bool follow(HttpRequest &request);
    void drain();
    qint64 read(char *data, qint64 maxSize);
    /** Takes over the failure of the connection, which is of no use any more. */
    bool failed();
    bool fail(HttpFailure failure, const QString &cause)
    {
        connection.fail(failure, cause);
        return failed();
    }

    const HttpSettings settings;
    HttpConnection connection;
    HttpLogin login;
    QString loginServer; /**< nobody else gets the login */
    int redirects{0};

private:
    enum class Body
    {
        None,
        Sized,
        Chunked,
        UntilClosed
    };

    QByteArray headOf(const HttpRequest &request);
    bool readHead(const HttpRequest &request);
    bool readStatus(const QByteArray &line);
    bool readHeaders(int *budget, const QDeadlineTimer &deadline);
    bool setBody(const HttpRequest &request);
    bool beginChunk();
    void endBody();

    HttpAnswer &answer;
    Body body{Body::None};
    qint64 left{0}; /**< bytes of a sized body or of the current chunk */
    qint64 received{0};
    bool firstChunk{true};
    bool isOld{false}; /**< of HTTP/1.0 */
    bool keepsAlive{false};
    bool headBegun{false};
};

void HttpClient::Private::setLogin(const QUrl &url, const HttpLogin &newLogin)
{
    const QString server = httpServerName(url);
    if (server == loginServer && newLogin.isOfSameUser(login))
        return;
    login = newLogin;
    loginServer = server;
}

bool HttpClient::Private::hasLoginFor(const QUrl &url)
{
    if (httpServerName(url) != loginServer) {
        const HttpAccount account = HttpAccounts::Instance().find(url);
        if (!account.isEmpty())
            setLogin(url, HttpLogin(account.user, account.password));
    }
    return httpServerName(url) == loginServer && !login.isEmpty();
}

bool HttpClient::Private::failed()
{
    answer.failure = connection.failure();
    answer.cause = connection.cause();
    if (redirects > 0 && connection.failure() != HttpFailure::Redirected &&
        connection.failure() != HttpFailure::Cancelled)
        answer.cause = QString("sent on to %1: %2").arg(httpServerName(answer.url), answer.cause);
    body = Body::None;
    keepsAlive = false;
    connection.close();
    return false;
}

QByteArray HttpClient::Private::headOf(const HttpRequest &request)
{
    const QByteArray method = nameOf(request.method);
    const QByteArray target = targetOf(request.url);
    QByteArray text = method + ' ';
    if (connection.isRelayed())
        text += "http://" + hostOf(request.url);
    text += target + " HTTP/1.1\r\n";

    HttpHeaders headers = {
        {"Host", hostOf(request.url)},
        {"User-Agent", "Tellarix/" + QByteArray::fromStdString(Core::CurrentVersion.toString())},
        {"Accept", "*/*"},
        {"Accept-Encoding", "identity"},
        {"Proxy-Authorization", connection.proxyLogin()},
    };
    if (!login.isEmpty() && httpServerName(request.url) == loginServer)
        headers.push_back({"Authorization", login.authorization(method, target)});
    if (request.method == HttpRequest::Method::Post) {
        headers.push_back({"Content-Type", request.bodyType});
        headers.push_back({"Content-Length", QByteArray::number(request.body.size())});
    }
    headers.insert(headers.end(), request.headers.begin(), request.headers.end());
    for (const auto &[name, value] : headers) {
        // A value with a line feed would be a header of its own.
        if (!value.isEmpty() && !value.contains('\n') && !value.contains('\r'))
            text += name + ": " + value + "\r\n";
    }
    return text + "\r\n";
}

bool HttpClient::Private::exchange(const HttpRequest &request)
{
    for (;;) {
        answer = HttpAnswer();
        answer.url = request.url;
        received = 0;
        headBegun = false;
        if (!connection.connectTo(request.url))
            return failed();
        const bool wasUsed = connection.isUsed();
        connection.setUsed();
        connection.write(headOf(request));
        if (request.method == HttpRequest::Method::Post)
            connection.write(request.body);
        if (readHead(request))
            return true;
        // A server may close a kept connection at any time, also while it is asked again.
        if (!wasUsed || headBegun || connection.failure() != HttpFailure::Unreachable)
            return failed();
        connection.close();
    }
}

bool HttpClient::Private::readHead(const HttpRequest &request)
{
    int budget = settings.maxHeadSize;
    QByteArray line;
    do {
        answer.headers.clear();
        if (!connection.readLine(&line, &budget, connection.silence()))
            return false;
        headBegun = true;
        // Counted from here for the rest, or single bytes would keep it going for days.
        if (!readStatus(line) || !readHeaders(&budget, connection.silence()))
            return false;
    } while (answer.status < 200);
    return setBody(request);
}

bool HttpClient::Private::readStatus(const QByteArray &line)
{
    const QByteArray word = line.left(line.indexOf(' '));
    const QByteArray rest = line.mid(word.size()).trimmed();
    bool isNumber = false;
    answer.status = rest.left(3).toInt(&isNumber);
    if (!word.startsWith("HTTP/1.") || !isNumber || answer.status < 100 || answer.status > 999)
        return connection.fail(HttpFailure::Garbled, "the answer is no HTTP");
    answer.reason = oneLine(QString::fromUtf8(rest.mid(3)), MaxReason);
    isOld = word == "HTTP/1.0";
    return true;
}

bool HttpClient::Private::readHeaders(int *budget, const QDeadlineTimer &deadline)
{
    QByteArray line;
    for (;;) {
        if (!connection.readLine(&line, budget, deadline))
            return false;
        if (line.isEmpty())
            return true;
        const int colon = line.indexOf(':');
        if (colon <= 0)
            return connection.fail(HttpFailure::Garbled, "a header of the answer has no name");
        answer.headers.push_back({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    }
}

bool HttpClient::Private::setBody(const HttpRequest &request)
{
    const QByteArray way = answer.header("Connection");
    keepsAlive = isOld ? contains(way, "keep-alive") : !contains(way, "close");
    left = 0;
    firstChunk = true;
    const QByteArray length = answer.header("Content-Length");
    if (!length.isEmpty()) {
        bool isNumber = false;
        answer.length = length.toLongLong(&isNumber);
        if (!isNumber || answer.length < 0)
            return connection.fail(HttpFailure::Garbled, "the length of the answer is no number");
    }
    if (request.method == HttpRequest::Method::Head || answer.status == 204 ||
        answer.status == 304) {
        body = Body::None;
        endBody();
        return true;
    }

    const QByteArray encoding = answer.header("Content-Encoding").toLower();
    if (!encoding.isEmpty() && encoding != "identity")
        return connection.fail(HttpFailure::Garbled,
                               "the answer is compressed, which was not asked for");
    const QByteArray transfer = answer.header("Transfer-Encoding").toLower();
    if (!transfer.isEmpty() && transfer != "identity") {
        if (transfer != "chunked")
            return connection.fail(HttpFailure::Garbled,
                                   "the answer comes in an unknown transfer encoding");
        body = Body::Chunked;
        answer.length = -1;
    } else if (answer.length >= 0) {
        body = Body::Sized;
        left = answer.length;
        if (left == 0)
            endBody();
    } else
        body = Body::UntilClosed;
    return true;
}

void HttpClient::Private::endBody()
{
    const bool isClosed = !keepsAlive || body == Body::UntilClosed;
    body = Body::None;
    if (isClosed)
        connection.close();
}

/** Goes to the bytes of the next chunk, or to the end of all; false if it is broken. */
bool HttpClient::Private::beginChunk()
{
    int budget = MaxChunkLine;
    QByteArray line;
    if (!firstChunk) {
        if (!connection.readLine(&line, &budget, connection.silence()))
            return false;
        if (!line.isEmpty())
            return connection.fail(HttpFailure::Garbled, "a chunk of the answer has no end");
    }
    firstChunk = false;
    if (!connection.readLine(&line, &budget, connection.silence()))
        return false;
    bool isNumber = false;
    left = line.split(';').first().trimmed().toLongLong(&isNumber, 16);
    if (!isNumber || left < 0)
        return connection.fail(HttpFailure::Garbled, "a chunk of the answer has no length");
    if (left > 0)
        return true;

    budget = settings.maxHeadSize;
    do {
        if (!connection.readLine(&line, &budget, connection.silence()))
            return false;
    } while (!line.isEmpty());
    endBody();
    return true;
}

qint64 HttpClient::Private::read(char *data, qint64 maxSize)
{
    if (answer.failure != HttpFailure::None)
        return -1;
    if (connection.isCancelled()) {
        fail(HttpFailure::Cancelled, "cancelled");
        return -1;
    }
    const auto breakOff = [this] {
        if (connection.failure() == HttpFailure::Unreachable ||
            connection.failure() == HttpFailure::None)
            connection.fail(HttpFailure::BrokenOff, "");
        if (connection.failure() == HttpFailure::BrokenOff) {
            const QString whole =
                answer.length < 0 ? QString() : QString(" of %1").arg(answer.length);
            connection.fail(HttpFailure::BrokenOff,
                            QString("broken off after %1%2 bytes").arg(received).arg(whole));
        }
        failed();
        return -1;
    };
    if (body == Body::Chunked && left == 0 && !beginChunk())
        return breakOff();
    if (body == Body::None || maxSize <= 0)
        return 0;

    const qint64 wanted = body == Body::UntilClosed ? maxSize : std::min(maxSize, left);
    const qint64 size = connection.read(data, wanted);
    if (size < 0 || (size == 0 && body != Body::UntilClosed))
        return breakOff();
    received += size;
    left -= size;
    if ((body == Body::Sized && left == 0) || (body == Body::UntilClosed && size == 0))
        endBody();
    return size;
}

/** Reads what is left of a body, so that the connection can be used again; closes it if that would
 *  take longer than a new one. */
void HttpClient::Private::drain()
{
    char bytes[4096];
    for (qint64 drained = 0; body != Body::None && drained <= MaxDrained;) {
        const qint64 size = answer.length > MaxDrained ? 0 : read(bytes, sizeof bytes);
        if (size <= 0)
            break;
        drained += size;
    }
    if (body != Body::None)
        connection.close();
    body = Body::None;
}

/** Goes to where an answer sends the request; false if it must not. */
bool HttpClient::Private::follow(HttpRequest &request)
{
    const QUrl target =
        request.url.resolved(QUrl::fromEncoded(answer.header("Location"), QUrl::StrictMode));
    const QString name =
        oneLine(target.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery), MaxReason);
    const auto refuse = [&](const QString &why) {
        return fail(HttpFailure::Redirected, QString("sent on to %1, %2").arg(name, why));
    };
    if (!isKnownScheme(target))
        return refuse("which is no address of HTTP");
    if (request.url.scheme() == QLatin1String("https") && target.scheme() != request.url.scheme())
        return refuse("which is not encrypted");
    if (++redirects > settings.maxRedirects)
        return refuse(QString("after %1 times before").arg(settings.maxRedirects));

    drain();
    if (answer.status == 303 && request.method == HttpRequest::Method::Post) {
        request.method = HttpRequest::Method::Get;
        request.body.clear();
    }
    request.url = target;
    request.url.setUserInfo(QString());
    return true;
}

HttpClient::HttpClient(const HttpSettings &settings)
    : _private(std::make_unique<Private>(settings, _answer))
{}

HttpClient::~HttpClient() = default;

bool HttpClient::open(const HttpRequest &request)
{
    Private &d = *_private;
    d.drain();
    d.redirects = 0;
    HttpRequest current = request;
    current.url.setUserInfo(QString());
    _answer = HttpAnswer();
    _answer.url = current.url;
    if (!isKnownScheme(request.url))
        return d.fail(HttpFailure::Address, "no address of HTTP");

    d.setLogin(request.url, loginFor(request.url, d.settings));
    bool loggedIn = false;
    for (;;) {
        if (!d.exchange(current))
            return false;
        if (_answer.status == 401 && !loggedIn && d.hasLoginFor(current.url) &&
            d.login.take(_answer)) {
            loggedIn = true;
            d.drain();
            continue;
        }
        if (!isRedirect(_answer.status) || _answer.header("Location").isEmpty()) {
            if ((_answer.status == 401 || _answer.status == 403) && !d.hasLoginFor(current.url))
                _answer.loginProblem = HttpAccounts::Instance().problem();
            return true;
        } else if (!d.follow(current))
            return false;
    }
}

qint64 HttpClient::read(char *data, qint64 maxSize)
{
    return _private->read(data, maxSize);
}

QByteArray HttpClient::readUpTo(qint64 limit)
{
    QByteArray bytes;
    char block[4096];
    while (bytes.size() < limit) {
        const qint64 size = read(block, std::min<qint64>(sizeof block, limit - bytes.size()));
        if (size <= 0)
            break;
        bytes.append(block, static_cast<int>(size));
    }
    return bytes;
}

bool HttpClient::fetch(const HttpRequest &request,
                       const std::function<bool(const char *data, qint64 size)> &take)
{
    if (!open(request) || (_answer.status != 200 && _answer.status != 206))
        return false;
    std::vector<char> block(64 << 10);
    for (;;) {
        const qint64 size = read(block.data(), static_cast<qint64>(block.size()));
        if (size <= 0)
            return size == 0;
        if (!take(block.data(), size))
            return _private->fail(HttpFailure::Cancelled, "cancelled");
    }
}

void HttpClient::cancel()
{
    _private->connection.cancel();
}

void HttpClient::rearm()
{
    _private->connection.rearm();
}

bool HttpClient::isCancelled() const
{
    return _private->connection.isCancelled();
}

QString httpServerName(const QUrl &url)
{
    QUrl server;
    server.setScheme(url.scheme());
    server.setHost(url.host());
    server.setPort(url.port());
    return server.toDisplayString();
}

bool isHtml(const QByteArray &contentType, const QByteArray &head)
{
    // Comments and the like may stand before it.
    const QByteArray text = head.trimmed().left(1000).toLower();
    return contentType.toLower().contains("html") ||
           (text.startsWith('<') && (text.contains("<!doctype html") || text.contains("<html")));
}

QString httpBodyText(const QByteArray &body, int maxLength)
{
    QString text = QString::fromUtf8(body);
    if (isHtml(QByteArray(), body)) {
        static const QRegularExpression hidden(
            "<(script|style|head|title)\\b.*?(</\\1\\s*>|$)|<!--.*?(-->|$)",
            QRegularExpression::CaseInsensitiveOption |
                QRegularExpression::DotMatchesEverythingOption);
        static const QRegularExpression title("<title[^>]*>(.*?)</title",
                                              QRegularExpression::CaseInsensitiveOption |
                                                  QRegularExpression::DotMatchesEverythingOption);
        static const QRegularExpression element("<[^>]*(>|$)");
        const QString heading = title.match(text).captured(1);
        text = text.remove(hidden).replace(element, " ").simplified();
        // Most pages say the same again below their title.
        if (!heading.isEmpty() && !text.startsWith(heading.simplified()))
            text = text.isEmpty() ? heading : heading + ": " + text;
        const std::pair<const char *, const char *> entities[] = {
            {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&nbsp;", " "}, {"&amp;", "&"}};
        for (const auto &[entity, character] : entities)
            text.replace(QLatin1String(entity), QLatin1String(character));
    }
    return oneLine(text, maxLength);
}

} // namespace IO
} // namespace Tellarix
