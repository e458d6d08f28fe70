// SPDX-License-Identifier: LGPL-3.0-or-later

#include "gradientsheet.h"

#include "bench/gradientpicture.h"

#include <norvu/gui/gradients.h>

#include <QApplication>
#include <QCoreApplication>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

using Norvu::Gui::Gradients::Registry;
using Tellarix::Gui::Gradient;

namespace Workbench {

namespace {

constexpr int Width = 1000;
constexpr int Margin = 24;
constexpr int Gap = 20;
constexpr int BarHeight = 24;
constexpr int RowHeight = 36;
constexpr int HeadingHeight = 40;

QString tr(const char *text)
{
    return QCoreApplication::translate("Workbench::GradientSheet", text);
}

QString keysText(const Gradient &gradient)
{
    return tr("%1 to %2").arg(gradient.firstKey()).arg(gradient.lastKey());
}

QFont headingFont()
{
    QFont font = QApplication::font();
    font.setBold(true);
    return font;
}

/** Where the parts of a row stand. */
struct Columns
{
    Columns();

    int name{Margin};
    int nameWidth{0};
    int keysWidth{0};
    int barWidth{0};

    int mixed() const { return name + nameWidth + Gap; }
    int steps() const { return mixed() + barWidth + Gap; }
    int keys() const { return steps() + barWidth + Gap; }
};

Columns::Columns()
{
    const QFontMetrics heading(headingFont());
    const QFontMetrics text(QApplication::font());
    nameWidth = heading.horizontalAdvance(tr("Gradient"));
    keysWidth = heading.horizontalAdvance(tr("Keys"));
    for (auto it = Registry.constBegin(); it != Registry.constEnd(); ++it) {
        nameWidth = std::max(nameWidth, text.horizontalAdvance(it.key()));
        keysWidth = std::max(keysWidth, text.horizontalAdvance(keysText(**it)));
    }
    barWidth = (Width - 2 * Margin - nameWidth - keysWidth - 3 * Gap) / 2;
}

void drawTexts(QPainter &painter, const Columns &columns, int y, const QStringList &texts)
{
    const int places[] = {columns.name, columns.mixed(), columns.steps(), columns.keys()};
    const int widths[] = {columns.nameWidth, columns.barWidth, columns.barWidth, columns.keysWidth};
    for (int i = 0; i < texts.size(); ++i)
        painter.drawText(QRect(places[i], y, widths[i], RowHeight), Qt::AlignVCenter, texts[i]);
}

} // namespace

QPixmap gradientSheet(const QPalette &palette, qreal ratio)
{
    const Columns columns;
    const QSize size(Width, HeadingHeight + Registry.size() * RowHeight + Margin);
    QPixmap sheet((QSizeF(size) * ratio).toSize());
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(palette.color(QPalette::Base));

    QPainter painter(&sheet);
    painter.setPen(palette.color(QPalette::Text));
    painter.setFont(headingFont());
    int y = HeadingHeight - RowHeight;
    drawTexts(painter, columns, y,
              {tr("Gradient"), tr("Interpolated"), tr("In steps"), tr("Keys")});

    painter.setFont(QApplication::font());
    const QSize bar(columns.barWidth, BarHeight);
    for (auto it = Registry.constBegin(); it != Registry.constEnd(); ++it) {
        y += RowHeight;
        drawTexts(painter, columns, y, {it.key(), QString(), QString(), keysText(**it)});
        const int top = y + (RowHeight - BarHeight) / 2;
        painter.drawPixmap(columns.mixed(), top, gradientPicture(**it, false, bar, ratio, palette));
        painter.drawPixmap(columns.steps(), top, gradientPicture(**it, true, bar, ratio, palette));
    }
    return sheet;
}

} // namespace Workbench
