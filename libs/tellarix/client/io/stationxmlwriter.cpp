// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/stationxmlwriter.h>

#include <tellarix/core/datamodel/sensorlocation.h>
#include <tellarix/core/datamodel/station.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>

#include <QLocale>
#include <QXmlStreamWriter>

#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

class StationXMLWriter
{
public:
    explicit StationXMLWriter(QIODevice &device) : _xml(&device) { _xml.setAutoFormatting(true); }

    bool write(const std::vector<DataModel::NetworkPtr> &networks, const QString &source,
               Core::Time created)
    {
        _xml.writeStartDocument();
        _xml.writeStartElement("FDSNStationXML");
        _xml.writeDefaultNamespace("http://www.fdsn.org/xml/station/1");
        _xml.writeAttribute("schemaVersion", "1.1");
        _xml.writeTextElement("Source", source);
        _xml.writeTextElement("Created", text(created));
        for (const DataModel::NetworkPtr &network : networks)
            write(*network);
        _xml.writeEndDocument();
        return !_xml.hasError();
    }

private:
    static QString text(Core::Time time) { return QString::fromStdString(time.iso()); }

    void writeHead(const QString &element, const DataModel::InventoryObject &object)
    {
        _xml.writeStartElement(element);
        _xml.writeAttribute("code", QString::fromStdString(object.code()));
        if (object.start().valid())
            _xml.writeAttribute("startDate", text(object.start()));
        if (object.end().valid())
            _xml.writeAttribute("endDate", text(object.end()));
    }

    void writeText(const QString &element, const std::string &text)
    {
        if (!text.empty())
            _xml.writeTextElement(element, QString::fromStdString(text));
    }

    void writeNumber(const QString &element, double value)
    {
        if (std::isfinite(value))
            _xml.writeTextElement(element,
                                  QString::number(value, 'g', QLocale::FloatingPointShortest));
    }

    void writePlace(const DataModel::Coordinates &place)
    {
        writeNumber("Latitude", place.latitude);
        writeNumber("Longitude", place.longitude);
        writeNumber("Elevation", place.elevation);
    }

    void writeNamed(const QString &element, const std::string &name)
    {
        _xml.writeStartElement(element);
        writeText("Name", name);
        _xml.writeEndElement();
    }

    void write(const DataModel::Network &network)
    {
        writeHead("Network", network);
        writeText("Description", network.description());
        for (int i = 0; i < network.stationCount(); ++i)
            write(*network.station(i));
        _xml.writeEndElement();
    }

    void write(const DataModel::Station &station)
    {
        writeHead("Station", station);
        writeText("Description", station.description());
        writePlace(station.coordinates());
        if (!station.siteName().empty())
            writeNamed("Site", station.siteName());
        for (int i = 0; i < station.sensorLocationCount(); ++i) {
            const DataModel::SensorLocation *location = station.sensorLocation(i);
            for (int j = 0; j < location->streamCount(); ++j)
                write(*location->stream(j));
        }
        _xml.writeEndElement();
    }

    void write(const DataModel::Stream &stream)
    {
        writeHead("Channel", stream);
        _xml.writeAttribute("locationCode",
                            QString::fromStdString(stream.sensorLocation()->code()));
        writePlace(DataModel::coordinates(&stream));
        writeNumber("Depth", stream.depth());
        writeNumber("Azimuth", stream.azimuth());
        writeNumber("Dip", stream.dip());
        if (stream.hasSamplingFrequency())
            writeRate(stream);
        if (stream.gain() != 0 || !stream.gainUnit().empty())
            writeGain(stream);
        _xml.writeEndElement();
    }

    void writeRate(const DataModel::Stream &stream)
    {
        writeNumber("SampleRate", stream.samplingFrequency());
        if (stream.samplingRateDenominator() == 1)
            return;
        _xml.writeStartElement("SampleRateRatio");
        writeNumber("NumberSamples", stream.samplingRateNumerator());
        writeNumber("NumberSeconds", stream.samplingRateDenominator());
        _xml.writeEndElement();
    }

    void writeGain(const DataModel::Stream &stream)
    {
        _xml.writeStartElement("Response");
        _xml.writeStartElement("InstrumentSensitivity");
        if (stream.gain() != 0) {
            writeNumber("Value", stream.gain());
            writeNumber("Frequency", stream.gainFrequency());
        }
        writeNamed("InputUnits", stream.gainUnit());
        writeNamed("OutputUnits", "COUNTS");
        _xml.writeEndElement();
        _xml.writeEndElement();
    }

    QXmlStreamWriter _xml;
};

} // namespace

bool writeStationXML(QIODevice &device, const std::vector<DataModel::NetworkPtr> &networks,
                     const QString &source, Core::Time created)
{
    return StationXMLWriter(device).write(networks, source, created);
}

} // namespace IO
} // namespace Tellarix
