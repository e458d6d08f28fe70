// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/map/legend.h>
#include <tellarix/qt/map/legendlayout.h>
#include <tellarix/qt/scheme.h>

#include <QFontMetrics>
#include <QPainter>

namespace Tellarix {
namespace Gui {
namespace Map {

namespace {

QFont headerFont(QFont font)
{
    font.setBold(true);
    return font;
}

/** About the title of a legend, on all sides. */
constexpr int HeaderPadding = 4;
constexpr int LegendFrame = 1;
constexpr int LegendMargin = 10;
constexpr int LegendGap = 6;

} // namespace

void Canvas::addLegend(Legend *legend)
{
    _legends.append(legend);
    connect(legend, SIGNAL(updateRequested()), this, SLOT(layOutLegendsLater()));
    connect(legend, SIGNAL(bringToFrontRequested(Tellarix::Gui::Map::Legend *)), this,
            SLOT(bringToFront(Tellarix::Gui::Map::Legend *)));
    legend->contextResizeEvent(size());
    layOutLegendsLater();
}

void Canvas::removeLegend(Legend *legend)
{
    if (!_legends.removeOne(legend))
        return;

    disconnect(legend, nullptr, this, nullptr);
    // Until they are laid out again, nobody may find it where it was.
    _placedLegends.clear();
    layOutLegendsLater();
}

void Canvas::bringToFront(Legend *legend)
{
    const int index = _legends.indexOf(legend);
    if (index <= 0)
        return;

    _legends.move(index, 0);
    layOutLegendsLater();
}

void Canvas::setCoveredHeight(int height)
{
    if (height == _coveredHeight)
        return;
    _coveredHeight = height;
    layOutLegendsLater();
}

void Canvas::layOutLegendsLater()
{
    _legendsOutdated = true;
    requestUpdate();
}

void Canvas::layOutLegends()
{
    const QFontMetrics metrics(headerFont(_font));
    QVector<PlacedLegend> shown;
    QVector<LegendBox> boxes;
    for (Legend *legend : qAsConst(_legends)) {
        if (!legend->isEnabled() || !legend->isVisible() || !legend->layer()->isVisible() ||
            legend->size().isEmpty())
            continue;

        const bool titled = !legend->title().isEmpty();
        const int headerHeight = titled ? metrics.height() + 2 * HeaderPadding : 0;
        const int width =
            qMax(legend->size().width(),
                 titled ? metrics.horizontalAdvance(legend->title()) + 2 * HeaderPadding : 0);
        const QRect header(LegendFrame, LegendFrame, width, headerHeight);
        const QRect content(
            QPoint(LegendFrame + (width - legend->size().width()) / 2, LegendFrame + headerHeight),
            legend->size());
        const QSize frame(width + 2 * LegendFrame,
                          headerHeight + legend->size().height() + 2 * LegendFrame);
        shown.append({legend, QRect(), header, content});
        boxes.append({frame, legend->alignment()});
    }

    const QVector<QRect> rects =
        Map::layOutLegends(boxes, size() - QSize(0, _coveredHeight), LegendMargin, LegendGap);
    _placedLegends.clear();
    for (int i = 0; i < shown.size(); ++i) {
        if (rects[i].isNull())
            continue;

        PlacedLegend placed = shown[i];
        placed.frame = rects[i];
        placed.header.translate(rects[i].topLeft());
        placed.content.translate(rects[i].topLeft());
        _placedLegends.append(placed);
    }
    _legendsOutdated = false;
}

void Canvas::drawLegends(QPainter &painter)
{
    if (_legendsOutdated)
        layOutLegends();
    const Scheme::Legend &colors = Scheme::Current().legend;
    for (const PlacedLegend &placed : QVector<PlacedLegend>(_placedLegends)) {
        if (!_legends.contains(placed.legend))
            continue;

        painter.save();
        painter.setPen(colors.border);
        painter.setBrush(colors.background);
        painter.drawRect(placed.frame.adjusted(0, 0, -1, -1));
        painter.setPen(colors.header);
        painter.setFont(headerFont(_font));
        painter.drawText(placed.header, Qt::AlignCenter | Qt::TextSingleLine,
                         placed.legend->title());
        painter.setPen(colors.text);
        painter.setBrush(Qt::NoBrush);
        painter.setFont(_font);
        placed.legend->draw(placed.content, painter);
        painter.restore();
    }
}

QVector<QRect> Canvas::legendFrames() const
{
    QVector<QRect> frames;
    for (const PlacedLegend &placed : _placedLegends)
        frames.append(placed.frame);
    return frames;
}

Legend *Canvas::legendAt(const QPoint &position)
{
    if (_legendsOutdated)
        layOutLegends();
    for (const PlacedLegend &placed : qAsConst(_placedLegends)) {
        if (placed.frame.contains(position))
            return placed.legend;
    }
    return nullptr;
}

} // namespace Map
} // namespace Gui
} // namespace Tellarix
