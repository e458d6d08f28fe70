// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/background.h>

#include <tellarix/qt/map/backgroundshapes.h>
#include <tellarix/qt/map/cities.h>
#include <tellarix/qt/map/graticule.h>
#include <tellarix/qt/map/projection.h>

#include <QFontMetricsF>
#include <QImage>
#include <QMargins>
#include <QPainter>
#include <QPainterPath>
#include <QRegion>
#include <QtMath>

#include <algorithm>
#include <climits>
#include <cmath>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

/** Least distance of meridians, in pixels. */
constexpr double GraticuleSpacing = 110;
/** From the canvas's edges to the graticule's labels, in pixels. */
constexpr double LabelMargin = 4;
/** Shapes are painted so far beyond the canvas, in pixels, that their cut ends aren't seen. */
constexpr int WindowMargin = 4;
/** Projected pixels count from the middle of pixels, painters from their corner. */
constexpr double PixelMiddle = 0.5;

QFont scaledFont(QFont font, double factor)
{
    if (font.pixelSize() > 0)
        font.setPixelSize(std::max(7, qRound(font.pixelSize() * factor)));
    else
        font.setPointSizeF(std::max(5.0, font.pointSizeF() * factor));
    return font;
}

/** A pen for which the raster engine has a fast way. */
QPen hairline(const QColor &color, Qt::PenStyle style = Qt::SolidLine)
{
    QPen pen(color, 1, style);
    pen.setCosmetic(true);
    return pen;
}

/** The pixels whose middle lies on the globe. */
QRect visibleGlobe(const Projection &projection)
{
    const QSize &size = projection.view().size;
    const QRectF globe = projection.globe();
    return QRect(QPoint(qCeil(qBound(0.0, globe.left(), double(size.width()))),
                        qCeil(qBound(0.0, globe.top(), double(size.height())))),
                 QPoint(qFloor(qBound(-1.0, globe.right(), size.width() - 1.0)),
                        qFloor(qBound(-1.0, globe.bottom(), size.height() - 1.0))));
}

bool canBeShown(const View &view)
{
    return !view.size.isEmpty() && std::isfinite(view.center.x()) &&
           std::isfinite(view.center.y()) && std::isfinite(view.pixelPerDegree) &&
           view.pixelPerDegree > 0;
}

} // namespace

BackgroundDetail backgroundDetail(double pixelPerDegree)
{
    // Each step doubles the scale; at 0 the world is 256 pixels wide.
    const double zoom = std::log2(std::max(pixelPerDegree, 1e-6) * 360 / 256);
    const auto rank = [](double value) {
        return static_cast<int>(std::floor(qBound(-1.0, value, 15.0)));
    };
    BackgroundDetail detail;
    detail.scale = pixelPerDegree < 2    ? WorldData::Coarse
                   : pixelPerDegree < 14 ? WorldData::Medium
                                         : WorldData::Fine;
    detail.lakeRank = rank(zoom - 0.5);
    detail.riverRank = rank(zoom - 0.6);
    detail.provinceRank = zoom < 4.5 ? -1 : rank(zoom - 0.2);
    detail.cityRank = rank(1.3 * zoom - 3.3);
    return detail;
}

Background::Background(const Scheme::Map &colors, std::shared_ptr<const WorldData> data,
                       const QFont &font, const BackgroundContents &contents)
    : _colors(colors), _data(std::move(data)), _font(font.toString()), _contents(contents)
{}

Background::~Background() = default;

void Background::paint(QImage &image, const Projection &projection) const
{
    image.fill(_colors.outside);
    if (!canBeShown(projection.view()))
        return;

    QPainter painter(&image);
    const QRect globe = visibleGlobe(projection);
    if (globe.isEmpty())
        return;
    painter.fillRect(globe, _colors.water);
    if (globe != image.rect())
        painter.setClipRect(globe);

    drawWorld(painter, projection);
    // Made by this constructor a font shares nothing with others.
    QFont font{QString()};
    font.fromString(_font);
    QVector<QRectF> labels;
    if (_contents.graticule)
        labels = drawGraticule(painter, projection, scaledFont(font, 0.85));
    if (_contents.cities)
        drawCities(painter, projection, font, labels);
}

void Background::drawWorld(QPainter &painter, const Projection &projection) const
{
    const BackgroundDetail detail = backgroundDetail(projection.view().pixelPerDegree);
    const QMargins margins(WindowMargin, WindowMargin, WindowMargin, WindowMargin);
    const BackgroundShapes shapes(projection, visibleGlobe(projection) + margins);
    const auto fill = [&](QPainterPath *edges, WorldData::Kind kind, int rank,
                          const QColor &color) {
        QPainterPath areas;
        areas.setFillRule(Qt::WindingFill);
        shapes.addRings(&areas, edges, *_data->shapes(detail.scale, kind), rank);
        // Smooth areas cost ten times as much as all else; their edges are covered by smooth lines.
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillPath(areas, color);
        painter.setRenderHint(QPainter::Antialiasing, true);
    };
    const auto stroke = [&](WorldData::Kind kind, int rank, const QPen &pen) {
        if (rank < 0)
            return;
        QPainterPath lines;
        shapes.addLines(&lines, *_data->shapes(detail.scale, kind), rank);
        painter.strokePath(lines, pen);
    };

    painter.save();
    painter.translate(PixelMiddle, PixelMiddle);
    QPainterPath coast, shores;
    fill(&coast, WorldData::Land, INT_MAX, _colors.land);
    if (_contents.rivers)
        stroke(WorldData::Rivers, detail.riverRank, hairline(_colors.river));
    fill(&shores, WorldData::Lakes, detail.lakeRank, _colors.water);
    painter.strokePath(shores, hairline(_colors.river));
    if (_contents.borders) {
        stroke(WorldData::Provinces, detail.provinceRank, hairline(_colors.province));
        stroke(WorldData::Borders, INT_MAX, hairline(_colors.country));
        stroke(WorldData::DisputedBorders, INT_MAX, hairline(_colors.country, Qt::DashLine));
    }
    painter.strokePath(coast, hairline(_colors.coast));
    painter.restore();
}

QVector<QRectF> Background::drawGraticule(QPainter &painter, const Projection &projection,
                                          const QFont &font) const
{
    const QRect globe = visibleGlobe(projection);
    const double step = graticuleStep(projection.view().pixelPerDegree, GraticuleSpacing);
    const QVector<GraticuleLine> columns = meridians(projection, step);
    const QVector<GraticuleLine> rows = parallels(projection, step);

    // As one region, so that translucent lines don't darken where they cross.
    QRegion region;
    for (const GraticuleLine &line : columns)
        region += QRect(line.pixel, globe.top(), 1, globe.height());
    for (const GraticuleLine &line : rows)
        region += QRect(globe.left(), line.pixel, globe.width(), 1);
    for (const QRect &rect : region)
        painter.fillRect(rect, _colors.graticule);

    painter.setFont(font);
    const QFontMetricsF metrics(font, painter.device());
    const QRectF room =
        QRectF(globe).adjusted(LabelMargin, LabelMargin, -LabelMargin, -LabelMargin);
    QVector<QRectF> taken;
    const auto place = [&](const QPointF &corner, const QString &label) {
        const QRectF rect(corner, QSizeF(metrics.horizontalAdvance(label), metrics.height()));
        if (!room.contains(rect) || std::any_of(taken.begin(), taken.end(), [&](const QRectF &r) {
                return r.intersects(rect.adjusted(-LabelMargin, 0, LabelMargin, 0));
            }))
            return;
        drawText(painter, rect.topLeft() + QPointF(0, metrics.ascent()), label);
        taken.append(rect);
    };
    for (const GraticuleLine &line : rows)
        place(QPointF(room.left(), line.pixel - metrics.height()), line.label);
    for (const GraticuleLine &line : columns)
        place(QPointF(line.pixel + LabelMargin, room.bottom() - metrics.height()), line.label);
    return taken;
}

void Background::drawCities(QPainter &painter, const Projection &projection, const QFont &font,
                            const QVector<QRectF> &occupied) const
{
    const BackgroundDetail detail = backgroundDetail(projection.view().pixelPerDegree);
    painter.setFont(font);
    const QFontMetricsF metrics(font, painter.device());
    const auto places = _data->places();
    const QVector<CityLabel> labels = layoutCities(
        *places, projection, detail.cityRank, occupied, [&metrics](const WorldPlace &place) {
            return QSizeF(metrics.horizontalAdvance(place.name), metrics.height());
        });

    painter.setRenderHint(QPainter::Antialiasing);
    for (const CityLabel &label : labels) {
        const double radius = label.place->capital ? 3 : 2;
        painter.setPen(hairline(_colors.label));
        painter.setBrush(label.place->capital ? _colors.land : _colors.label);
        painter.drawEllipse(label.dot + QPointF(PixelMiddle, PixelMiddle), radius, radius);
        drawText(painter, label.text.topLeft() + QPointF(0, metrics.ascent()), label.place->name);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void Background::drawText(QPainter &painter, const QPointF &baseline, const QString &text) const
{
    // On whole pixels, where glyphs come from the cache. The halo keeps lines away from letters.
    const QPoint origin(qRound(baseline.x()), qRound(baseline.y()));
    QColor halo = _colors.land;
    halo.setAlphaF(0.6);
    painter.setPen(halo);
    for (const QPoint &offset : {QPoint(-1, 0), QPoint(1, 0), QPoint(0, -1), QPoint(0, 1)})
        painter.drawText(origin + offset, text);
    painter.setPen(_colors.label);
    painter.drawText(origin, text);
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
