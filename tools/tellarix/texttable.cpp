// SPDX-License-Identifier: LGPL-3.0-or-later

#include "texttable.h"

#include <algorithm>
#include <functional>

namespace Tellarix {
namespace Tool {

namespace {

QString line(const QVector<TextColumn> &columns, const QVector<int> &widths,
             const std::function<QString(const TextColumn &)> &text)
{
    QString result;
    for (int i = 0; i < columns.size(); ++i) {
        const QString cell = text(columns[i]);
        const bool isLast = i + 1 == columns.size();
        if (columns[i].isNumber)
            result += cell.rightJustified(widths[i]);
        else
            result += isLast ? cell : cell.leftJustified(widths[i]);
        result += isLast ? QStringLiteral("\n") : QStringLiteral("  ");
    }
    return result;
}

} // namespace

QString alignedText(const QVector<TextColumn> &columns)
{
    QVector<int> widths;
    for (const TextColumn &column : columns) {
        int width = column.title.size();
        for (const QString &cell : column.cells)
            width = std::max(width, cell.size());
        widths.append(width);
    }

    QString result = line(columns, widths, [](const TextColumn &column) { return column.title; });
    const int rows = columns.isEmpty() ? 0 : columns.first().cells.size();
    for (int row = 0; row < rows; ++row)
        result +=
            line(columns, widths, [=](const TextColumn &column) { return column.cells[row]; });
    return result;
}

} // namespace Tool
} // namespace Tellarix
