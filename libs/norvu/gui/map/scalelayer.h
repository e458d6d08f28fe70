// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/map/layer.h>

#include <QRect>
#include <QString>

namespace Norvu {
namespace Gui {
namespace Map {

/** A bar of four segments of a round length, about 150 pixels long. */
struct ScaleBar
{
    double segmentKm{0}; /**< 1 to 10 times a power of ten */
    double totalKm{0};
    int segmentLength{0}; /**< in pixels, rounded down */
    int length{0};        /**< the same of the whole bar, which the segments may fall short of */
};

/** The bar for a map of some pixels per km, which have to be finite and above 0. */
NORVU_GUI_API ScaleBar scaleBar(double pixelsPerKm);

/** A length as the layer tells it, in metres below 1 km. */
NORVU_GUI_API QString scaleText(double kilometers);

/** A rectangle moved to the corners and edges of a canvas, 10 pixels away from them. Top goes
 * before bottom before middle, left before right before middle; without a flag it stays. */
NORVU_GUI_API QRect alignedOnCanvas(QRect rect, const QSize &canvas, Qt::Alignment alignment);

/** Draws the length of a bar on the ground, measured in the middle of the map. */
class NORVU_GUI_API ScaleLayer : public Layer
{
    // Its texts are translated in the context of the layers that it derives from.

public:
    /** @param alignment  corner or edge of the canvas */
    explicit ScaleLayer(QObject *parent = nullptr,
                        Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignBottom);

    void draw(const Tellarix::Gui::Map::Canvas *canvas, QPainter &painter) override;

private:
    Qt::Alignment _alignment;
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
