// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventlistwriter_p.h>

#include <tellarix/client/io/eventsummary.h>

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

QJsonObject featureOf(const EventSummary &summary)
{
    QJsonArray position{*summary.longitude, *summary.latitude};
    if (summary.depthKm)
        position.append(-*summary.depthKm * MetresPerKm);
    return {{"type", "Feature"},
            {"id", QString::fromStdString(summary.id)},
            {"geometry", QJsonObject{{"type", "Point"}, {"coordinates", position}}},
            {"properties", summary.toJson()}};
}

} // namespace

bool EventCsvWriter::begin()
{
    return put(_device, EventSummary::csvHeader() + "\r\n");
}

bool EventCsvWriter::write(const DataModel::Event &event)
{
    return put(_device, EventSummary::Of(event).toCsv() + "\r\n");
}

bool EventGeoJsonWriter::begin()
{
    return put(_device, "{\"type\": \"FeatureCollection\", \"features\": [");
}

bool EventGeoJsonWriter::write(const DataModel::Event &event)
{
    const EventSummary summary = EventSummary::Of(event);
    if (!summary.latitude)
        return true;
    const QByteArray separator = _first ? "\n" : ",\n";
    _first = false;
    return put(_device,
               separator + QJsonDocument(featureOf(summary)).toJson(QJsonDocument::Compact));
}

bool EventGeoJsonWriter::end()
{
    return put(_device, "\n]}\n");
}

} // namespace IO
} // namespace Tellarix
