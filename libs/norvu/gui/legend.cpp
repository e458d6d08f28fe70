// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/legend.h>

#include <tellarix/qt/map/canvas.h>
#include <tellarix/qt/scheme.h>

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace Norvu {
namespace Gui {

namespace {

using Tellarix::Gui::Map::Canvas;

constexpr int Padding = 6;
constexpr int TextGap = 6; // Between a square and its text.

QFont weighted(QFont font, QFont::Weight weight)
{
    font.setWeight(weight);
    return font;
}

/** A coordinate of a frame of some extent; negative ones count from the far edge. */
int placed(int coordinate, int extent, int room)
{
    return coordinate < 0 ? room - extent + coordinate + 1 : coordinate;
}

} // namespace

Legend::Legend(QString title) : Tellarix::Gui::Map::Symbol(nullptr), _title(std::move(title))
{
    init();
}

Legend::~Legend() = default;

void Legend::init()
{
    _pos = QPoint(10, 20);
    _itemSize = 12;
    _spacing = QSize(10, 10);
    _widgetSize = QSize(0, 0);
    setPriority(Highest);
}

void Legend::setGradient(const Tellarix::Gui::Gradient &gradient)
{
    _content.items.clear();
    for (auto stop = gradient.cbegin(); stop != gradient.cend(); ++stop) {
        const QString key = QString("%1").arg(stop.key(), 0, 'g', -1, QLatin1Char(' '));
        _content.items.append({{key, QString()}, stop.value().first});
    }
}

void Legend::setPos(const QPoint &pos)
{
    _pos = pos;
}

void Legend::setItemSize(int size)
{
    _itemSize = size;
}

QPoint Legend::contentPos() const
{
    return _content.contentPos;
}

void Legend::attachWidget(QWidget *widget)
{
    _content.widget = widget;
    _widgetSize = widget ? widget->sizeHint() : QSize(0, 0);
    if (widget)
        widget->move(_content.contentPos);
}

void Legend::setVisible(bool visible)
{
    Symbol::setVisible(visible);
    if (_content.widget)
        _content.widget->setVisible(visible);
}

bool Legend::isInside(int, int) const
{
    return false;
}

void Legend::calculateMapPosition(const Canvas *canvas)
{
    const QSize widgetSize = _content.widget ? _widgetSize : QSize(0, 0);
    _content.updateGeometry(*this, _title, canvas, _pos, widgetSize);
}

void Legend::customDraw(const Canvas *canvas, QPainter &painter)
{
    painter.save();
    // The font in which the frame was measured.
    painter.setFont(canvas->font());
    _content.draw(*this, _title, painter);
    painter.restore();
}

void Legend::Content::updateGeometry(const Legend &legend, const QString &title,
                                     const Canvas *canvas, const QPoint &pos, const QSize &size)
{
    const QFontMetrics metrics(canvas->font());
    int labelWidth = 0;
    for (const auto &item : qAsConst(items))
        labelWidth = std::max(labelWidth, metrics.horizontalAdvance(item.first.first));
    const int textWidth = std::max(labelWidth, size.width());

    const int count = items.size();
    const int itemSize = legend._itemSize;
    const int rowsHeight = (count - 1) * legend._spacing.width() + count * itemSize;
    int extra = itemSize < 1 ? 0 : itemSize + TextGap;
    int titleHeight = 0;
    int rowTop = 0;
    QSize frame(textWidth + 2 * Padding + extra, std::max(rowsHeight, size.height()) + 2 * Padding);
    if (!title.isEmpty()) {
        const QRect ink = QFontMetrics(weighted(canvas->font(), QFont::Bold)).boundingRect(title);
        titleHeight = ink.height() + 2 * Padding;
        rowTop = titleHeight + itemSize;
        frame = QSize(std::max(ink.width() + 2 * Padding, frame.width()), frame.height() + rowTop);
        extra = frame.width() - (textWidth + 2 * Padding);
    }

    const QSize room = canvas->buffer().size();
    const QPoint corner(placed(pos.x(), frame.width(), room.width()),
                        placed(pos.y(), frame.height(), room.height()));
    frameRect = QRect(corner, frame);
    titleRect = QRect(corner, QSize(frame.width(), titleHeight));
    contentPos = corner + QPoint(std::min(extra, itemSize) + Padding, rowTop + Padding);
    // The edge of the canvas must not cut digits off.
    const int rowWidth = itemSize + TextGap + labelWidth;
    rowLeft = std::max(std::min(contentPos.x(), room.width() - rowWidth), corner.x() + Padding);
    if (widget)
        widget->move(contentPos);
}

void Legend::Content::draw(const Legend &legend, const QString &title, QPainter &painter) const
{
    const Tellarix::Gui::Scheme::Legend &colors = Tellarix::Gui::Scheme::Current().legend;
    const QFont font = painter.font();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(colors.border);
    painter.setBrush(colors.background);
    painter.drawRect(frameRect);
    if (!title.isEmpty()) {
        painter.setFont(weighted(font, QFont::Bold));
        painter.setPen(colors.header);
        painter.drawText(titleRect, Qt::AlignHCenter | Qt::AlignVCenter, title);
    }

    painter.setFont(weighted(font, QFont::Normal));
    QPoint pos(rowLeft, contentPos.y());
    for (int i = items.size() - 1; i >= 0; --i) {
        const auto &texts = items[i].first;
        legend.drawItem(painter, pos, items[i].second, texts.second, texts.first);
        pos.ry() += legend._itemSize + legend._spacing.width();
    }
}

void Legend::drawItem(QPainter &painter, const QPoint &pos, const QColor &color, const QString &,
                      const QString &text) const
{
    painter.setPen(Qt::black);
    painter.setBrush(color);
    painter.drawRect(QRect(pos, QSize(_itemSize, _itemSize)));
    painter.setPen(Tellarix::Gui::Scheme::Current().legend.text);
    painter.drawText(pos + QPoint(_itemSize + TextGap, _itemSize), text);
}

} // namespace Gui
} // namespace Norvu
