// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace Tellarix {
namespace Tool {

/** A column of a table; all of them have as many cells. */
struct TextColumn
{
    QString title;
    bool isNumber; /**< stands at the right */
    QStringList cells;
};

/** A table with aligned columns and a header line. */
QString alignedText(const QVector<TextColumn> &columns);

} // namespace Tool
} // namespace Tellarix
