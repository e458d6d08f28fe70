// SPDX-License-Identifier: LGPL-3.0-or-later

#include "magnitudelegend.h"

#include <tellarix/qt/map/originsymbol.h>
#include <tellarix/qt/scheme.h>

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>

using namespace Tellarix;

namespace Workbench {

namespace {

constexpr int Magnitudes[] = {3, 4, 5, 6, 7, 8};

int cellWidth(int magnitude, const QFontMetrics &metrics)
{
    return qMax(Gui::OriginSymbol::diameterOf(magnitude), metrics.horizontalAdvance("0")) +
           metrics.height() / 2;
}

} // namespace

MagnitudeLegend::MagnitudeLegend(QObject *parent) : Legend(parent)
{
    setTitle(tr("Magnitude"));
    setAlignment(Qt::AlignRight | Qt::AlignBottom);
    const QFontMetrics metrics = QApplication::fontMetrics();
    int width = metrics.height() / 2;
    for (const int magnitude : Magnitudes)
        width += cellWidth(magnitude, metrics);
    const int largest = Gui::OriginSymbol::diameterOf(*std::rbegin(Magnitudes));
    setSize(QSize(width, largest + 2 * metrics.height()));
}

void MagnitudeLegend::draw(const QRect &rect, QPainter &painter)
{
    const Gui::Scheme::Legend &colors = Gui::Scheme::Current().legend;
    const QFontMetrics metrics = painter.fontMetrics();
    const int largest = Gui::OriginSymbol::diameterOf(*std::rbegin(Magnitudes));
    const int bottom = rect.top() + metrics.height() / 2 + largest;

    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = colors.text;
    fill.setAlpha(48);
    int left = rect.left() + metrics.height() / 4;
    for (const int magnitude : Magnitudes) {
        const int width = cellWidth(magnitude, metrics);
        const int diameter = Gui::OriginSymbol::diameterOf(magnitude);
        painter.setPen(colors.text);
        painter.setBrush(fill);
        painter.drawEllipse(
            QRectF(left + (width - diameter) / 2.0, bottom - diameter, diameter, diameter));
        painter.drawText(QRect(left, bottom, width, metrics.height() + metrics.height() / 2),
                         Qt::AlignHCenter | Qt::AlignVCenter, QString::number(magnitude));
        left += width;
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

} // namespace Workbench
