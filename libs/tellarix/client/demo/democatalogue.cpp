// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/demo/democatalogue.h>

#include <tellarix/client/demo/demorandom_p.h>
#include <tellarix/client/demo/demostation.h>
#include <tellarix/client/demo/demozones_p.h>
#include <tellarix/client/io/databaseaddress.h>
#include <tellarix/client/io/eventarchive.h>
#include <tellarix/core/math/geo.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace Tellarix {
namespace Client {

namespace {

using DataModel::NodalPlane;

constexpr uint64_t Seed = 20230101;
constexpr int GlobalCount = 2600;
constexpr int LocalCount = 1500;
constexpr int SwarmCount = 360;
constexpr int BlastCount = 160;
constexpr int FalseAlarmCount = 40;
constexpr double GlobalMinimum = 4.7;
constexpr double LocalMinimum = 0.8;
constexpr double LargestMagnitude = 7.7;
constexpr double SwarmLargest = 3.2;
constexpr double MechanismMinimum = 5.45; // 5.5 once rounded
constexpr double MainShockMinimum = 6.4;
constexpr double BathDifference = 1.2;
constexpr double OmoriDelayDays = 0.03;
constexpr double OmoriExponent = 1.1;
constexpr double AftershockDays = 200;
constexpr double SecondsPerDay = 86400;
constexpr double Pi = 3.14159265358979323846;

const Core::Time Begin(2023, 1, 1);
const Core::Time End(2025, 1, 1);

/** An earthquake before it becomes an event. */
struct Quake
{
    Core::Time time;
    double latitude{0};
    double longitude{0};
    double depthKm{10};
    double magnitude{0};
    std::string region;
    std::string type{"earthquake"};
    bool local{false};
    bool isMainShock{false}; /**< that of the recordings */
    std::optional<NodalPlane> plane;
};

double rounded(double value, double step)
{
    return std::round(value / step) * step;
}

/** Gutenberg and Richter's law with a b-value of 1, cut off at the largest. */
double magnitudeAbove(double minimum, double largest, DemoRandom &random)
{
    const double cut = 1 - std::pow(10, minimum - largest);
    return minimum - std::log10(1 - random.uniform(0, 1) * cut);
}

Core::Time timeBetween(Core::Time begin, Core::Time end, DemoRandom &random)
{
    return begin + Core::TimeSpan(random.uniform(0, (end - begin).length()));
}

/** Takes one of several by their rates. */
template <typename Item>
const Item &choose(const std::vector<Item> &items, DemoRandom &random)
{
    double sum = 0;
    for (const Item &item : items)
        sum += item.rate;
    double rest = random.uniform(0, sum);
    for (const Item &item : items) {
        rest -= item.rate;
        if (rest < 0)
            return item;
    }
    return items.back();
}

void move(Quake &quake, double distanceKm, double azimuth)
{
    Math::Geo::destination(distanceKm, azimuth, quake.latitude, quake.longitude, &quake.latitude,
                           &quake.longitude);
}

/** A point of the path, and the direction there. */
double placeOnPath(Quake &quake, const std::vector<DemoPoint> &path, DemoRandom &random)
{
    const auto last = static_cast<double>(path.size() - 1);
    const double position = std::min(random.uniform(0, last), last - 1E-9);
    const auto i = static_cast<size_t>(position);
    const double share = position - static_cast<double>(i);
    const DemoPoint &from = path[i];
    const DemoPoint &to = path[i + 1];
    quake.latitude = from.latitude + share * (to.latitude - from.latitude);
    quake.longitude = from.longitude + share * (to.longitude - from.longitude);
    double distance = 0;
    double azimuth = 0;
    Math::Geo::delaziKm(from.latitude, from.longitude, to.latitude, to.longitude, &distance,
                        &azimuth);
    return azimuth;
}

/** Two of three in the shallow part, fewer and fewer below. */
double subductionDepth(const DemoZone &zone, DemoRandom &random)
{
    if (random.chance(0.66))
        return random.uniform(8, std::min(60.0, zone.maximumDepthKm));
    const double share = random.uniform(0, 1) * random.uniform(0, 1);
    return 60 + share * std::max(0.0, zone.maximumDepthKm - 60);
}

void placeInZone(Quake &quake, const DemoZone &zone, double azimuth, DemoRandom &random)
{
    double across = random.normal(0, 40);
    switch (zone.kind) {
    case DemoZone::Subduction:
        quake.depthKm = subductionDepth(zone, random);
        across =
            zone.dipSide * quake.depthKm / std::tan(zone.dip * Pi / 180) + random.normal(0, 15);
        break;
    case DemoZone::Slab:
        quake.depthKm = random.uniform(zone.minimumDepthKm, zone.maximumDepthKm);
        break;
    case DemoZone::Ridge:
        quake.depthKm = 10;
        across = random.normal(0, 14);
        break;
    case DemoZone::Transform:
        quake.depthKm = random.uniform(4, 18);
        across = random.normal(0, 18);
        break;
    case DemoZone::Collision:
        quake.depthKm = random.uniform(5, 45);
        break;
    }
    move(quake, std::abs(across), azimuth + (across < 0 ? -90 : 90));
}

double angle(double mean, double deviation, DemoRandom &random)
{
    const double turned = std::fmod(random.normal(mean, deviation) + 720, 360);
    return std::round(turned);
}

NodalPlane planeOf(double strike, double dip, double rake, DemoRandom &random)
{
    const double signedRake = angle(rake, 14, random);
    return NodalPlane(angle(strike, 10, random),
                      std::clamp(std::round(random.normal(dip, 6)), 5.0, 90.0),
                      signedRake > 180 ? signedRake - 360 : signedRake);
}

/** What the boundary makes likely: thrusts above subducted plates, normal faults on ridges. */
NodalPlane planeInZone(const Quake &quake, const DemoZone &zone, double azimuth, DemoRandom &random)
{
    const double dipDirection = zone.dipSide < 0 ? azimuth + 180 : azimuth;
    switch (zone.kind) {
    case DemoZone::Subduction:
        return quake.depthKm < 60
                   ? planeOf(dipDirection, 24, 90, random)
                   : planeOf(dipDirection, 50, random.chance(0.5) ? -90 : 90, random);
    case DemoZone::Slab:
        return planeOf(azimuth, 60, -90, random);
    case DemoZone::Ridge:
        return random.chance(0.5) ? planeOf(azimuth, 45, -90, random)
                                  : planeOf(azimuth + 90, 84, 0, random);
    case DemoZone::Transform:
        return planeOf(azimuth, 82, random.chance(0.5) ? 180 : 0, random);
    case DemoZone::Collision:
        break;
    }
    return planeOf(azimuth, 35, 90, random);
}

/**
 * Aftershocks after Omori (rate in time), Bath (the largest) and Gutenberg and Richter (the
 * others), along a rupture of the length that the magnitude asks for.
 */
void addAftershocks(const Quake &main, double minimum, double strike, std::vector<Quake> &quakes,
                    DemoRandom &random)
{
    const double largest = main.magnitude - BathDifference;
    const auto count = static_cast<int>(std::pow(10, largest - minimum));
    const double lengthKm = std::pow(10, 0.5 * main.magnitude - 1.85);
    const double exponent = 1 - OmoriExponent;
    const double early = std::pow(OmoriDelayDays, exponent);
    const double late = std::pow(OmoriDelayDays + AftershockDays, exponent);
    for (int i = 0; i < count; ++i) {
        Quake quake = main;
        quake.isMainShock = false;
        quake.plane.reset();
        const double days =
            std::pow(early + random.uniform(0, 1) * (late - early), 1 / exponent) - OmoriDelayDays;
        quake.time = main.time + Core::TimeSpan(days * SecondsPerDay + 20);
        if (quake.time >= End)
            continue;
        move(quake, std::abs(random.normal(0, lengthKm / 2)),
             strike + (random.chance(0.5) ? 0 : 180));
        move(quake, std::abs(random.normal(0, lengthKm / 8)), strike + 90);
        quake.depthKm = std::max(1.0, random.normal(main.depthKm, 1 + lengthKm / 12));
        quake.magnitude = magnitudeAbove(minimum, largest, random);
        if (main.plane && quake.magnitude >= MechanismMinimum)
            quake.plane = planeOf(main.plane->strike().value(), main.plane->dip().value(),
                                  main.plane->rake().value(), random);
        quakes.push_back(quake);
    }
}

void addGlobal(std::vector<Quake> &quakes, DemoRandom &random)
{
    for (int i = 0; i < GlobalCount; ++i) {
        const DemoZone &zone = choose(demoZones(), random);
        Quake quake;
        quake.time = timeBetween(Begin, End, random);
        quake.region = zone.name;
        quake.magnitude = magnitudeAbove(GlobalMinimum, LargestMagnitude, random);
        const double azimuth = placeOnPath(quake, zone.path, random);
        placeInZone(quake, zone, azimuth, random);
        if (quake.magnitude >= MechanismMinimum)
            quake.plane = planeInZone(quake, zone, azimuth, random);
        quakes.push_back(quake);
        if (quake.magnitude >= MainShockMinimum)
            addAftershocks(quake, GlobalMinimum - 0.7, azimuth, quakes, random);
    }
}

Quake localQuake(const DemoDistrict &district, DemoRandom &random)
{
    Quake quake;
    quake.local = true;
    quake.region = district.name;
    quake.latitude = district.latitude;
    quake.longitude = district.longitude;
    move(quake, std::abs(random.normal(0, district.extentKm)), random.uniform(0, 360));
    quake.depthKm = random.uniform(2, 16);
    quake.time = timeBetween(Begin, End, random);
    quake.magnitude = magnitudeAbove(LocalMinimum, 4.4, random);
    return quake;
}

void addLocal(std::vector<Quake> &quakes, DemoRandom &random)
{
    for (int i = 0; i < LocalCount; ++i)
        quakes.push_back(localQuake(choose(demoDistricts(), random), random));
}

/** Three weeks of small ones at one place, more and more and then fewer. */
void addSwarm(std::vector<Quake> &quakes, DemoRandom &random)
{
    const DemoDistrict place{"Vogtland, Germany", 50.24, 12.45, 2, 1};
    const Core::Time peak(2023, 9, 14, 6);
    for (int i = 0; i < SwarmCount; ++i) {
        Quake quake = localQuake(place, random);
        quake.time = peak + Core::TimeSpan(random.normal(0, 6 * SecondsPerDay));
        quake.depthKm = random.normal(9, 0.8);
        quake.magnitude = magnitudeAbove(0.5, SwarmLargest, random);
        quakes.push_back(quake);
    }
}

/** In working hours, near the surface and always at the same few places. */
void addBlasts(std::vector<Quake> &quakes, DemoRandom &random)
{
    const std::vector<DemoDistrict> quarries{{"Swabian Jura, Germany", 48.47, 9.72, 0.6, 2},
                                             {"Black Forest, Germany", 48.33, 8.02, 0.5, 1},
                                             {"Franconian Jura, Germany", 48.93, 11.05, 0.7, 2}};
    const int64_t days = (End - Begin).seconds() / static_cast<int64_t>(SecondsPerDay);
    for (int i = 0; i < BlastCount; ++i) {
        Quake quake = localQuake(choose(quarries, random), random);
        const double day = std::floor(random.uniform(0, static_cast<double>(days)));
        quake.time = Begin + Core::TimeSpan(day * SecondsPerDay +
                                            random.uniform(9, 15.5) * SecondsPerDay / 24);
        quake.depthKm = 0;
        quake.magnitude = random.uniform(1, 2.2);
        quake.type = "quarry blast";
        quakes.push_back(quake);
    }
}

void addFalseAlarms(std::vector<Quake> &quakes, DemoRandom &random)
{
    for (int i = 0; i < FalseAlarmCount; ++i) {
        Quake quake = localQuake(choose(demoDistricts(), random), random);
        quake.depthKm = 10;
        quake.type = "not existing";
        quakes.push_back(quake);
    }
}

void addMainShock(std::vector<Quake> &quakes, DemoRandom &random)
{
    const DemoOrigin origin = demonstrationOrigin();
    Quake quake;
    quake.time = origin.time;
    quake.latitude = origin.latitude;
    quake.longitude = origin.longitude;
    quake.depthKm = origin.depthKm;
    quake.magnitude = origin.magnitude;
    quake.region = "Swabian Jura, Germany";
    quake.local = true;
    quake.isMainShock = true;
    quake.plane = NodalPlane(origin.strike, origin.dip, origin.rake);
    quakes.push_back(quake);
    addAftershocks(quake, 1.3, origin.strike, quakes, random);
}

std::string idOf(const Quake &quake, size_t number)
{
    if (quake.isMainShock)
        return demonstrationEventID();
    char serial[16];
    std::snprintf(serial, sizeof(serial), "%05u", static_cast<unsigned>(number + 1));
    return "demo/" + quake.time.toString("%Y%m%d") + '/' + serial;
}

const char *magnitudeType(const Quake &quake)
{
    if (quake.isMainShock || (!quake.local && quake.magnitude >= MechanismMinimum))
        return "Mw";
    return quake.local ? "ML" : "mb";
}

DataModel::OriginPtr originOf(const Quake &quake, const std::string &id, DemoRandom &random)
{
    const DataModel::OriginPtr origin(new DataModel::Origin);
    origin->publicID = id + "/origin";
    // The main shock is to the digit what its recordings were made with.
    const double step = quake.isMainShock ? 1E-6 : 1E-4;
    DataModel::Uncertainty horizontal;
    horizontal.symmetric = rounded(random.uniform(0.5, 4) * (quake.local ? 0.4 : 3), 0.1);
    origin->time = Core::Time::FromUSecs(quake.time.usecs() / 10000 * 10000);
    origin->latitude = {rounded(quake.latitude, step), horizontal};
    origin->longitude = {rounded(quake.longitude, step), horizontal};
    origin->depth = DataModel::RealQuantity(rounded(quake.depthKm, 0.1));
    const double size = quake.magnitude - (quake.local ? LocalMinimum : GlobalMinimum);
    origin->quality.usedPhaseCount =
        static_cast<int>((quake.local ? 9 : 28) + std::max(0.0, size) * random.uniform(8, 40));
    origin->quality.usedStationCount = *origin->quality.usedPhaseCount * 2 / 3;
    origin->quality.azimuthalGap = std::round(random.uniform(18, quake.local ? 190 : 110));
    origin->quality.standardError = rounded(random.uniform(0.1, quake.local ? 0.5 : 1.3), 0.01);
    const bool manual = quake.isMainShock || size > 1.5 || random.chance(0.35);
    origin->evaluationMode = manual ? "manual" : "automatic";
    if (quake.type != "not existing")
        origin->evaluationStatus = manual ? (size > 2 ? "final" : "reviewed") : "preliminary";
    origin->creationInfo.agencyID = "DEMO";
    origin->creationInfo.creationTime = quake.time + Core::TimeSpan(manual ? 5400 : 240);
    return origin;
}

DataModel::EventPtr eventOf(const Quake &quake, size_t number, DemoRandom &random)
{
    const DataModel::EventPtr event(new DataModel::Event);
    event->publicID = idOf(quake, number);
    event->type = quake.type;
    event->descriptions.push_back({quake.region, "region name"});
    event->creationInfo.agencyID = "DEMO";
    event->origins.push_back(originOf(quake, event->publicID, random));
    event->preferredOriginID = event->origins.front()->publicID;

    const DataModel::MagnitudePtr magnitude(new DataModel::Magnitude);
    magnitude->publicID = event->publicID + "/magnitude";
    magnitude->magnitude = rounded(quake.magnitude, 0.1);
    magnitude->type = magnitudeType(quake);
    magnitude->originID = event->preferredOriginID;
    magnitude->stationCount = *event->origins.front()->quality.usedStationCount / 2 + 1;
    magnitude->creationInfo.agencyID = "DEMO";
    event->magnitudes.push_back(magnitude);
    event->preferredMagnitudeID = magnitude->publicID;

    if (quake.plane) {
        const DataModel::FocalMechanismPtr mechanism(new DataModel::FocalMechanism);
        mechanism->publicID = event->publicID + "/mechanism";
        mechanism->nodalPlane1 = quake.plane;
        mechanism->nodalPlane2 = auxiliaryPlane(*quake.plane);
        mechanism->triggeringOriginID = event->preferredOriginID;
        mechanism->creationInfo.agencyID = "DEMO";
        event->focalMechanisms.push_back(mechanism);
        event->preferredFocalMechanismID = mechanism->publicID;
    }
    return event;
}

/** Of what is made here; it goes up when that changes. Stored with the events. */
constexpr int ContentVersion = 1;
constexpr int ContentCount = 7491;

bool fillDatabase(const QString &file, QString *error)
{
    const IO::DatabaseInterfacePtr database =
        IO::DatabaseInterface::Open(IO::DatabaseAddress::OfFile(file).toString(), error);
    if (!database || !IO::EventArchive::createSchema(*database, error))
        return false;

    IO::EventArchive archive(database);
    bool ok = database->beginTransaction();
    for (const DataModel::EventPtr &event : demonstrationCatalogue())
        ok = ok && archive.write(*event, error);
    // Nobody writes to it any more: without a log it is one file, which opens in any folder.
    if (ok && database->commit() &&
        database->execute("PRAGMA user_version = " + std::to_string(ContentVersion)) &&
        database->execute("PRAGMA journal_mode = DELETE"))
        return true;
    if (error && error->isEmpty())
        *error = database->lastError();
    database->rollback();
    return false;
}

/** Whether a file is what fillDatabase() makes now. */
bool isWhole(const QString &file)
{
    IO::DatabaseAddress address = IO::DatabaseAddress::OfFile(file);
    address.isReadOnly = true;
    const IO::DatabaseInterfacePtr database = IO::DatabaseInterface::Open(address.toString());
    int version = 0;
    const bool isCurrent = database && IO::EventArchive::checkSchema(*database) &&
                           database->beginQuery("PRAGMA user_version") && database->fetchRow() &&
                           database->readField(0, version) && version == ContentVersion;
    return isCurrent && IO::EventArchive(database).count({}) == ContentCount;
}

/** Puts a file in the place of another one; the cause if it can't be. */
QString replaceFile(const QString &made, const QString &file)
{
    // What is left of a log would be taken for changes to the new file.
    QFile::remove(file + "-wal");
    QFile::remove(file + "-shm");
    std::error_code problem;
    std::filesystem::rename(QFile::encodeName(made).toStdString(),
                            QFile::encodeName(file).toStdString(), problem);
    return problem ? QString::fromStdString(problem.message()) : QString();
}

} // namespace

bool writeDemonstrationCatalogue(const QString &file, QString *error)
{
    const QFileInfo target(file);
    if (target.exists() && isWhole(file))
        return true;

    // Beside the target, so that the finished file is put into place at once.
    const QTemporaryDir folder(target.dir().filePath(QStringLiteral("catalogue-XXXXXX")));
    const QString made = folder.filePath(QStringLiteral("events.sqlite"));
    QString reason = folder.errorString();
    if (folder.isValid() && fillDatabase(made, &reason)) {
        reason = replaceFile(made, file);
        if (reason.isEmpty())
            return true;
    }
    if (error)
        *error = QStringLiteral("%1: %2").arg(file, reason);
    return false;
}

std::string demonstrationEventID()
{
    return "demo/20240517/main";
}

std::vector<DataModel::EventPtr> demonstrationCatalogue()
{
    DemoRandom random(Seed);
    std::vector<Quake> quakes;
    addGlobal(quakes, random);
    addLocal(quakes, random);
    addSwarm(quakes, random);
    addBlasts(quakes, random);
    addFalseAlarms(quakes, random);
    addMainShock(quakes, random);
    std::stable_sort(quakes.begin(), quakes.end(),
                     [](const Quake &a, const Quake &b) { return a.time < b.time; });

    std::vector<DataModel::EventPtr> events;
    events.reserve(quakes.size());
    for (size_t i = 0; i < quakes.size(); ++i)
        events.push_back(eventOf(quakes[i], i, random));
    return events;
}

} // namespace Client
} // namespace Tellarix
