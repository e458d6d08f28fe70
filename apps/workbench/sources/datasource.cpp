// SPDX-License-Identifier: LGPL-3.0-or-later

#include "datasource.h"

#include <tellarix/client/io/recordstream.h>
#include <tellarix/client/remote/fdsnaddress.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

#include <algorithm>
#include <tuple>

using namespace Tellarix;

namespace Workbench {

namespace {

struct Service
{
    const char *key;
    QString DataSource::*address;
};

const Service Services[] = {{"live", &DataSource::live},
                            {"past", &DataSource::past},
                            {"stations", &DataSource::stations},
                            {"events", &DataSource::events}};

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::DataSource", text);
}

/** Folders needn't be there at all times, only the scheme has to. */
bool isStreamOf(const QString &address, QString *error)
{
    std::string reason;
    if (address.startsWith("archive://"))
        return true;
    if (IO::RecordStream::Create(address.toStdString(), &reason))
        return true;
    // A host alone would be looked for as a file.
    *error = address.contains("://")
                 ? QString::fromStdString(reason)
                 : tr("%1 is no URL, such as seedlink://HOST or fdsnws+https://HOST").arg(address);
    return false;
}

bool checkService(const Service &service, const QString &address, QString *error)
{
    const bool isOfRecords =
        service.address == &DataSource::live || service.address == &DataSource::past;
    if (address.contains('#')) {
        *error = tr("streams and times are no part of an address");
        return false;
    }
    return isOfRecords ? isStreamOf(address, error) : IO::FdsnAddress().parse(address, error);
}

QJsonObject objectOf(const DataSource &source)
{
    QJsonObject object{{"name", source.name}};
    for (const Service &service : Services) {
        if (!(source.*service.address).isEmpty())
            object.insert(service.key, source.*service.address);
    }
    if (!source.user.isEmpty())
        object.insert("user", source.user);
    return object;
}

DataSource sourceOf(const QJsonObject &object)
{
    DataSource source;
    source.name = object.value("name").toString().simplified();
    for (const Service &service : Services)
        source.*service.address = object.value(service.key).toString().trimmed();
    source.user = object.value("user").toString().trimmed();
    return source;
}

/** Whether an address is one of the web, whose servers know users. */
bool isWeb(const QString &address)
{
    const QString scheme = QUrl(address).scheme().section('+', -1);
    return scheme == "http" || scheme == "https";
}

int lineOf(const QByteArray &text, int offset)
{
    return text.left(offset).count('\n') + 1;
}

} // namespace

QString hostOf(const QString &address)
{
    const QUrl url(address);
    return url.port() < 0 ? url.host() : QString("%1:%2").arg(url.host()).arg(url.port());
}

QString DataSource::stationService() const
{
    if (!stations.isEmpty())
        return stations;
    return IO::FdsnAddress::IsOne(past) ? past : QString();
}

QString DataSource::hostsText() const
{
    QStringList texts;
    if (!live.isEmpty())
        texts.append(tr("live from %1").arg(hostOf(live)));
    if (!past.isEmpty())
        texts.append(tr("the past from %1").arg(hostOf(past)));
    return texts.join(", ");
}

QString DataSource::listingKey() const
{
    const QString key = live + '\n' + stationService();
    return user.isEmpty() ? key : key + '\n' + user;
}

QString DataSource::loginHost() const
{
    for (const QString &address : {past, stations, events}) {
        if (isWeb(address))
            return hostOf(address);
    }
    return QString();
}

DataSource DataSource::withUserInAddresses() const
{
    DataSource source = *this;
    if (user.isEmpty())
        return source;
    for (const Service &service : Services) {
        QString &address = source.*service.address;
        QUrl url(address);
        if (!isWeb(address) || hostOf(address) != loginHost() || !url.userInfo().isEmpty())
            continue;
        url.setUserName(user, QUrl::DecodedMode);
        address = url.toString(QUrl::FullyEncoded);
    }
    return source;
}

QString DataSource::takeLogin()
{
    QString password;
    for (const Service &service : Services) {
        QString &address = this->*service.address;
        QUrl url(address);
        if (!isWeb(address) || url.userInfo().isEmpty())
            continue;
        if (user.isEmpty())
            user = url.userName(QUrl::FullyDecoded);
        if (password.isEmpty())
            password = url.password(QUrl::FullyDecoded);
        url.setUserInfo(QString());
        address = url.toString(QUrl::FullyEncoded);
    }
    return password;
}

bool operator==(const DataSource &a, const DataSource &b)
{
    return std::tie(a.name, a.live, a.past, a.stations, a.events, a.user, a.isOwn, a.isHidden) ==
           std::tie(b.name, b.live, b.past, b.stations, b.events, b.user, b.isOwn, b.isHidden);
}

bool checkDataSource(const DataSource &source, QString *error)
{
    *error = QString();
    if (source.name.isEmpty())
        *error = tr("a source needs a name");
    else if (source.live.isEmpty() && source.past.isEmpty())
        *error = tr("%1: neither a live service nor one for the past").arg(source.name);
    for (const Service &service : Services) {
        const QString address = source.*service.address;
        QString cause;
        if (error->isEmpty() && !address.isEmpty() && !checkService(service, address, &cause))
            *error = QString("%1: %2: %3").arg(source.name, service.key, cause);
    }
    if (error->isEmpty() && !source.user.isEmpty() && source.loginHost().isEmpty())
        *error = tr("%1: a user is known to web services only, and there is none").arg(source.name);
    return error->isEmpty();
}

bool parseDataSources(const QByteArray &text, DataSourceFile *file, QString *error)
{
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
    if (fault.error != QJsonParseError::NoError) {
        *error = tr("line %1: %2").arg(lineOf(text, fault.offset)).arg(fault.errorString());
        return false;
    }
    DataSourceFile result;
    const QJsonValue sources = document.object().value("sources");
    const QJsonValue hidden = document.object().value("hidden");
    if (!sources.isArray() || !(hidden.isArray() || hidden.isUndefined())) {
        *error = tr("\"sources\" or \"hidden\" is no list");
        return false;
    }
    for (const QJsonValue &entry : sources.toArray()) {
        result.sources.append(sourceOf(entry.toObject()));
        QString cause;
        if (!checkDataSource(result.sources.last(), &cause)) {
            *error = tr("entry %1: %2").arg(result.sources.size()).arg(cause);
            return false;
        }
    }
    for (const QJsonValue &name : hidden.toArray())
        result.hidden.append(name.toString());
    *file = result;
    return true;
}

QByteArray dataSourcesText(const DataSourceFile &file)
{
    QJsonArray sources;
    for (const DataSource &source : file.sources)
        sources.append(objectOf(source));
    QJsonObject root{{"sources", sources}};
    if (!file.hidden.isEmpty())
        root.insert("hidden", QJsonArray::fromStringList(file.hidden));
    return QJsonDocument(root).toJson();
}

} // namespace Workbench
