// SPDX-License-Identifier: LGPL-3.0-or-later

#include "hoverlayer.h"

#include <tellarix/qt/map/canvas.h>

#include <QPainter>

using namespace Tellarix;

namespace Workbench {

HoverLayer::HoverLayer(Norvu::Gui::AnnotationStyle *style, QObject *parent)
    : Layer(parent), _style(style)
{}

void HoverLayer::show(const QPointF &place, int gap, const QString &text)
{
    _place = place;
    _gap = gap;
    _text = text;
    emit updateRequested({});
}

void HoverLayer::hide()
{
    if (_text.isEmpty())
        return;

    _text.clear();
    emit updateRequested({});
}

void HoverLayer::draw(const Gui::Map::Canvas *canvas, QPainter &painter)
{
    QPoint pixel;
    if (_text.isEmpty() || !canvas->projection()->project(pixel, _place))
        return;

    painter.save();
    Norvu::Gui::AnnotationItem label;
    label.text = _text;
    label.highlighted = true;
    label.rect = _style->itemRect(painter, label, pixel - QPoint(0, _gap));
    // Near an edge it would be cut off.
    label.rect.moveLeft(qBound(0, label.rect.left(), canvas->size().width() - label.rect.width()));
    if (label.rect.top() < 0)
        label.rect.moveTop(pixel.y() + _gap);
    _style->draw(painter, label);
    painter.restore();
}

} // namespace Workbench
