// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/eventline.h>

#include <tellarix/client/io/fieldtext_p.h>

#include <cmath>

namespace Tellarix {
namespace IO {

EventLine EventLine::Of(const DataModel::Event &event)
{
    EventLine line;
    line.id = event.publicID;
    line.type = event.type;
    line.region = event.region();
    if (const DataModel::Origin *origin = event.preferredOrigin()) {
        line.time = origin->time.value();
        // A database may hold an origin without a place.
        if (std::isfinite(origin->latitude.value()) && std::isfinite(origin->longitude.value())) {
            line.latitude = origin->latitude.value();
            line.longitude = origin->longitude.value();
        }
        if (origin->depth)
            line.depthKm = origin->depth->value();
        line.phases = origin->quality.usedPhaseCount;
        line.status =
            origin->evaluationStatus.empty() ? origin->evaluationMode : origin->evaluationStatus;
    }
    if (const DataModel::Magnitude *magnitude = event.preferredMagnitude()) {
        line.magnitude = magnitude->magnitude.value();
        line.magnitudeType = magnitude->type;
    }
    return line;
}

QByteArray EventLine::csvHeader()
{
    return "id,time,latitude,longitude,depth,magnitude,magnitudeType,phases,status,type,region";
}

QByteArray EventLine::toCsv() const
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

QJsonObject EventLine::toJson() const
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
