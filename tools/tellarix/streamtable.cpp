// SPDX-License-Identifier: LGPL-3.0-or-later

#include "streamtable.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <functional>

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

struct Column
{
    QString title;
    bool isNumber;
    QStringList cells;
};

QVector<Column> columns()
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

QString line(const QVector<Column> &columns, const QVector<int> &widths,
             const std::function<QString(const Column &)> &text)
{
    QString result;
    for (int i = 0; i < columns.size(); ++i) {
        const QString cell = text(columns[i]);
        result +=
            columns[i].isNumber ? cell.rightJustified(widths[i]) : cell.leftJustified(widths[i]);
        result += i + 1 < columns.size() ? QStringLiteral("  ") : QStringLiteral("\n");
    }
    return result;
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

    QVector<Column> table = columns();
    for (const IO::StreamSummary &stream : streams) {
        const QStringList row = cells(stream);
        for (int i = 0; i < table.size(); ++i)
            table[i].cells.append(row[i]);
    }

    QVector<int> widths;
    for (const Column &column : qAsConst(table)) {
        int width = column.title.size();
        for (const QString &cell : column.cells)
            width = std::max(width, cell.size());
        widths.append(width);
    }

    QString result = line(table, widths, [](const Column &column) { return column.title; });
    for (int row = 0; row < static_cast<int>(streams.size()); ++row)
        result += line(table, widths, [=](const Column &column) { return column.cells[row]; });
    return result;
}

} // namespace Tool
} // namespace Tellarix
