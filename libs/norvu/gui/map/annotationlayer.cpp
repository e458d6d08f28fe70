// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/annotationlayer.h>
#include <norvu/gui/map/labelbins_p.h>

#include <tellarix/qt/map/canvas.h>

#include <QFontMetrics>
#include <QPainter>

namespace Norvu {
namespace Gui {
namespace Map {

AnnotationLayer::AnnotationLayer(QObject *parent, Annotations *annotations)
    : Layer(parent), _annotations(annotations)
{}

void AnnotationLayer::draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter)
{
    if (!_annotations)
        return;

    painter.save();
    LabelBins bins(canvas->buffer().size(), painter.fontMetrics().height());
    // Below a legend a label is but a smudge.
    for (const QRect &frame : canvas->legendFrames())
        bins.place(frame);
    const QList<AnnotationItem *> items = _annotations->items();
    for (const AnnotationItem *item : items) {
        // An item without a place or a style would leave a mark in the corner, or end the process.
        const bool paintable = item->visible && item->style && !item->rect.isNull();
        if (paintable && bins.place(item->rect))
            item->style->draw(painter, *item);
    }
    painter.restore();
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
