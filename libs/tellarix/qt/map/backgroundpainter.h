// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

class QImage;

namespace Tellarix {
namespace Gui {
namespace Map {

class Projection;

/**
 * Paints what lies below all layers of a map: land, water, borders.
 *
 * A canvas may paint several views at the same time in threads of its own, long after it was given
 * the painter. So a painter never changes once it has been set up: colours are taken beforehand,
 * and another scheme asks for another painter.
 */
class TELLARIX_GUI_API BackgroundPainter
{
public:
    virtual ~BackgroundPainter();

    /**
     * Paints each pixel of @p image, opaquely. Thread-safe.
     * @param image  of QImage::Format_ARGB32_Premultiplied and the size of the projection's view,
     *               never empty; its pixels are undefined at first
     */
    virtual void paint(QImage &image, const Projection &projection) const = 0;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
