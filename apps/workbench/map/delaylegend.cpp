// SPDX-License-Identifier: LGPL-3.0-or-later

#include "delaylegend.h"

#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

using namespace Tellarix;

namespace Workbench {

namespace {

struct Entry
{
    DelayGrade grade;
    const char *text;
};

constexpr Entry Entries[] = {{DelayGrade::Fresh, QT_TRANSLATE_NOOP("DelayLegend", "on time")},
                             {DelayGrade::Late, QT_TRANSLATE_NOOP("DelayLegend", "late")},
                             {DelayGrade::Stale, QT_TRANSLATE_NOOP("DelayLegend", "silent")},
                             {DelayGrade::Never, QT_TRANSLATE_NOOP("DelayLegend", "not live")}};
constexpr int EntryCount = sizeof Entries / sizeof *Entries;

QString textOf(const Entry &entry)
{
    return QApplication::translate("DelayLegend", entry.text);
}

} // namespace

QColor colorOf(DelayGrade grade)
{
    switch (grade) {
    case DelayGrade::Fresh:
        return QColor(40, 160, 70);
    case DelayGrade::Late:
        return QColor(235, 195, 30);
    case DelayGrade::Stale:
        return QColor(205, 45, 45);
    case DelayGrade::Never:
        break;
    }
    return QColor(150, 150, 150);
}

DelayLegend::DelayLegend(QObject *parent) : Legend(parent)
{
    setTitle(tr("Delay"));
    setAlignment(Qt::AlignLeft | Qt::AlignBottom);
    const QFontMetrics metrics = QApplication::fontMetrics();
    int width = 0;
    for (const Entry &entry : Entries)
        width = std::max(width, metrics.horizontalAdvance(textOf(entry)));
    setSize({width + 3 * metrics.height(), EntryCount * metrics.height() + metrics.height() / 2});
}

void DelayLegend::draw(const QRect &rect, QPainter &painter)
{
    const Gui::Scheme::Legend &colors = Gui::Scheme::Current().legend;
    const int height = painter.fontMetrics().height();
    QRect row(rect.left() + height / 2, rect.top() + height / 4, rect.width() - height, height);
    for (const Entry &entry : Entries) {
        const QRect mark = QRect(row.topLeft(), QSize(height, height))
                               .adjusted(height / 6, height / 6, -height / 6, -height / 6);
        painter.setPen(colors.border);
        painter.setBrush(colorOf(entry.grade));
        painter.drawRect(mark);
        painter.setPen(colors.text);
        painter.drawText(row.adjusted(height + height / 3, 0, 0, 0),
                         Qt::AlignLeft | Qt::AlignVCenter, textOf(entry));
        row.translate(0, height);
    }
}

} // namespace Workbench
