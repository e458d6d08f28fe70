// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/demostation.h>

#include <tellarix/client/demo/regionalmodel_p.h>
#include <tellarix/client/demo/seismogram_p.h>
#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/math/geo.h>

#include <QStringList>

#include <algorithm>

namespace Tellarix {
namespace Client {

namespace {

using Flaw = DemoStation::Flaw;

struct Site
{
    const char *code;
    double latitude;
    double longitude;
    double elevation;
    Flaw flaw;
};

const Site Sites[] = {
    {"ALBN", 48.5708, 9.1016, 742, Flaw::None},   {"TRUF", 47.9446, 9.2624, 655, Flaw::None},
    {"HOHN", 48.5450, 8.3844, 918, Flaw::None},   {"KESL", 48.5336, 9.8043, 563, Flaw::None},
    {"MARB", 47.6833, 8.5062, 447, Flaw::Gap},    {"ROTW", 49.0809, 8.9329, 268, Flaw::None},
    {"SINT", 47.8425, 10.2136, 690, Flaw::None},  {"VELD", 48.1803, 7.4533, 203, Flaw::Noise},
    {"GRUN", 49.0595, 10.4435, 471, Flaw::None},  {"ISNA", 46.9467, 9.2488, 1655, Flaw::None},
    {"LORB", 49.4275, 7.4991, 318, Flaw::None},   {"DREX", 48.4805, 11.5419, 486, Flaw::Overlap},
    {"WALM", 47.0399, 7.0105, 812, Flaw::None},   {"OBST", 50.2676, 9.7761, 389, Flaw::None},
    {"PFAL", 46.6298, 11.2445, 1483, Flaw::None}, {"CORV", 48.7691, 5.4026, 302, Flaw::None},
    {"ZELB", 49.2376, 12.8823, 594, Flaw::None},  {"HARD", 45.3483, 8.1661, 141, Flaw::None},
    {"NIVA", 51.3133, 6.9779, 76, Flaw::None},    {"BERG", 46.2809, 13.3768, 701, Flaw::None},
};

const Core::Time BeginOfOperation(2020, 1, 1);

/** Near stations are set to a low gain, so that the earthquake stays within 24 bits. */
double gainAt(double distanceKm)
{
    if (distanceKm < 60)
        return 1E8;
    return distanceKm < 140 ? 3E8 : 6E8;
}

DemoStation stationAt(const Site &site)
{
    const DemoOrigin origin = demonstrationOrigin();
    DemoStation station{QStringLiteral("XD"), QLatin1String(site.code), QString(), site.latitude,
                        site.longitude,       site.elevation,           0,         site.flaw};
    Math::Geo::delaziKm(origin.latitude, origin.longitude, site.latitude, site.longitude,
                        &station.distanceKm, &station.azimuth, &station.backAzimuth);
    station.gain = gainAt(station.distanceKm);
    return station;
}

DataModel::StreamPtr streamOf(const DemoStation &station, const QString &channel)
{
    DataModel::StreamPtr stream(new DataModel::Stream(channel.toStdString()));
    stream->setStart(BeginOfOperation);
    stream->setDepth(0);
    stream->setDip(channel.endsWith('Z') ? -90 : 0);
    stream->setAzimuth(channel.endsWith('E') ? 90 : 0);
    stream->setSamplingFrequency(DemoSamplingFrequency);
    stream->setGain(station.gain);
    stream->setGainFrequency(1);
    stream->setGainUnit("m/s");
    return stream;
}

DataModel::StationPtr modelOf(const DemoStation &station)
{
    DataModel::StationPtr model(new DataModel::Station(station.station.toStdString()));
    model->setStart(BeginOfOperation);
    model->setCoordinates({station.latitude, station.longitude, station.elevation});
    model->setSiteName(model->code());
    auto *location = new DataModel::SensorLocation(station.location.toStdString());
    model->add(location);
    for (const QString &channel : DemoStation::Channels())
        location->add(streamOf(station, channel).get());
    return model;
}

} // namespace

QStringList DemoStation::Channels()
{
    return {QStringLiteral("HHZ"), QStringLiteral("HHN"), QStringLiteral("HHE")};
}

DemoOrigin demonstrationOrigin()
{
    return {Core::Time(2024, 5, 17, 21, 43, 12, 400000), 48.291, 9.027, 8.4, 5.5, 12, 82, 8};
}

QVector<DemoStation> demonstrationStations()
{
    QVector<DemoStation> stations;
    for (const Site &site : Sites)
        stations.append(stationAt(site));
    std::sort(stations.begin(), stations.end(), [](const DemoStation &a, const DemoStation &b) {
        return a.distanceKm < b.distanceKm;
    });
    return stations;
}

DataModel::NetworkPtr demonstrationNetwork()
{
    const QVector<DemoStation> stations = demonstrationStations();
    DataModel::NetworkPtr network(new DataModel::Network(stations.first().network.toStdString()));
    network->setDescription("Demonstration");
    for (const DemoStation &station : stations)
        network->add(modelOf(station).get());
    return network;
}

QVector<DemoArrival> demonstrationArrivals(const DemoStation &station)
{
    const DemoOrigin origin = demonstrationOrigin();
    QVector<DemoArrival> arrivals;
    for (const RegionalArrival &arrival : regionalArrivals(station.distanceKm, origin.depthKm)) {
        arrivals.append(
            {QLatin1String(arrival.phase), origin.time + Core::TimeSpan(arrival.travelTime)});
    }
    return arrivals;
}

} // namespace Client
} // namespace Tellarix
