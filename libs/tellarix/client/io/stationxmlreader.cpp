// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/stationxmlreader_p.h>

#include <tellarix/client/io/sensorlocationindex_p.h>
#include <tellarix/core/datamodel/sensorlocation.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Tellarix {
namespace IO {

namespace {

constexpr auto RootName = "FDSNStationXML";
constexpr auto Namespace = "http://www.fdsn.org/xml/station/1";
const auto KnownVersions = {"1", "1.0", "1.1", "1.2"};
constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
/** How far a rate with some digits may lie from the fraction that it stands for. */
constexpr double RateTolerance = 1E-4;

/** Whether a gain ends in counts: that of a sensor alone ends in volts. */
bool isCounts(const std::string &unit)
{
    const QString name = QString::fromStdString(unit).toLower();
    return name.isEmpty() || name.contains("count") || name == "ct" || name == "cts";
}

} // namespace

StationXMLReader::StationXMLReader(QIODevice &device, const QString &name,
                                   const InventoryReadHandler &handler)
    : BoundedXml(device, name, handler.warn, handler.progress)
{}

bool StationXMLReader::read(std::vector<DataModel::NetworkPtr> &networks, QString *error)
{
    readRoot(networks);
    return result(error);
}

bool StationXMLReader::isOurs() const
{
    return xml().namespaceUri() == _namespace;
}

void StationXMLReader::readRoot(std::vector<DataModel::NetworkPtr> &networks)
{
    if (!enterRoot())
        return;
    _namespace = xml().namespaceUri().toString();
    if (xml().name() != QLatin1String(RootName) ||
        (!_namespace.isEmpty() && _namespace != QLatin1String(Namespace)))
        return rememberFault("no StationXML");
    const std::string version = attribute("schemaVersion");
    if (std::find(KnownVersions.begin(), KnownVersions.end(), version) == KnownVersions.end())
        warn(QString("version \"%1\" is read as if it were 1.2").arg(version.c_str()));

    forEachChild([&](const QStringRef &name) {
        if (name != QLatin1String("Network"))
            return skip();
        if (const DataModel::NetworkPtr network = readNetwork())
            networks.push_back(network);
    });
    leaveRoot();
}

std::string StationXMLReader::attribute(const char *name) const
{
    return xml().attributes().value(QLatin1String(name)).trimmed().toString().toStdString();
}

/** Code and epoch; false, having passed over the element, if it has no code. */
bool StationXMLReader::readHead(DataModel::InventoryObject &object)
{
    object.setCode(attribute("code"));
    if (object.code().empty()) {
        warn("has no code and is left out");
        skip();
        return false;
    }
    const std::string start = attribute("startDate");
    const std::string end = attribute("endDate");
    if (!start.empty())
        object.setStart(timeOf(start));
    if (!end.empty())
        object.setEnd(timeOf(end));
    return true;
}

DataModel::NetworkPtr StationXMLReader::readNetwork()
{
    const DataModel::NetworkPtr network(new DataModel::Network);
    if (!readHead(*network))
        return nullptr;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("Description"))
            network->setDescription(readText());
        else if (name == QLatin1String("Station")) {
            if (const DataModel::StationPtr station = readStation())
                network->add(station.get());
        } else
            skip();
    });
    return network;
}

DataModel::StationPtr StationXMLReader::readStation()
{
    const DataModel::StationPtr station(new DataModel::Station);
    if (!readHead(*station))
        return nullptr;
    SensorLocationIndex locations(*station);
    DataModel::Coordinates place;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("Channel"))
            readChannel(locations);
        else if (name == QLatin1String("Site"))
            station->setSiteName(readName());
        else if (name == QLatin1String("Description"))
            station->setDescription(readText());
        else if (!readCoordinate(name, place))
            skip();
    });
    keepPlace(place);
    station->setCoordinates(place);
    if (isGoing())
        tellProgress();
    return station;
}

void StationXMLReader::readChannel(SensorLocationIndex &locations)
{
    const DataModel::StreamPtr stream(new DataModel::Stream);
    const std::string locationCode = locationCodeOf(attribute("locationCode"));
    if (!readHead(*stream))
        return;
    DataModel::Coordinates place;
    DataModel::Stream ratio;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("Depth"))
            stream->setDepth(readValue());
        else if (name == QLatin1String("Azimuth"))
            stream->setAzimuth(readValue());
        else if (name == QLatin1String("Dip"))
            stream->setDip(readValue());
        else if (name == QLatin1String("SampleRate"))
            stream->setSamplingFrequency(readValue());
        else if (name == QLatin1String("SampleRateRatio"))
            readSampleRateRatio(ratio);
        else if (name == QLatin1String("Response"))
            readResponse(*stream);
        else if (!readCoordinate(name, place))
            skip();
    });
    // 0.3333 stands for a third.
    const double difference = ratio.samplingFrequency() - stream->samplingFrequency();
    if (ratio.hasSamplingFrequency() &&
        (!stream->hasSamplingFrequency() ||
         std::abs(difference) <= RateTolerance * ratio.samplingFrequency())) {
        stream->setSamplingRateNumerator(ratio.samplingRateNumerator());
        stream->setSamplingRateDenominator(ratio.samplingRateDenominator());
    }
    keepPlace(place);
    locations.at(locationCode, place).add(stream.get());
}

bool StationXMLReader::readCoordinate(const QStringRef &name, DataModel::Coordinates &place)
{
    if (name == QLatin1String("Latitude"))
        place.latitude = readValue();
    else if (name == QLatin1String("Longitude"))
        place.longitude = readValue();
    else if (name == QLatin1String("Elevation"))
        place.elevation = readValue();
    else
        return false;
    return true;
}

void StationXMLReader::keepPlace(DataModel::Coordinates &place)
{
    if (isGoing() && !keepOnGlobe(place))
        warn("coordinates beyond the globe are left out");
}

void StationXMLReader::readSampleRateRatio(DataModel::Stream &stream)
{
    double samples = NotANumber;
    double seconds = NotANumber;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("NumberSamples"))
            samples = readValue();
        else if (name == QLatin1String("NumberSeconds"))
            seconds = readValue();
        else
            skip();
    });
    if (seconds > 0)
        stream.setSamplingFrequency(samples / seconds);
}

void StationXMLReader::readResponse(DataModel::Stream &stream)
{
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("InstrumentSensitivity") ||
            name == QLatin1String("InstrumentPolynomial"))
            readSensitivity(stream);
        else
            skip();
    });
}

/** Of a polynomial, which has no gain, the unit is taken. */
void StationXMLReader::readSensitivity(DataModel::Stream &stream)
{
    double gain = 0;
    double frequency = NotANumber;
    std::string output;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("Value"))
            gain = readNumber().value_or(0);
        else if (name == QLatin1String("Frequency"))
            frequency = readValue();
        else if (name == QLatin1String("InputUnits"))
            stream.setGainUnit(readName());
        else if (name == QLatin1String("OutputUnits"))
            output = readName();
        else
            skip();
    });
    if (gain == 0 || !isGoing())
        return;
    if (!isCounts(output))
        return warn(QString("a gain in \"%1\" instead of counts is left out").arg(output.c_str()));
    stream.setGain(gain);
    stream.setGainFrequency(frequency);
}

/** The text of the child element Name. */
std::string StationXMLReader::readName()
{
    std::string text;
    forEachChild([&](const QStringRef &name) {
        if (name == QLatin1String("Name"))
            text = readText();
        else
            skip();
    });
    return text;
}

double StationXMLReader::readValue()
{
    return readNumber().value_or(NotANumber);
}

} // namespace IO
} // namespace Tellarix
