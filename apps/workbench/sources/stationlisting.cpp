// SPDX-License-Identifier: LGPL-3.0-or-later

#include "stationlisting.h"

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>

#include <QCryptographicHash>
#include <QDataStream>

#include <algorithm>
#include <map>
#include <tuple>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr quint32 FormNumber = 0x54534c31; // another one for each change of the form
constexpr int HashSize = 20;

void merge(ListedChannel &channel, const ListedChannel &other)
{
    if (!(channel.rate > 0))
        channel.rate = other.rate;
    channel.isLive = channel.isLive || other.isLive;
    channel.isArchived = channel.isArchived || other.isArchived;
}

/** Sorts by ids, and makes one of those that share theirs. */
template <typename T, typename Merge>
void unite(std::vector<T> &all, const Merge &mergeTwo)
{
    const auto key = [](const T &one) { return one.id(); };
    std::stable_sort(all.begin(), all.end(),
                     [&](const T &a, const T &b) { return key(a) < key(b); });
    std::vector<T> united;
    for (T &one : all) {
        if (united.empty() || key(united.back()) != key(one))
            united.push_back(std::move(one));
        else
            mergeTwo(united.back(), one);
    }
    all = std::move(united);
}

void merge(ListedStation &station, const ListedStation &other)
{
    if (station.site.isEmpty())
        station.site = other.site;
    if (!station.hasPlace()) {
        station.latitude = other.latitude;
        station.longitude = other.longitude;
    }
    station.channels.insert(station.channels.end(), other.channels.begin(), other.channels.end());
}

StationListing withUniteStations(std::vector<ListedStation> stations)
{
    StationListing listing;
    listing.stations = std::move(stations);
    const auto mergeStations = [](auto &a, const auto &b) { merge(a, b); };
    unite(listing.stations, mergeStations);
    for (ListedStation &station : listing.stations)
        unite(station.channels, mergeStations);
    return listing;
}

ListedStation listed(const DataModel::Network &network, const DataModel::Station &station)
{
    ListedStation result;
    result.network = network.code();
    result.code = station.code();
    if (station.siteName() != station.code())
        result.site = QString::fromStdString(station.siteName());
    result.latitude = station.latitude();
    result.longitude = station.longitude();
    for (int i = 0; i < station.sensorLocationCount(); ++i) {
        const DataModel::SensorLocation &location = *station.sensorLocation(i);
        for (int k = 0; k < location.streamCount(); ++k) {
            const DataModel::Stream &stream = *location.stream(k);
            result.channels.push_back(
                {location.code(), stream.code(), stream.samplingFrequency(), false, true});
        }
    }
    return result;
}

void write(QDataStream &stream, const std::string &text)
{
    stream << QByteArray::fromRawData(text.data(), static_cast<int>(text.size()));
}

std::string readText(QDataStream &stream)
{
    QByteArray text;
    stream >> text;
    return text.toStdString();
}

void write(QDataStream &stream, Core::Time time)
{
    stream << time.valid() << static_cast<qint64>(time.usecs());
}

Core::Time readTime(QDataStream &stream)
{
    bool isValid = false;
    qint64 usecs = 0;
    stream >> isValid >> usecs;
    return isValid ? Core::Time::FromUSecs(usecs) : Core::Time();
}

void write(QDataStream &stream, const ListedStation &station)
{
    write(stream, station.network);
    write(stream, station.code);
    stream << station.site << station.latitude << station.longitude
           << static_cast<quint32>(station.channels.size());
    for (const ListedChannel &channel : station.channels) {
        write(stream, channel.location);
        write(stream, channel.code);
        stream << channel.rate << channel.isLive << channel.isArchived;
    }
}

ListedStation readStation(QDataStream &stream)
{
    ListedStation station;
    station.network = readText(stream);
    station.code = readText(stream);
    quint32 count = 0;
    stream >> station.site >> station.latitude >> station.longitude >> count;
    while (count-- > 0 && stream.status() == QDataStream::Ok) {
        ListedChannel channel;
        channel.location = readText(stream);
        channel.code = readText(stream);
        stream >> channel.rate >> channel.isLive >> channel.isArchived;
        station.channels.push_back(channel);
    }
    return station;
}

} // namespace

StationListing listingOf(const std::vector<IO::SeedLinkStation> &stations)
{
    std::vector<ListedStation> all;
    for (const IO::SeedLinkStation &entry : stations) {
        ListedStation station;
        station.network = entry.network;
        station.code = entry.code;
        station.site = QString::fromStdString(entry.name);
        for (const IO::SeedLinkStreamEntry &stream : entry.streams) {
            if (stream.type.empty() || stream.type == "D")
                station.channels.push_back({stream.location, stream.channel, 0, true, false});
        }
        if (entry.streams.empty())
            station.channels.push_back({"*", "*", 0, true, false});
        all.push_back(station);
    }
    return withUniteStations(std::move(all));
}

StationListing listingOf(const std::vector<DataModel::NetworkPtr> &networks)
{
    std::vector<ListedStation> all;
    for (const DataModel::NetworkPtr &network : networks) {
        for (int i = 0; i < network->stationCount(); ++i)
            all.push_back(listed(*network, *network->station(i)));
    }
    return withUniteStations(std::move(all));
}

StationListing joinedListing(const StationListing &a, const StationListing &b)
{
    std::vector<ListedStation> all = a.stations;
    all.insert(all.end(), b.stations.begin(), b.stations.end());
    StationListing joined = withUniteStations(std::move(all));
    joined.window = a.window;
    joined.time = a.time;
    return joined;
}

std::vector<DataModel::NetworkPtr> networksOf(const std::vector<const ListedStation *> &stations)
{
    std::map<std::string, DataModel::NetworkPtr> networks;
    for (const ListedStation *entry : stations) {
        if (!entry->hasPlace())
            continue;
        DataModel::NetworkPtr &network = networks[entry->network];
        if (!network)
            network = new DataModel::Network(entry->network);
        const DataModel::StationPtr station(new DataModel::Station(entry->code));
        station->setSiteName(entry->site.toStdString());
        station->setLatitude(entry->latitude);
        station->setLongitude(entry->longitude);
        network->add(station.get());
    }
    std::vector<DataModel::NetworkPtr> result;
    for (const auto &[code, network] : networks)
        result.push_back(network);
    return result;
}

QByteArray listingBytes(const StationListing &listing)
{
    QByteArray content;
    QDataStream stream(&content, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    stream << FormNumber;
    write(stream, listing.time);
    write(stream, listing.window.startTime());
    write(stream, listing.window.endTime());
    stream << static_cast<quint32>(listing.stations.size());
    for (const ListedStation &station : listing.stations)
        write(stream, station);
    const QByteArray packed = qCompress(content);
    return QCryptographicHash::hash(packed, QCryptographicHash::Sha1) + packed;
}

bool readListing(const QByteArray &bytes, StationListing *listing)
{
    const QByteArray packed = bytes.mid(HashSize);
    if (QCryptographicHash::hash(packed, QCryptographicHash::Sha1) != bytes.left(HashSize))
        return false;
    const QByteArray content = qUncompress(packed);
    QDataStream stream(content);
    stream.setVersion(QDataStream::Qt_5_15);
    quint32 form = 0;
    stream >> form;
    if (form != FormNumber)
        return false;
    StationListing result;
    result.time = readTime(stream);
    const Core::Time start = readTime(stream);
    result.window = {start, readTime(stream)};
    quint32 count = 0;
    stream >> count;
    while (count-- > 0 && stream.status() == QDataStream::Ok)
        result.stations.push_back(readStation(stream));
    if (stream.status() != QDataStream::Ok)
        return false;
    *listing = std::move(result);
    return true;
}

} // namespace Workbench
