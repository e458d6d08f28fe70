// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/httpclient.h>
#include <tellarix/client/remote/serveroutage_p.h>

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <map>
#include <string>
#include <vector>

namespace Tellarix {
namespace IO {

/** What a folder on a server holds. */
struct TELLARIX_CLIENT_API HttpArchiveNames
{
    std::vector<std::string> folders;
    std::vector<std::string> files;
    QString continuation; /**< where the next part of an object store's list begins, if any */
};

/**
 * Reads a page of links, as web servers make them of a folder: those that lead right into it.
 * @param url  of the folder, with a slash at the end
 * @return false if the page has no link at all
 */
TELLARIX_CLIENT_API bool parseLinks(const QByteArray &page, const QUrl &url,
                                    HttpArchiveNames &names);

/** Reads a part of an object store's list of what begins with @p prefix; false if it is no such
 *  list. */
TELLARIX_CLIENT_API bool parseObjects(const QByteArray &list, const QString &prefix,
                                      HttpArchiveNames &names);

/** Lists the folders of a tree on a web server or in an object store. */
class HttpArchiveListing
{
public:
    enum class Result
    {
        Listed,
        Missing, /**< there is no such folder */
        Failed,  /**< error() tells why */
    };

    /** @param root  without a slash at the end; may hold a login */
    HttpArchiveListing(HttpClient &client, const QUrl &root, ServerOutage &outage)
        : _client(client), _root(root), _outage(outage)
    {}

    /** Lists the folder at @p path below the root, an empty one being the root. */
    Result list(const QString &path, HttpArchiveNames &names);
    const std::string &error() const { return _error; }

private:
    enum class Kind
    {
        Unknown,
        Links,
        Objects,
    };

    Result request(const QString &path, HttpArchiveNames &names);
    bool isObjectStore(const QString &path);
    Result listObjects(const QString &path, HttpArchiveNames &names);
    bool get(const QUrl &url, QByteArray &body);
    Result fail(const QString &cause);

    HttpClient &_client;
    const QUrl _root;
    ServerOutage &_outage;
    Kind _kind{Kind::Unknown};
    QUrl _bucket;
    QString _prefix; /**< of the root in the bucket */
    std::map<QString, HttpArchiveNames> _known;
    std::string _error;
};

} // namespace IO
} // namespace Tellarix
