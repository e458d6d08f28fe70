// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventsummary.h>

#include <tellarix/client/io/fieldtext_p.h>

#include <cmath>

namespace Tellarix {
namespace IO {

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
