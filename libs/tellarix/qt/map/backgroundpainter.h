// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/qt/api.h>

class QImage;

namespace Tellarix {
namespace Gui {
namespace Map {

class Projection;

/** Paints what lies below all layers of a map. */
class BackgroundPainter
{
public:
    virtual ~BackgroundPainter() = default;

    /** Fills @p image, which has the size of the projection's view and the format
     *  QImage::Format_ARGB32_Premultiplied. Called by any thread, also by several at once. */
    virtual void paint(QImage &image, const Projection &projection) const = 0;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
