// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/imageshadow.h>
#include <norvu/gui/map/stationsymbol.h>

#include <tellarix/qt/scheme.h>

#include <QImage>
#include <QMap>
#include <QPainter>
#include <QPen>

namespace Norvu {
namespace Gui {
namespace Map {

namespace {

struct StationShadow
{
    QImage image; /**< untrimmed; the tip stands one pixel above the bottom edge */
    QPoint hotspot;
};

StationShadow shadowOf(const QPolygon &station, int size)
{
    StationShadow shadow;
    shadow.image = QImage(2 * size + 2, 2 * size + 2, QImage::Format_ARGB32);
    shadow.image.fill(0);
    {
        QPainter painter(&shadow.image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(64, 64, 64, 160));
        painter.translate(1.0, 2 * size + 1);
        painter.scale(0.7, 0.5);
        painter.shear(-1.0, 0.2);
        painter.drawPolygon(station);
    }
    blurImage(shadow.image, 1);
    const QRect filled = trimmedImageRect(shadow.image);
    if (filled.isValid())
        shadow.hotspot = filled.topLeft();
    return shadow;
}

/** By size, since stations that stand out from the others lie between them. */
StationShadow cachedShadow(const QPolygon &station, int size)
{
    // Enough, unless the size follows something that changes all the time.
    constexpr int Sizes = 16;
    static QMap<int, StationShadow> shadows;
    const auto found = shadows.constFind(size);
    if (found != shadows.constEnd())
        return *found;

    if (shadows.size() >= Sizes)
        shadows.clear();
    return *shadows.insert(size, shadowOf(station, size));
}

} // namespace

StationSymbol::StationSymbol()
{
    setSize(Tellarix::Gui::Scheme::Current().map.stationSymbolSize);
}

StationSymbol::StationSymbol(double longitude, double latitude)
    : AnnotatedSymbol(longitude, latitude)
{
    setSize(Tellarix::Gui::Scheme::Current().map.stationSymbolSize);
}

QPolygon StationSymbol::generateShape(int x, int y, int size)
{
    const int top = y - size - size / 2;
    const auto half = static_cast<int>(size * 0.867);
    return QVector<QPoint>{QPoint(x, top - size / 4), QPoint(x + half, top), QPoint(x, y),
                           QPoint(x - half, top)};
}

void StationSymbol::setSize(int size)
{
    // The shadow of one that fills a screen takes 16 MB, and that of a slip of the keyboard all.
    constexpr int Largest = 1024;
    const int bounded = qBound(0, size, Largest);
    AnnotatedSymbol::setSize(QSize(bounded, bounded));
    _stationPolygon = generateShape(0, 0, bounded);
}

bool StationSymbol::isInside(int x, int y) const
{
    const QPoint place = QPoint(x, y) - position();
    // Of many stations all but a few are far away, and the polygon takes ten times as long.
    const QRect box(QPoint(_stationPolygon[3].x(), _stationPolygon[0].y()),
                    QPoint(_stationPolygon[1].x(), 0));
    return box.contains(place) && _stationPolygon.containsPoint(place, Qt::OddEvenFill);
}

void StationSymbol::drawShadow(QPainter &painter)
{
    const StationShadow shadow = cachedShadow(_stationPolygon, size());
    painter.drawImage(position().x() + shadow.hotspot.x() - 1,
                      position().y() - shadow.image.height() + 1, shadow.image);
}

QPoint StationSymbol::annotationOffset() const
{
    return QPoint(0, 2 * (-2 - size()));
}

void StationSymbol::customDraw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    AnnotatedSymbol::customDraw(canvas, painter);

    painter.setPen(QPen(_pen, _penWidth));
    painter.setBrush(_fill);
    painter.translate(position());
    painter.drawPolygon(_stationPolygon, Qt::OddEvenFill);
    painter.translate(-position());
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
