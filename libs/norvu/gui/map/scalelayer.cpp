// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/scalelayer.h>

#include <tellarix/core/math/geo.h>
#include <tellarix/qt/map/canvas.h>

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

using Tellarix::Gui::Map::Canvas;

constexpr double KmPerDegree = 111.13291490135191;
constexpr int Margin = 10;
constexpr int Padding = 4;
constexpr int Segments = 4;

/** Between the quarter points of the middle line. Not above 0 if there is no such distance. */
double measuredPixelsPerKm(const Canvas &canvas)
{
    const int width = canvas.buffer().width();
    const int middle = canvas.buffer().height() / 2;
    QPointF left;
    QPointF right;
    if (!canvas.projection()->unproject(left, QPoint(width / 4, middle)) ||
        !canvas.projection()->unproject(right, QPoint(3 * width / 4 - 1, middle)))
        return 0;

    double degrees = 0;
    Tellarix::Math::Geo::delazi(left.y(), left.x(), right.y(), right.x(), &degrees);
    // On a canvas of few pixels, or at a pole, both may be the same place.
    return degrees > 0 ? width / 2 / degrees / KmPerDegree : 0;
}

double pixelsPerKm(const Canvas &canvas)
{
    const double measured = measuredPixelsPerKm(canvas);
    return measured > 0 ? measured : canvas.pixelPerDegree() / 111.13291F;
}

QString number(double value, const QString &text)
{
    return text.arg(value, 0, 'g', -1, QLatin1Char(' '));
}

} // namespace

QString scaleText(double kilometers)
{
    return kilometers < 1 ? number(kilometers * 1000.0, ScaleLayer::tr("%1 m"))
                          : number(kilometers, ScaleLayer::tr("%1 km"));
}

ScaleBar scaleBar(double pixelsPerKm)
{
    const double ideal = 150.0 / pixelsPerKm / 4.0000000001;
    const double power = std::pow(10, std::floor(std::log10(ideal)));
    ScaleBar bar;
    bar.segmentKm = std::trunc(std::round(ideal / power)) * power;
    bar.totalKm = bar.segmentKm * Segments;
    bar.segmentLength = static_cast<int>(pixelsPerKm * bar.segmentKm);
    bar.length = static_cast<int>(pixelsPerKm * bar.totalKm);
    return bar;
}

QRect alignedOnCanvas(QRect rect, const QSize &canvas, Qt::Alignment alignment)
{
    if (alignment & Qt::AlignTop)
        rect.moveTop(Margin);
    else if (alignment & Qt::AlignBottom)
        rect.moveBottom(canvas.height() - Margin);
    else if (alignment & Qt::AlignVCenter)
        rect.moveTop((canvas.height() - rect.height()) / 2);

    if (alignment & Qt::AlignLeft)
        rect.moveLeft(Margin);
    else if (alignment & Qt::AlignRight)
        rect.moveRight(canvas.width() - Margin);
    else if (alignment & Qt::AlignHCenter)
        rect.moveLeft((canvas.width() - rect.width()) / 2);
    return rect;
}

ScaleLayer::ScaleLayer(QObject *parent, Qt::Alignment alignment)
    : Layer(parent), _alignment(alignment)
{
    setName(tr("scale"));
}

void ScaleLayer::draw(const Canvas *canvas, QPainter &painter)
{
    const ScaleBar bar = scaleBar(pixelsPerKm(*canvas));
    const QString text = scaleText(bar.totalKm);

    const QRect ink = painter.fontMetrics().boundingRect(text);
    const int textHeight = ink.bottom() - ink.top();
    const int barHeight = (textHeight + 1) / 2;
    QRect box;
    box.setCoords(ink.left() - Padding, ink.top() - Padding,
                  std::max(ink.right(), bar.length + ink.left() - 1) + Padding,
                  ink.top() + textHeight + barHeight + 5 + 3);
    box = alignedOnCanvas(box, canvas->buffer().size(), _alignment);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(Qt::darkGray);
    painter.setBrush(QColor(255, 255, 255, 192));
    painter.drawRect(box);

    painter.setPen(Qt::black);
    const QRect line(QPoint(box.left(), box.top() + Padding),
                     QPoint(box.right(), box.top() + textHeight + 1 + 3));
    painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter, text);

    QRect segment(box.left() + (box.right() - box.left() - bar.length + 2) / 2,
                  box.bottom() - Padding - barHeight, bar.segmentLength, barHeight);
    for (int i = 0; i < Segments; ++i) {
        painter.fillRect(segment, i % 2 == 0 ? Qt::black : Qt::lightGray);
        segment.translate(bar.segmentLength, 0);
    }
    painter.restore();
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
