// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventsummary.h>

#include <QLocale>

#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

QByteArray numberText(const std::optional<double> &value)
{
    return value ? QByteArray::number(*value, 'g', QLocale::FloatingPointShortest) : QByteArray();
}

QByteArray quotedIfNeeded(const std::string &text)
{
    QByteArray field = QByteArray::fromStdString(text);
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return field;
    return '"' + field.replace('"', "\"\"") + '"';
}

QJsonValue orNull(const std::string &text)
{
    return text.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(text));
}

template <typename T>
QJsonValue orNull(const std::optional<T> &value)
{
    // There is no number in JSON for what is none.
    return value && std::isfinite(static_cast<double>(*value)) ? QJsonValue(*value) : QJsonValue();
}

} // namespace

EventSummary EventSummary::Of(const DataModel::Event &event)
{
    EventSummary summary;
    summary.id = event.publicID;
    summary.type = event.type;
    summary.region = event.region();
    if (const DataModel::Origin *origin = event.preferredOrigin()) {
        summary.time = origin->time.value();
        // A database may hold an origin without a place.
        if (std::isfinite(origin->latitude.value()) && std::isfinite(origin->longitude.value())) {
            summary.latitude = origin->latitude.value();
            summary.longitude = origin->longitude.value();
        }
        if (origin->depth)
            summary.depthKm = origin->depth->value();
        summary.phases = origin->quality.usedPhaseCount;
        summary.status =
            origin->evaluationStatus.empty() ? origin->evaluationMode : origin->evaluationStatus;
    }
    if (const DataModel::Magnitude *magnitude = event.preferredMagnitude()) {
        summary.magnitude = magnitude->magnitude.value();
        summary.magnitudeType = magnitude->type;
    }
    return summary;
}

QByteArray EventSummary::csvHeader()
{
    return "id,time,latitude,longitude,depth,magnitude,magnitudeType,phases,status,type,region";
}

QByteArray EventSummary::toCsv() const
{
    const QByteArray fields[] = {quotedIfNeeded(id),
                                 QByteArray::fromStdString(time.iso()),
                                 numberText(latitude),
                                 numberText(longitude),
                                 numberText(depthKm),
                                 numberText(magnitude),
                                 quotedIfNeeded(magnitudeType),
                                 phases ? QByteArray::number(*phases) : QByteArray(),
                                 quotedIfNeeded(status),
                                 quotedIfNeeded(type),
                                 quotedIfNeeded(region)};
    QByteArray line;
    for (const QByteArray &field : fields)
        line += field + ',';
    line.chop(1);
    return line;
}

QJsonObject EventSummary::toJson() const
{
    return {{"id", orNull(id)},
            {"time", orNull(time.iso())},
            {"latitude", orNull(latitude)},
            {"longitude", orNull(longitude)},
            {"depth", orNull(depthKm)},
            {"magnitude", orNull(magnitude)},
            {"magnitudeType", orNull(magnitudeType)},
            {"phases", orNull(phases)},
            {"status", orNull(status)},
            {"type", orNull(type)},
            {"region", orNull(region)}};
}

} // namespace IO
} // namespace Tellarix
