// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/annotations.h>
#include <norvu/gui/map/layer.h>

#include <QPointer>

namespace Norvu {
namespace Gui {
namespace Map {

/**
 * Paints the labels that find room: first come, first served in the order in which they were added,
 * anew at each repaint. Symbols place their labels while they are painted, so this layer has to lie
 * above theirs.
 */
class NORVU_GUI_API AnnotationLayer : public Layer
{
public:
    /** @param annotations  not owned; null paints nothing */
    AnnotationLayer(QObject *parent, Annotations *annotations);

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    QPointer<Annotations> _annotations;
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
