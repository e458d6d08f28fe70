// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httparchivelisting_p.h>

#include <QRegularExpression>
#include <QUrlQuery>
#include <QXmlStreamReader>

namespace Tellarix {
namespace IO {

namespace {

// A folder of 100,000 files has a page of about 20 MB.
constexpr qint64 MostBytes = 32 * 1024 * 1024;
constexpr size_t MostNames = 1000000;
constexpr int MostBreaks = 3;

void addName(const QString &name, HttpArchiveNames &names)
{
    const bool isFolder = name.endsWith('/');
    const QString bare = isFolder ? name.left(name.size() - 1) : name;
    if (!bare.isEmpty() && bare != QLatin1String("..") && !bare.contains('/'))
        (isFolder ? names.folders : names.files).push_back(bare.toStdString());
}

QString nameOf(const QUrl &url)
{
    return url.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveQuery);
}

} // namespace

bool parseLinks(const QByteArray &page, const QUrl &url, HttpArchiveNames &names)
{
    static const QRegularExpression link("<a\\s[^>]*?href\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)')",
                                         QRegularExpression::CaseInsensitiveOption);
    const QString text = QString::fromUtf8(page);
    const QString base = url.path(QUrl::FullyDecoded);
    QRegularExpressionMatchIterator links = link.globalMatch(text);
    const bool hasLinks = links.hasNext();
    while (links.hasNext()) {
        const QRegularExpressionMatch match = links.next();
        QString target = match.captured(1) + match.captured(2);
        target.replace(QLatin1String("&amp;"), QLatin1String("&"));
        const QUrl linked = url.resolved(QUrl(target));
        // Columns of such pages are sorted by links with queries.
        const QString path = linked.path(QUrl::FullyDecoded);
        if (linked.host() == url.host() && !linked.hasQuery() && path.startsWith(base))
            addName(path.mid(base.size()), names);
    }
    return hasLinks;
}

bool parseObjects(const QByteArray &list, const QString &prefix, HttpArchiveNames &names)
{
    QXmlStreamReader reader(list);
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("ListBucketResult"))
        return false;
    names.continuation.clear();
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == QLatin1String("NextContinuationToken"))
            names.continuation = reader.readElementText();
        // The prefix of the list itself stands outside of any group.
        const bool isName =
            reader.name() == QLatin1String("Key") || reader.name() == QLatin1String("Prefix");
        const QString name = isName ? reader.readElementText() : QString();
        if (isName && name.startsWith(prefix))
            addName(name.mid(prefix.size()), names);
    }
    return !reader.hasError();
}

HttpArchiveListing::Result HttpArchiveListing::list(const QString &path, HttpArchiveNames &names)
{
    const auto known = _known.find(path);
    if (known != _known.end()) {
        names = known->second;
        return Result::Listed;
    }
    names = HttpArchiveNames();
    const Result result = _kind == Kind::Objects ? listObjects(path, names) : request(path, names);
    if (result == Result::Listed)
        _known[path] = names;
    return result;
}

HttpArchiveListing::Result HttpArchiveListing::request(const QString &path, HttpArchiveNames &names)
{
    QUrl url = _root;
    url.setPath(_root.path() + (path.isEmpty() ? "" : "/") + path + '/');
    QByteArray body;
    const bool isThere = get(url, body);
    const int status = _client.answer().status;
    if (isThere && _kind != Kind::Objects &&
        isHtml(_client.answer().header("Content-Type"), body) && parseLinks(body, url, names)) {
        _kind = Kind::Links;
        return Result::Listed;
    }
    if (status == 0)
        return fail(_client.answer().cause);
    if (_kind == Kind::Unknown && isObjectStore(path))
        return listObjects(path, names);
    const bool isMissing = status == 404 || status == 410;
    // Without a list of the root it isn't known whether it is the folder or its list.
    HttpArchiveNames top;
    if (isMissing && (_kind == Kind::Links || (!path.isEmpty() && list("", top) == Result::Listed)))
        return Result::Missing;
    if (!isThere && !isMissing && status != 403)
        return fail("the server answers " + QString::number(status));
    return fail(nameOf(url) + " can't be listed, which wildcards and open windows need");
}

/** Tries the places at which an object store lists what it has. */
bool HttpArchiveListing::isObjectStore(const QString &path)
{
    const QString inside = _root.path().mid(1);
    const int slash = inside.indexOf('/');
    const QString bucket = slash < 0 ? inside : inside.left(slash);
    const std::pair<QString, QString> places[] = {
        {"/", inside},
        {'/' + bucket + '/', slash < 0 ? QString() : inside.mid(slash + 1)},
    };
    for (const auto &[place, prefix] : places) {
        _bucket = _root;
        _bucket.setPath(place);
        _prefix = prefix.isEmpty() ? prefix : prefix + '/';
        HttpArchiveNames names;
        if (listObjects(path, names) != Result::Failed) {
            _kind = Kind::Objects;
            return true;
        }
    }
    return false;
}

HttpArchiveListing::Result HttpArchiveListing::listObjects(const QString &path,
                                                           HttpArchiveNames &names)
{
    const QString prefix = _prefix + (path.isEmpty() ? path : path + '/');
    do {
        QUrlQuery query;
        query.addQueryItem("list-type", "2");
        query.addQueryItem("delimiter", "/");
        query.addQueryItem("prefix", QString::fromLatin1(QUrl::toPercentEncoding(prefix)));
        if (!names.continuation.isEmpty())
            query.addQueryItem("continuation-token",
                               QString::fromLatin1(QUrl::toPercentEncoding(names.continuation)));
        QUrl url = _bucket;
        url.setQuery(query);
        QByteArray body;
        const QString before = names.continuation;
        if (!get(url, body) || !parseObjects(body, prefix, names))
            return fail(nameOf(url) + " can't be listed");
        if (names.continuation == before)
            break;
    } while (!names.continuation.isEmpty() &&
             names.folders.size() + names.files.size() < MostNames);
    return names.folders.empty() && names.files.empty() ? Result::Missing : Result::Listed;
}

bool HttpArchiveListing::get(const QUrl &url, QByteArray &body)
{
    int breaks = 0;
    while (_outage.waitForTurn()) {
        const ServerOutage::Turn turn = _outage.begin();
        _client.open(HttpRequest(url));
        if (_outage.judge(turn, _client.answer()) == ServerOutage::Verdict::Wait)
            continue;
        if (_client.answer().status != 200)
            return false;
        body = _client.readUpTo(MostBytes);
        const HttpFailure failure = _client.answer().failure;
        const bool isBroken = failure == HttpFailure::BrokenOff || failure == HttpFailure::TimedOut;
        if (!isBroken || ++breaks >= MostBreaks)
            return failure == HttpFailure::None;
    }
    return false;
}

HttpArchiveListing::Result HttpArchiveListing::fail(const QString &cause)
{
    _error = (httpServerName(_root) + ": " + cause).toStdString();
    return Result::Failed;
}

} // namespace IO
} // namespace Tellarix
