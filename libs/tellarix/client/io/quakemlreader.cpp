// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/quakemlreader_p.h>

#include <tellarix/client/io/eventcompletion_p.h>
#include <tellarix/client/io/metres_p.h>
#include <tellarix/core/strings.h>

#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

constexpr auto RootNamespace = "http://quakeml.org/xmlns/quakeml/";
constexpr auto EventNamespace = "http://quakeml.org/xmlns/bed";

bool isOnGlobe(const DataModel::Origin &origin)
{
    return std::abs(origin.latitude.value()) <= 90 && std::abs(origin.longitude.value()) <= 360;
}

} // namespace

QuakeMLReader::QuakeMLReader(QIODevice &device, const QString &name,
                             const EventReadHandler &handler)
    : BoundedXml(device, name, handler.warn, handler.progress), _handler(handler)
{}

bool QuakeMLReader::read(QString *error)
{
    readRoot();
    return result(error);
}

bool QuakeMLReader::isOurs() const
{
    const QStringRef space = xml().namespaceUri();
    return space.isEmpty() || space.startsWith(QLatin1String(EventNamespace));
}

void QuakeMLReader::readRoot()
{
    if (!enterRoot())
        return;
    const QString space = xml().namespaceUri().toString();
    if (xml().name() != QLatin1String("quakeml") || !space.startsWith(RootNamespace))
        return rememberFault("no QuakeML");
    if (space != RootNamespace + QString("1.2"))
        warn(QString("version %1 is read as if it were 1.2")
                 .arg(space.mid(int(qstrlen(RootNamespace)))));

    forEachChild([this](const QStringRef &name) {
        if (name == QLatin1String("eventParameters"))
            readEventParameters();
        else
            skip();
    });
    leaveRoot();
}

void QuakeMLReader::readEventParameters()
{
    forEachChild([this](const QStringRef &name) {
        if (name == QLatin1String("event"))
            readEvent();
        else
            skip();
    });
}

std::string QuakeMLReader::publicIDAttribute() const
{
    return xml().attributes().value("publicID").trimmed().toString().toStdString();
}

void QuakeMLReader::readEvent()
{
    const DataModel::EventPtr event(new DataModel::Event);
    event->publicID = publicIDAttribute();
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("origin")) {
            if (const DataModel::OriginPtr origin = readOrigin())
                event->origins.push_back(origin);
        } else if (name == QLatin1String("magnitude")) {
            if (const DataModel::MagnitudePtr magnitude = readMagnitude())
                event->magnitudes.push_back(magnitude);
        } else if (name == QLatin1String("focalMechanism"))
            event->focalMechanisms.push_back(readFocalMechanism());
        else if (name == QLatin1String("description"))
            event->descriptions.push_back(readDescription());
        else if (name == QLatin1String("preferredOriginID"))
            event->preferredOriginID = readText();
        else if (name == QLatin1String("preferredMagnitudeID"))
            event->preferredMagnitudeID = readText();
        else if (name == QLatin1String("preferredFocalMechanismID"))
            event->preferredFocalMechanismID = readText();
        else if (name == QLatin1String("type"))
            event->type = readText();
        else if (name == QLatin1String("typeCertainty"))
            event->typeCertainty = readText();
        else if (name == QLatin1String("creationInfo"))
            event->creationInfo = readCreationInfo();
        else
            skip();
    });
    if (isGoing())
        handOver(event);
}

void QuakeMLReader::handOver(const DataModel::EventPtr &event)
{
    if (!completeEvent(*event))
        warn(QString("an event without publicID is called \"%1\"").arg(event->publicID.c_str()));
    if (_handler.take(event))
        tellProgress();
    else
        end();
}

DataModel::EventDescription QuakeMLReader::readDescription()
{
    DataModel::EventDescription description;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("text"))
            description.text = readText();
        else if (name == QLatin1String("type"))
            description.type = readText();
        else
            skip();
    });
    return description;
}

DataModel::OriginPtr QuakeMLReader::readOrigin()
{
    const DataModel::OriginPtr origin(new DataModel::Origin);
    origin->publicID = publicIDAttribute();
    std::optional<DataModel::TimeQuantity> time;
    std::optional<DataModel::RealQuantity> latitude, longitude;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("time"))
            time = readTimeQuantity();
        else if (name == QLatin1String("latitude"))
            latitude = readRealQuantity();
        else if (name == QLatin1String("longitude"))
            longitude = readRealQuantity();
        else if (name == QLatin1String("depth")) {
            origin->depth = readRealQuantity(Length);
        } else if (name == QLatin1String("quality"))
            readQuality(origin->quality);
        else if (name == QLatin1String("evaluationMode"))
            origin->evaluationMode = readText();
        else if (name == QLatin1String("evaluationStatus"))
            origin->evaluationStatus = readText();
        else if (name == QLatin1String("methodID"))
            origin->methodID = readText();
        else if (name == QLatin1String("earthModelID"))
            origin->earthModelID = readText();
        else if (name == QLatin1String("creationInfo"))
            origin->creationInfo = readCreationInfo();
        else
            skip();
    });
    if (time && latitude && longitude) {
        origin->time = *time;
        origin->latitude = *latitude;
        origin->longitude = *longitude;
        if (isOnGlobe(*origin))
            return origin;
    }
    if (isGoing())
        warn("an origin without a sound time, latitude and longitude is left out");
    return nullptr;
}

void QuakeMLReader::readQuality(DataModel::OriginQuality &quality)
{
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("usedPhaseCount"))
            quality.usedPhaseCount = readCount();
        else if (name == QLatin1String("associatedPhaseCount"))
            quality.associatedPhaseCount = readCount();
        else if (name == QLatin1String("usedStationCount"))
            quality.usedStationCount = readCount();
        else if (name == QLatin1String("standardError"))
            quality.standardError = readNumber();
        else if (name == QLatin1String("azimuthalGap"))
            quality.azimuthalGap = readNumber();
        else if (name == QLatin1String("minimumDistance"))
            quality.minimumDistance = readNumber();
        else if (name == QLatin1String("maximumDistance"))
            quality.maximumDistance = readNumber();
        else
            skip();
    });
}

DataModel::MagnitudePtr QuakeMLReader::readMagnitude()
{
    const DataModel::MagnitudePtr magnitude(new DataModel::Magnitude);
    magnitude->publicID = publicIDAttribute();
    std::optional<DataModel::RealQuantity> value;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("mag"))
            value = readRealQuantity();
        else if (name == QLatin1String("type"))
            magnitude->type = readText();
        else if (name == QLatin1String("originID"))
            magnitude->originID = readText();
        else if (name == QLatin1String("methodID"))
            magnitude->methodID = readText();
        else if (name == QLatin1String("stationCount"))
            magnitude->stationCount = readCount();
        else if (name == QLatin1String("azimuthalGap"))
            magnitude->azimuthalGap = readNumber();
        else if (name == QLatin1String("evaluationMode"))
            magnitude->evaluationMode = readText();
        else if (name == QLatin1String("evaluationStatus"))
            magnitude->evaluationStatus = readText();
        else if (name == QLatin1String("creationInfo"))
            magnitude->creationInfo = readCreationInfo();
        else
            skip();
    });
    if (value) {
        magnitude->magnitude = *value;
        return magnitude;
    }
    if (isGoing())
        warn("a magnitude without a value is left out");
    return nullptr;
}

DataModel::FocalMechanismPtr QuakeMLReader::readFocalMechanism()
{
    const DataModel::FocalMechanismPtr mechanism(new DataModel::FocalMechanism);
    mechanism->publicID = publicIDAttribute();
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("nodalPlanes"))
            readNodalPlanes(*mechanism);
        else if (name == QLatin1String("triggeringOriginID"))
            mechanism->triggeringOriginID = readText();
        else if (name == QLatin1String("azimuthalGap"))
            mechanism->azimuthalGap = readNumber();
        else if (name == QLatin1String("stationPolarityCount"))
            mechanism->stationPolarityCount = readCount();
        else if (name == QLatin1String("misfit"))
            mechanism->misfit = readNumber();
        else if (name == QLatin1String("evaluationMode"))
            mechanism->evaluationMode = readText();
        else if (name == QLatin1String("evaluationStatus"))
            mechanism->evaluationStatus = readText();
        else if (name == QLatin1String("creationInfo"))
            mechanism->creationInfo = readCreationInfo();
        else
            skip();
    });
    return mechanism;
}

void QuakeMLReader::readNodalPlanes(DataModel::FocalMechanism &mechanism)
{
    int preferredPlane = 0;
    if (Core::fromString(preferredPlane,
                         xml().attributes().value("preferredPlane").toString().toStdString()) &&
        (preferredPlane == 1 || preferredPlane == 2))
        mechanism.preferredPlane = preferredPlane;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("nodalPlane1"))
            mechanism.nodalPlane1 = readNodalPlane();
        else if (name == QLatin1String("nodalPlane2"))
            mechanism.nodalPlane2 = readNodalPlane();
        else
            skip();
    });
}

std::optional<DataModel::NodalPlane> QuakeMLReader::readNodalPlane()
{
    std::optional<DataModel::RealQuantity> strike, dip, rake;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("strike"))
            strike = readRealQuantity();
        else if (name == QLatin1String("dip"))
            dip = readRealQuantity();
        else if (name == QLatin1String("rake"))
            rake = readRealQuantity();
        else
            skip();
    });
    if (!strike || !dip || !rake) {
        if (isGoing())
            warn("a nodal plane without strike, dip and rake is left out");
        return std::nullopt;
    }
    DataModel::NodalPlane plane;
    plane.setStrike(*strike);
    plane.setDip(*dip);
    plane.setRake(*rake);
    return plane;
}

DataModel::CreationInfo QuakeMLReader::readCreationInfo()
{
    DataModel::CreationInfo info;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("agencyID"))
            info.agencyID = readText();
        else if (name == QLatin1String("author"))
            info.author = readText();
        else if (name == QLatin1String("creationTime"))
            info.creationTime = readTime();
        else if (name == QLatin1String("version"))
            info.version = readText();
        else
            skip();
    });
    return info;
}

bool QuakeMLReader::readUncertainty(const QStringRef &name, Kind kind,
                                    DataModel::Uncertainty &uncertainty)
{
    if (name == QLatin1String("uncertainty"))
        uncertainty.symmetric = readNumber(kind);
    else if (name == QLatin1String("lowerUncertainty"))
        uncertainty.lower = readNumber(kind);
    else if (name == QLatin1String("upperUncertainty"))
        uncertainty.upper = readNumber(kind);
    else if (name == QLatin1String("confidenceLevel"))
        uncertainty.confidenceLevel = readNumber();
    else
        return false;
    return true;
}

std::optional<DataModel::RealQuantity> QuakeMLReader::readRealQuantity(Kind kind)
{
    std::optional<double> value;
    DataModel::Uncertainty uncertainty;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("value"))
            value = readNumber(kind);
        else if (!readUncertainty(name, kind, uncertainty))
            skip();
    });
    return value ? std::optional<DataModel::RealQuantity>({*value, uncertainty}) : std::nullopt;
}

std::optional<DataModel::TimeQuantity> QuakeMLReader::readTimeQuantity()
{
    Core::Time value;
    DataModel::Uncertainty uncertainty;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("value"))
            value = readTime();
        else if (!readUncertainty(name, Plain, uncertainty))
            skip();
    });
    return value.valid() ? std::optional<DataModel::TimeQuantity>({value, uncertainty})
                         : std::nullopt;
}

std::optional<double> QuakeMLReader::readNumber(Kind kind)
{
    if (kind == Plain)
        return BoundedXml::readNumber();
    const std::string text = readText();
    double value = 0;
    if (kmFromMetres(value, text))
        return value;
    if (!xml().hasError())
        warn(QString("\"%1\" is no number").arg(text.c_str()));
    return std::nullopt;
}

std::optional<int> QuakeMLReader::readCount()
{
    const std::string text = readText();
    int value = 0;
    if (Core::fromString(value, text))
        return value;
    if (!xml().hasError())
        warn(QString("\"%1\" is no whole number").arg(text.c_str()));
    return std::nullopt;
}

} // namespace IO
} // namespace Tellarix
