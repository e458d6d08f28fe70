// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventlistwriter_p.h>

#include <tellarix/client/io/eventline.h>

#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>

namespace Tellarix {
namespace IO {

namespace {

constexpr double MetresPerKm = 1000;

bool put(QIODevice &device, const QByteArray &text)
{
    return device.write(text) == text.size();
}

QJsonObject featureOf(const EventLine &line)
{
    QJsonArray position{*line.longitude, *line.latitude};
    if (line.depthKm)
        position.append(-*line.depthKm * MetresPerKm);
    return {{"type", "Feature"},
            {"id", QString::fromStdString(line.id)},
            {"geometry", QJsonObject{{"type", "Point"}, {"coordinates", position}}},
            {"properties", line.toJson()}};
}

} // namespace

bool EventCsvWriter::begin()
{
    return put(_device, EventLine::csvHeader() + "\r\n");
}

bool EventCsvWriter::write(const DataModel::Event &event)
{
    return put(_device, EventLine::Of(event).toCsv() + "\r\n");
}

bool EventGeoJsonWriter::begin()
{
    return put(_device, "{\"type\": \"FeatureCollection\", \"features\": [");
}

bool EventGeoJsonWriter::write(const DataModel::Event &event)
{
    const EventLine line = EventLine::Of(event);
    if (!line.latitude)
        return true;
    const QByteArray separator = _first ? "\n" : ",\n";
    _first = false;
    return put(_device, separator + QJsonDocument(featureOf(line)).toJson(QJsonDocument::Compact));
}

bool EventGeoJsonWriter::end()
{
    return put(_device, "\n]}\n");
}

} // namespace IO
} // namespace Tellarix
