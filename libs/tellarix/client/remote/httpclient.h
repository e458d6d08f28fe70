// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Tellarix {
namespace IO {

using HttpHeaders = std::vector<std::pair<QByteArray, QByteArray>>;

/** What is asked of a server. */
struct TELLARIX_CLIENT_API HttpRequest
{
    enum class Method
    {
        Get,
        Head,
        Post
    };

    HttpRequest() = default;
    explicit HttpRequest(const QUrl &address) : url(address) {}

    /** Asks for the bytes from @p first to @p last, both included; -1 is the end. */
    void setRange(qint64 first, qint64 last = -1);
    /** Asks for the body only if it is another than that of an answer with these headers; an empty
     *  one is left out. */
    void setKnown(const QByteArray &entityTag, const QByteArray &lastModified);

    Method method{Method::Get};
    /** http or https; a login in it goes to this server only, and into no message. Without a
     *  password in it, HttpAccounts are asked for one. */
    QUrl url;
    QByteArray body;
    QByteArray bodyType{"text/plain"};
    HttpHeaders headers; /**< beside those that a client sends itself */
};

/** Why a request came to nothing. */
enum class HttpFailure
{
    None,
    Cancelled,
    Address,     /**< no address of HTTP */
    Unreachable, /**< unknown host, refused or lost before an answer */
    TimedOut,
    Certificate, /**< or another fault of encryption */
    Redirected,  /**< in circles, or to where it must not go */
    Garbled,     /**< the answer is no HTTP */
    BrokenOff    /**< in the middle of a body */
};

/** The head of what a server answers, and what became of its body so far. */
struct TELLARIX_CLIENT_API HttpAnswer
{
    /** The value of a header, whatever the case of its name; empty if there is none. */
    QByteArray header(const char *name) const;
    /** "404 Not Found", with the loginProblem if there is one. */
    QString statusText() const;

    /** Whether the body tells where it ends. Otherwise it does so with the connection, and nothing
     *  shows if that was lost. */
    bool isBounded() const;

    int status{0};  /**< 0 if there is no answer */
    QString reason; /**< the server's own words for the status, if any */
    QUrl url;       /**< where it came from, after redirects; without login */
    HttpHeaders headers;
    qint64 length{-1}; /**< bytes of the body, -1 if the server doesn't tell */
    HttpFailure failure{HttpFailure::None};
    QString cause; /**< of the failure, e.g. "no answer within 60 s" */
    QString
        loginProblem; /**< why the logins that are kept could not be used, where one is wanted */
};

/** Bounds and login of a client. */
struct HttpSettings
{
    int connectMSecs{15000};
    int silenceMSecs{60000}; /**< nothing comes for so long; also for the rest of a begun head */
    int maxRedirects{5};
    int maxHeadSize{64 << 10}; /**< bytes of all headers of an answer */
    int bufferSize{256 << 10}; /**< bytes that are taken from the server before someone reads */
    QString user;              /**< sent to whom the first request goes, if asked for a login */
    QString password;
};

/**
 * Asks servers by HTTP/1.1, one request after another, and blocks meanwhile: for threads that have
 * nothing else to do. Requests side by side take a client and a thread each.
 *
 * A client belongs to the thread that uses it first, which also has to destroy it; it runs an event
 * loop of its own there, for which the program needs a QCoreApplication. Connections are kept for
 * the next request where the server allows it. A server gets the login by digest or in plain, as it
 * wants; also one to which a request is redirected, but only its own of HttpAccounts. Redirects are
 * followed, also with a body, but never from https to http. Proxies, certificates and trust are
 * those of the system.
 */
class TELLARIX_CLIENT_API HttpClient
{
public:
    explicit HttpClient(const HttpSettings &settings = HttpSettings());
    ~HttpClient();

    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;

    /**
     * Sends a request and waits for the head of the answer. What is left of the answer before is
     * dropped.
     * @return false with a failure in answer() if none came; true with any status
     */
    bool open(const HttpRequest &request);
    const HttpAnswer &answer() const { return _answer; }

    /**
     * Waits for some bytes of the body. The server is held up as long as nobody reads.
     * @return 0 at the end, -1 with a failure in answer() if it broke off or was cancelled
     */
    qint64 read(char *data, qint64 maxSize);
    /** The body, but not more than @p limit bytes of it; as far as it came if it breaks off. */
    QByteArray readUpTo(qint64 limit);
    /**
     * Sends a request and hands the body over as it comes. An answer with a status other than 200
     * and 206 keeps its body for readUpTo().
     * @param take  false ends it as cancel() does
     * @return whether all of the body came with one of these
     */
    bool fetch(const HttpRequest &request,
               const std::function<bool(const char *data, qint64 size)> &take);

    /** Ends what runs, and all that is begun later, until rearm(). Any thread may call it. */
    void cancel();
    void rearm();
    bool isCancelled() const;

private:
    class Private;

    HttpAnswer _answer;
    std::unique_ptr<Private> _private;
};

/** "https://host:port" of a URL, as messages name a server. */
TELLARIX_CLIENT_API QString httpServerName(const QUrl &url);

/** What a person can read of a body: one line, not longer than @p maxLength, without the elements
 *  of HTML and without control characters. */
TELLARIX_CLIENT_API QString httpBodyText(const QByteArray &body, int maxLength = 300);

/** True if a body is a page for people, by its type or its first bytes. */
TELLARIX_CLIENT_API bool isHtml(const QByteArray &contentType, const QByteArray &head);

} // namespace IO
} // namespace Tellarix
