// SPDX-License-Identifier: LGPL-3.0-or-later

#include "watchedstreams.h"

#include "texttable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Tellarix {
namespace Tool {

namespace {

const auto Unknown = QStringLiteral("-");

double delay(Core::Time lastSampleTime, Core::Time now)
{
    return (now - lastSampleTime).length();
}

} // namespace

qint64 WatchedStreams::Stream::gaps() const
{
    return std::max<qint64>(1, static_cast<qint64>(stretches.windows().size())) - 1;
}

QString WatchedStreams::add(const Record &record)
{
    Stream &stream = _streams[record.streamID()];
    const QString id = QString::fromStdString(record.streamID());
    const bool isNew = stream.records++ == 0;
    stream.samplingFrequency = record.dataType() == DataType::Char ? 0 : record.samplingFrequency();
    stream.lastSampleTime = std::max(stream.lastSampleTime, record.lastSampleTime());

    QString news;
    const Core::TimeWindow window = record.timeWindow();
    if (!window.isEmpty()) {
        const Core::TimeSpan tolerance(0.5 / record.samplingFrequency());
        const double missing = (window.startTime() - stream.end).length();
        if (!stream.stretches.isEmpty() && missing > tolerance.length()) {
            news = tr("%1: gap of %2 from %3 on")
                       .arg(id, spanText(missing), QString::fromStdString(stream.end.iso()));
        }
        const IO::CoveredTime missingParts = stream.stretches.missingIn(window);
        double covered = window.length().length();
        for (const Core::TimeWindow &part : missingParts.windows())
            covered -= part.length().length();
        stream.overlaps += covered > tolerance.length() ? 1 : 0;
        stream.stretches.add(window, tolerance);
        stream.end = std::max(stream.end, window.endTime());
    }
    if (isNew)
        news = tr("%1: new stream, %2 Hz, from %3 on")
                   .arg(id)
                   .arg(stream.samplingFrequency)
                   .arg(record.startTime().iso().c_str());
    return news;
}

QStringList WatchedStreams::cells(const std::string &id, const Stream &stream, Core::Time now)
{
    const bool hasCome = stream.records > 0;
    return {
        QString::fromStdString(id),
        hasCome ? QString::number(stream.samplingFrequency, 'g', 9) : Unknown,
        hasCome ? QString::fromStdString(stream.lastSampleTime.iso()) : Unknown,
        hasCome ? spanText(delay(stream.lastSampleTime, now)) : Unknown,
        QString::number(stream.records),
        QString::number(stream.gaps()),
        QString::number(stream.overlaps),
    };
}

QString WatchedStreams::tableText(Core::Time now) const
{
    if (_streams.empty())
        return tr("no records") + QLatin1Char('\n');

    QVector<TextColumn> table{{tr("Stream"), false, {}},      {tr("Rate/Hz"), true, {}},
                              {tr("Last sample"), false, {}}, {tr("Delay"), true, {}},
                              {tr("Records"), true, {}},      {tr("Gaps"), true, {}},
                              {tr("Overlaps"), true, {}}};
    for (const auto &[id, stream] : _streams) {
        const QStringList row = cells(id, stream, now);
        for (int i = 0; i < table.size(); ++i)
            table[i].cells.append(row[i]);
    }
    return alignedText(table);
}

QString WatchedStreams::jsonText(Core::Time now) const
{
    QJsonArray array;
    for (const auto &[id, stream] : _streams) {
        const auto value = [&has = stream.records](const QJsonValue &known) {
            return has > 0 ? known : QJsonValue(QJsonValue::Null);
        };
        array.append(QJsonObject{
            {QStringLiteral("id"), QString::fromStdString(id)},
            {QStringLiteral("rate"), value(stream.samplingFrequency)},
            {QStringLiteral("end"), value(QString::fromStdString(stream.lastSampleTime.iso()))},
            {QStringLiteral("delay"), value(delay(stream.lastSampleTime, now))},
            {QStringLiteral("records"), static_cast<qint64>(stream.records)},
            {QStringLiteral("gaps"), stream.gaps()},
            {QStringLiteral("overlaps"), static_cast<qint64>(stream.overlaps)},
        });
    }
    return QString::fromUtf8(QJsonDocument(array).toJson());
}

QString spanText(double seconds)
{
    const std::pair<double, const char *> units[] = {{86400, "d"}, {3600, "h"}, {60, "min"}};
    for (const auto &[length, name] : units) {
        if (std::abs(seconds) >= length)
            return QStringLiteral("%1 %2").arg(seconds / length, 0, 'f', 1).arg(name);
    }
    return QStringLiteral("%1 s").arg(seconds, 0, 'g', 3);
}

} // namespace Tool
} // namespace Tellarix
