// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/quakemlwriter_p.h>

#include <tellarix/client/io/metres_p.h>

#include <QLocale>

namespace Tellarix {
namespace IO {

namespace {

constexpr auto CatalogueID = "smi:local/catalogue";

/** Characters that XML has no place for become question marks. */
QString writable(const std::string &text)
{
    QString result = QString::fromStdString(text);
    for (QChar &c : result) {
        const bool control = c < ' ' && c != '\t' && c != '\n' && c != '\r';
        if (control || c == QChar(0xFFFE) || c == QChar(0xFFFF))
            c = '?';
    }
    return result;
}

/** Numbers as the form has them: lengths in metres, all others as they are. */
std::string plainText(double value)
{
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest).toStdString();
}

} // namespace

QuakeMLWriter::QuakeMLWriter(QIODevice &device) : _xml(&device)
{
    _xml.setAutoFormatting(true);
    _xml.setAutoFormattingIndent(1);
}

bool QuakeMLWriter::begin()
{
    _xml.writeStartDocument();
    _xml.writeStartElement("q:quakeml");
    _xml.writeAttribute("xmlns", "http://quakeml.org/xmlns/bed/1.2");
    _xml.writeAttribute("xmlns:q", "http://quakeml.org/xmlns/quakeml/1.2");
    _xml.writeStartElement("eventParameters");
    _xml.writeAttribute("publicID", CatalogueID);
    return !_xml.hasError();
}

bool QuakeMLWriter::end()
{
    _xml.writeEndDocument();
    return !_xml.hasError();
}

bool QuakeMLWriter::write(const DataModel::Event &event)
{
    openNamed("event", event.publicID);
    for (const DataModel::EventDescription &description : event.descriptions) {
        _xml.writeStartElement("description");
        _xml.writeTextElement("text", writable(description.text));
        writeText("type", description.type);
        _xml.writeEndElement();
    }
    writeText("preferredOriginID", event.preferredOriginID);
    writeText("preferredMagnitudeID", event.preferredMagnitudeID);
    writeText("preferredFocalMechanismID", event.preferredFocalMechanismID);
    writeText("type", event.type);
    writeText("typeCertainty", event.typeCertainty);
    writeCreationInfo(event.creationInfo);
    for (const DataModel::OriginPtr &origin : event.origins)
        writeOrigin(*origin);
    for (const DataModel::MagnitudePtr &magnitude : event.magnitudes)
        writeMagnitude(*magnitude);
    for (const DataModel::FocalMechanismPtr &mechanism : event.focalMechanisms)
        writeFocalMechanism(*mechanism);
    _xml.writeEndElement();
    return !_xml.hasError();
}

void QuakeMLWriter::writeOrigin(const DataModel::Origin &origin)
{
    openNamed("origin", origin.publicID);
    writeQuantity("time", origin.time);
    writeQuantity("latitude", origin.latitude);
    writeQuantity("longitude", origin.longitude);
    if (origin.depth)
        writeQuantity("depth", *origin.depth, metresFromKm);
    writeText("methodID", origin.methodID);
    writeText("earthModelID", origin.earthModelID);
    if (!(origin.quality == DataModel::OriginQuality()))
        writeQuality(origin.quality);
    writeEvaluation(origin.evaluationMode, origin.evaluationStatus);
    writeCreationInfo(origin.creationInfo);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeQuality(const DataModel::OriginQuality &quality)
{
    _xml.writeStartElement("quality");
    writeCount("associatedPhaseCount", quality.associatedPhaseCount);
    writeCount("usedPhaseCount", quality.usedPhaseCount);
    writeCount("usedStationCount", quality.usedStationCount);
    writeNumber("standardError", quality.standardError);
    writeNumber("azimuthalGap", quality.azimuthalGap);
    writeNumber("minimumDistance", quality.minimumDistance);
    writeNumber("maximumDistance", quality.maximumDistance);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeMagnitude(const DataModel::Magnitude &magnitude)
{
    openNamed("magnitude", magnitude.publicID);
    writeQuantity("mag", magnitude.magnitude);
    writeText("type", magnitude.type);
    writeText("originID", magnitude.originID);
    writeText("methodID", magnitude.methodID);
    writeCount("stationCount", magnitude.stationCount);
    writeNumber("azimuthalGap", magnitude.azimuthalGap);
    writeEvaluation(magnitude.evaluationMode, magnitude.evaluationStatus);
    writeCreationInfo(magnitude.creationInfo);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeFocalMechanism(const DataModel::FocalMechanism &mechanism)
{
    openNamed("focalMechanism", mechanism.publicID);
    writeText("triggeringOriginID", mechanism.triggeringOriginID);
    if (mechanism.nodalPlane1 || mechanism.nodalPlane2) {
        _xml.writeStartElement("nodalPlanes");
        if (mechanism.preferredPlane)
            _xml.writeAttribute("preferredPlane", QString::number(*mechanism.preferredPlane));
        writeNodalPlane("nodalPlane1", mechanism.nodalPlane1);
        writeNodalPlane("nodalPlane2", mechanism.nodalPlane2);
        _xml.writeEndElement();
    }
    writeNumber("azimuthalGap", mechanism.azimuthalGap);
    writeCount("stationPolarityCount", mechanism.stationPolarityCount);
    writeNumber("misfit", mechanism.misfit);
    writeEvaluation(mechanism.evaluationMode, mechanism.evaluationStatus);
    writeCreationInfo(mechanism.creationInfo);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeNodalPlane(const char *name,
                                    const std::optional<DataModel::NodalPlane> &plane)
{
    if (!plane)
        return;
    _xml.writeStartElement(name);
    writeQuantity("strike", plane->strike());
    writeQuantity("dip", plane->dip());
    writeQuantity("rake", plane->rake());
    _xml.writeEndElement();
}

void QuakeMLWriter::writeCreationInfo(const DataModel::CreationInfo &info)
{
    if (info == DataModel::CreationInfo())
        return;
    _xml.writeStartElement("creationInfo");
    writeText("agencyID", info.agencyID);
    writeText("author", info.author);
    writeTime("creationTime", info.creationTime);
    writeText("version", info.version);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeEvaluation(const std::string &mode, const std::string &status)
{
    writeText("evaluationMode", mode);
    writeText("evaluationStatus", status);
}

void QuakeMLWriter::writeQuantity(const char *name, const DataModel::RealQuantity &quantity,
                                  NumberText text)
{
    _xml.writeStartElement(name);
    writeNumber("value", quantity.value(), text);
    writeUncertainty(quantity.uncertainty(), text);
    _xml.writeEndElement();
}

void QuakeMLWriter::writeQuantity(const char *name, const DataModel::TimeQuantity &quantity)
{
    _xml.writeStartElement(name);
    writeTime("value", quantity.value());
    writeUncertainty(quantity.uncertainty());
    _xml.writeEndElement();
}

void QuakeMLWriter::writeUncertainty(const DataModel::Uncertainty &uncertainty, NumberText text)
{
    writeNumber("uncertainty", uncertainty.symmetric, text);
    writeNumber("lowerUncertainty", uncertainty.lower, text);
    writeNumber("upperUncertainty", uncertainty.upper, text);
    writeNumber("confidenceLevel", uncertainty.confidenceLevel);
}

void QuakeMLWriter::writeText(const char *name, const std::string &text)
{
    if (!text.empty())
        _xml.writeTextElement(name, writable(text));
}

void QuakeMLWriter::writeTime(const char *name, Core::Time time)
{
    writeText(name, time.iso());
}

void QuakeMLWriter::writeNumber(const char *name, const std::optional<double> &value,
                                NumberText text)
{
    if (value)
        _xml.writeTextElement(name, QString::fromStdString((text ? text : plainText)(*value)));
}

void QuakeMLWriter::writeCount(const char *name, const std::optional<int> &value)
{
    if (value)
        _xml.writeTextElement(name, QString::number(*value));
}

void QuakeMLWriter::openNamed(const char *name, const std::string &publicID)
{
    _xml.writeStartElement(name);
    _xml.writeAttribute("publicID", writable(publicID));
}

} // namespace IO
} // namespace Tellarix
