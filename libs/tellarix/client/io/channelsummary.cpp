// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/client/io/channelsummary.h>

#include <tellarix/client/io/fieldtext_p.h>
#include <tellarix/core/datamodel/stream.h>
#include <tellarix/core/datamodel/utils.h>

#include <cmath>

namespace Tellarix {
namespace IO {

namespace {

std::optional<double> known(double value)
{
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

} // namespace

ChannelSummary ChannelSummary::Of(const DataModel::Stream &stream)
{
    const DataModel::Coordinates place = DataModel::coordinates(&stream);
    ChannelSummary summary;
    summary.id = DataModel::id(&stream);
    if (place.isPlace()) {
        summary.latitude = place.latitude;
        summary.longitude = place.longitude;
    }
    summary.elevation = known(place.elevation);
    summary.depth = known(stream.depth());
    summary.azimuth = known(stream.azimuth());
    summary.dip = known(stream.dip());
    if (stream.hasSamplingFrequency())
        summary.rate = stream.samplingFrequency();
    summary.start = stream.start();
    summary.end = stream.end();
    if (stream.gain() != 0)
        summary.gain = stream.gain();
    summary.unit = stream.gainUnit();
    return summary;
}

QByteArray ChannelSummary::csvHeader()
{
    return "id,latitude,longitude,elevation,depth,azimuth,dip,rate,start,end,gain,unit";
}

QByteArray ChannelSummary::toCsv() const
{
    const QByteArray fields[] = {quotedIfNeeded(id),
                                 numberText(latitude),
                                 numberText(longitude),
                                 numberText(elevation),
                                 numberText(depth),
                                 numberText(azimuth),
                                 numberText(dip),
                                 numberText(rate),
                                 QByteArray::fromStdString(start.iso()),
                                 QByteArray::fromStdString(end.iso()),
                                 numberText(gain),
                                 quotedIfNeeded(unit)};
    QByteArray line;
    for (const QByteArray &field : fields)
        line += field + ',';
    line.chop(1);
    return line;
}

QJsonObject ChannelSummary::toJson() const
{
    return {{"id", orNull(id)},
            {"latitude", orNull(latitude)},
            {"longitude", orNull(longitude)},
            {"elevation", orNull(elevation)},
            {"depth", orNull(depth)},
            {"azimuth", orNull(azimuth)},
            {"dip", orNull(dip)},
            {"rate", orNull(rate)},
            {"start", orNull(start.iso())},
            {"end", orNull(end.iso())},
            {"gain", orNull(gain)},
            {"unit", orNull(unit)}};
}

} // namespace IO
} // namespace Tellarix
