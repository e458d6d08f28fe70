// SPDX-License-Identifier: LGPL-3.0-or-later

#include "streamtable.h"

#include "texttable.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <cmath>

namespace Tellarix {
namespace Tool {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Tellarix::Tool::StreamTable", text);
}

QJsonObject toJson(const IO::StreamSummary &stream)
{
    const auto value = [&](double number) {
        return stream.values.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(number);
    };
    return {
        {QStringLiteral("id"), QString::fromStdString(stream.id)},
        {QStringLiteral("records"), static_cast<qint64>(stream.records)},
        {QStringLiteral("samples"), static_cast<qint64>(stream.samples)},
        {QStringLiteral("rate"), stream.samplingFrequency},
        {QStringLiteral("start"), QString::fromStdString(stream.firstSampleTime.iso())},
        {QStringLiteral("end"), QString::fromStdString(stream.lastSampleTime.iso())},
        {QStringLiteral("gaps"), static_cast<qint64>(stream.gaps)},
        {QStringLiteral("overlaps"), static_cast<qint64>(stream.overlaps)},
        {QStringLiteral("min"), value(stream.values.minimum)},
        {QStringLiteral("max"), value(stream.values.maximum)},
        {QStringLiteral("mean"), value(stream.mean)},
    };
}

QString numberText(double number)
{
    const bool isWhole = number == std::floor(number) && std::abs(number) < 1E15;
    return isWhole ? QString::number(number, 'f', 0) : QString::number(number, 'g', 9);
}

QVector<TextColumn> columns()
{
    return {
        {tr("Stream"), false, {}}, {tr("Records"), true, {}},       {tr("Samples"), true, {}},
        {tr("Rate/Hz"), true, {}}, {tr("First sample"), false, {}}, {tr("Last sample"), false, {}},
        {tr("Gaps"), true, {}},    {tr("Overlaps"), true, {}},      {tr("Minimum"), true, {}},
        {tr("Maximum"), true, {}}, {tr("Mean"), true, {}},
    };
}

QStringList cells(const IO::StreamSummary &stream)
{
    const auto value = [&](double number) {
        return stream.values.isEmpty() ? QStringLiteral("-") : numberText(number);
    };
    return {
        QString::fromStdString(stream.id),
        QString::number(stream.records),
        QString::number(stream.samples),
        numberText(stream.samplingFrequency),
        QString::fromStdString(stream.firstSampleTime.iso()),
        QString::fromStdString(stream.lastSampleTime.iso()),
        QString::number(stream.gaps),
        QString::number(stream.overlaps),
        value(stream.values.minimum),
        value(stream.values.maximum),
        value(stream.mean),
    };
}

} // namespace

QString jsonText(const std::vector<IO::StreamSummary> &streams)
{
    QJsonArray array;
    for (const IO::StreamSummary &stream : streams)
        array.append(toJson(stream));
    return QString::fromUtf8(QJsonDocument(array).toJson());
}

QString tableText(const std::vector<IO::StreamSummary> &streams)
{
    if (streams.empty())
        return tr("no records") + QLatin1Char('\n');

    QVector<TextColumn> table = columns();
    for (const IO::StreamSummary &stream : streams) {
        const QStringList row = cells(stream);
        for (int i = 0; i < table.size(); ++i)
            table[i].cells.append(row[i]);
    }
    return alignedText(table);
}

} // namespace Tool
} // namespace Tellarix
