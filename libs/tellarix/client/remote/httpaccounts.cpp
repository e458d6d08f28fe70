// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/remote/httpaccounts.h>

#include <tellarix/core/environment.h>
#include <tellarix/core/logging.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace Tellarix {
namespace IO {

namespace {

constexpr auto FileName = "logins.json";
constexpr int DeepestUrl = 2; // a source within one within a third one
constexpr QFile::Permissions OfOwner = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions OfOthers =
    QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
constexpr int CoarsestClockMs = 2000; // of all file systems

/** Reads the text of a file; false if it isn't of its form. */
bool parse(const QByteArray &text, QVector<HttpAccount> *accounts)
{
    const QJsonValue list = QJsonDocument::fromJson(text).object().value("logins");
    QVector<HttpAccount> result;
    for (const QJsonValue &entry : list.toArray()) {
        const HttpAccount account{entry["host"].toString().trimmed(), entry["user"].toString(),
                                  entry["password"].toString()};
        if (account.host.isEmpty() || account.user.isEmpty())
            return false;
        result.append(account);
    }
    *accounts = result;
    return list.isArray();
}

QByteArray textOf(const QVector<HttpAccount> &accounts)
{
    QJsonArray list;
    for (const HttpAccount &account : accounts)
        list.append(QJsonObject{
            {"host", account.host}, {"user", account.user}, {"password", account.password}});
    return QJsonDocument(QJsonObject{{"logins", list}}).toJson();
}

/** 0 if an account isn't for a URL, else the more the closer it fits. */
int fitOf(const HttpAccount &account, const QUrl &url)
{
    const QString user = url.userName(QUrl::FullyDecoded);
    if (!user.isEmpty() && user != account.user)
        return 0;
    const int port = url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
    const QString host = url.host().contains(':') ? '[' + url.host() + ']' : url.host();
    if (account.host.compare(QString("%1:%2").arg(host).arg(port), Qt::CaseInsensitive) == 0)
        return 2;
    return account.host.compare(host, Qt::CaseInsensitive) == 0 ? 1 : 0;
}

bool isOf(const HttpAccount &account, const QString &host, const QString &user)
{
    return account.host.compare(host, Qt::CaseInsensitive) == 0 && account.user == user;
}

HttpAccount bestOf(const QVector<HttpAccount> &accounts, const QUrl &url)
{
    HttpAccount best;
    int bestFit = 0;
    for (const HttpAccount &account : accounts) {
        if (fitOf(account, url) > bestFit) {
            bestFit = fitOf(account, url);
            best = account;
        }
    }
    return best;
}

QString decoded(QString text, int times)
{
    while (times-- > 0)
        text = QUrl::fromPercentEncoding(text.toUtf8());
    return text;
}

/** A character of the form of a URL, in one that stands so deep within others. */
QString signAt(const char *sign, int depth)
{
    if (depth == 0)
        return sign;
    return '%' + QString("25").repeated(depth - 1) + QString::number(*sign, 16);
}

/** The pattern of a URL with a login. Its host and port are looked at, but are no part of it. */
QRegularExpression loginPattern(int depth)
{
    const auto sign = [&](const char *one) {
        return QRegularExpression::escape(signAt(one, depth));
    };
    const QString ends =
        QString("%1|%2|%3|[#/?]").arg(sign("/"), sign("?"), sign("#")) + (depth > 0 ? "|&" : "");
    const QString text = QString("(?<scheme>https?|seedlink)%1(?:%2){2}(?<user>(?:(?!%1|%3|%4).)*)"
                                 "(?<password>%1(?:(?!%4).)*)(?=%3(?<host>(?:(?!%3|%4|&).)*))")
                             .arg(sign(":"), sign("/"), sign("@"), ends);
    return QRegularExpression(text, QRegularExpression::CaseInsensitiveOption);
}

QString withoutPasswords(const QString &url, int depth, HttpAccounts &accounts)
{
    QString result;
    int end = 0;
    auto matches = loginPattern(depth).globalMatch(url);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString password = match.captured("password").mid(signAt(":", depth).size());
        const HttpAccount account{decoded(match.captured("host"), depth),
                                  decoded(match.captured("user"), depth + 1),
                                  decoded(password, depth + 1)};
        // Servers of the other scheme know no users.
        if (!account.isEmpty() && match.captured("scheme").startsWith('h', Qt::CaseInsensitive))
            accounts.keepForNow(account);
        result += url.midRef(end, match.capturedStart("password") - end);
        end = match.capturedEnd("password");
    }
    return result + url.midRef(end);
}

} // namespace

HttpAccounts &HttpAccounts::Instance()
{
    static HttpAccounts accounts;
    return accounts;
}

HttpAccounts::HttpAccounts(const QString &file) : _file(file)
{}

QString HttpAccounts::file() const
{
    return !_file.isEmpty()
               ? _file
               : QDir(QString::fromUtf8(Environment::Instance()->configurationDirectory()))
                     .filePath(FileName);
}

/** Reads the file if it has changed, or if that can't be told. */
void HttpAccounts::refresh()
{
    const QString name = file();
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QFileInfo info(name);
    // Where only the rights have changed, only the second one tells.
    const QDateTime time = std::max(info.lastModified(), info.metadataChangeTime());
    if (name == _readFile && time == _readTime)
        return;
    _readFile = name;
    _readTime = time;
    // The next change may come within the same tick of the file system's clock, and leave no trace.
    if (time.isValid() && time.msecsTo(before) < CoarsestClockMs)
        _readTime.reset();
    const QString knownProblem = std::exchange(_problem, QString());
    _stored.clear();
    if (!info.exists())
        return;
    QFile device(name);
    if (info.permissions() & OfOthers)
        _problem = QString("%1: no login is taken from it, since others than you can read or "
                           "write it (chmod 600)")
                       .arg(name);
    else if (!device.open(QFile::ReadOnly))
        _problem = QString("%1: %2").arg(name, device.errorString());
    else if (!parse(device.readAll(), &_stored))
        _problem = QString("%1: not a list of logins with host, user and password").arg(name);
    if (!_problem.isEmpty() && _problem != knownProblem)
        qCWarning(Log::io).noquote() << _problem;
}

HttpAccount HttpAccounts::find(const QUrl &url)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    refresh();
    const HttpAccount account = bestOf(_forNow, url);
    return account.isEmpty() ? bestOf(_stored, url) : account;
}

QString HttpAccounts::problem()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    refresh();
    return _problem;
}

bool HttpAccounts::set(const HttpAccount &account, QString *error)
{
    return change(account, true, error);
}

bool HttpAccounts::remove(const QString &host, const QString &user, QString *error)
{
    return change({host, user, QString()}, false, error);
}

bool HttpAccounts::change(const HttpAccount &account, bool isKept, QString *error)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    refresh();
    const auto forget = [&](QVector<HttpAccount> &accounts) {
        const auto end =
            std::remove_if(accounts.begin(), accounts.end(), [&](const HttpAccount &one) {
                return isOf(one, account.host, account.user);
            });
        const bool isAny = end != accounts.end();
        accounts.erase(end, accounts.end());
        return isAny;
    };
    // What is said now counts, also where another password was typed before.
    forget(_forNow);
    QVector<HttpAccount> accounts = _stored;
    // A file that can't be read mustn't be lost.
    if (!_problem.isEmpty()) {
        *error = _problem;
        return false;
    }
    const bool wasThere = forget(accounts);
    if (!wasThere && !isKept)
        return true;
    if (isKept)
        accounts.append(account);
    return write(accounts, error);
}

bool HttpAccounts::write(const QVector<HttpAccount> &accounts, QString *error)
{
    const QString name = file();
    QDir().mkpath(QFileInfo(name).path());
    QSaveFile device(name);
    const QByteArray text = textOf(accounts);
    // Nobody else may read it, not even before it is complete.
    if (!device.open(QSaveFile::WriteOnly) || !device.setPermissions(OfOwner) ||
        device.write(text) != text.size() || !device.commit()) {
        *error = QString("%1: %2").arg(name, device.errorString());
        return false;
    }
    _readTime.reset();
    return true;
}

void HttpAccounts::keepForNow(const HttpAccount &account)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _forNow.prepend(account);
}

QString takePasswords(const QString &url, HttpAccounts &accounts)
{
    QString result = url;
    for (int depth = 0; depth <= DeepestUrl; ++depth)
        result = withoutPasswords(result, depth, accounts);
    return result;
}

} // namespace IO
} // namespace Tellarix
