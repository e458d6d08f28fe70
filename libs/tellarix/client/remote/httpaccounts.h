// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/api.h>

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QVector>

#include <mutex>
#include <optional>

namespace Tellarix {
namespace IO {

/** Who a user is at a web server. */
struct TELLARIX_CLIENT_API HttpAccount
{
    QString host; /**< "HOST", or "HOST:PORT" for this port alone */
    QString user;
    QString password;

    bool isEmpty() const { return user.isEmpty(); }
};

/**
 * Logins at web servers, apart from the addresses that are shown and stored. They are sent to the
 * host that they stand for, if it asks for a login, and go nowhere else. Any thread may ask.
 *
 * They stand in the file "logins.json" in the user's folder of configuration, which is read again
 * when it has changed. It is not used while others than the user can read or write it.
 *
 *     {"logins": [{"host": "service.example.org", "user": "anna", "password": "secret"}]}
 */
class TELLARIX_CLIENT_API HttpAccounts
{
public:
    /** Those of the user who runs the program. */
    static HttpAccounts &Instance();

    /** @param file  where they are kept; the user's own file if it is empty */
    explicit HttpAccounts(const QString &file = QString());

    QString file() const;
    /** The account for a URL: of its host, of its port before any port, and of the user if it names
     *  one. Empty if there is none. */
    HttpAccount find(const QUrl &url);
    /** Why the file isn't used, in one line that names it; empty if it is, or isn't there. */
    QString problem();

    /** Adds an account to the file, or puts it in the stead of the one of the same host and user.
     *  The file is made for the user alone. False with a reason if it can't be written, or is there
     *  and can't be used. */
    bool set(const HttpAccount &account, QString *error);
    /** Takes an account from the file; true also if there was none. */
    bool remove(const QString &host, const QString &user, QString *error);
    /** Keeps an account for as long as the program runs, before those of the file. */
    void keepForNow(const HttpAccount &account);

private:
    void refresh();
    bool write(const QVector<HttpAccount> &accounts, QString *error);
    bool change(const HttpAccount &account, bool isKept, QString *error);

    const QString _file;
    std::mutex _mutex;
    QVector<HttpAccount> _forNow;
    QVector<HttpAccount> _stored;
    QString _problem;
    QString _readFile;
    /** Of the file's last change, when it was read; none to read it again in any case. */
    std::optional<QDateTime> _readTime;
};

/**
 * Takes the passwords out of a URL and those within it, percent-encoded or not, and keeps them in
 * @p accounts for now. The names of the users stay.
 */
TELLARIX_CLIENT_API QString takePasswords(const QString &url,
                                          HttpAccounts &accounts = HttpAccounts::Instance());

} // namespace IO
} // namespace Tellarix
