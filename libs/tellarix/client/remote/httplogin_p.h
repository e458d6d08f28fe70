// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/client/remote/httpclient.h>

#include <QMap>

namespace Tellarix {
namespace IO {

/** A user's login at one server, by digest (RFC 7616 without integrity of bodies) or basic. */
class HttpLogin
{
public:
    HttpLogin() = default;
    HttpLogin(const QString &user, const QString &password) : _user(user), _password(password) {}

    bool isEmpty() const { return _user.isEmpty(); }
    bool isOfSameUser(const HttpLogin &other) const
    {
        return _user == other._user && _password == other._password;
    }
    /** Takes the strongest known way of login that an answer offers; false if there is none. */
    bool take(const HttpAnswer &answer);
    /** The value of the header that logs a request in; empty before anything was taken. */
    QByteArray authorization(const QByteArray &method, const QByteArray &target);

private:
    struct Challenge
    {
        QByteArray scheme;
        QMap<QByteArray, QByteArray> values;
    };

    static std::vector<Challenge> parse(const QByteArray &text);
    static int strengthOf(const Challenge &challenge);
    QByteArray digest(const QByteArray &method, const QByteArray &target);

    QString _user;
    QString _password;
    Challenge _challenge;
    quint32 _count{0}; /**< requests with the nonce of the challenge */
};

} // namespace IO
} // namespace Tellarix
