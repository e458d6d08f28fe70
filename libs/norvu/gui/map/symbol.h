// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/map/symbol.h>

namespace Norvu {
namespace Gui {
namespace Map {

/** A symbol of a SymbolLayer, which may cast a shadow. */
class NORVU_GUI_API Symbol : public Tellarix::Gui::Map::Symbol
{
public:
    Symbol();
    /** @param longitude, latitude  in degrees */
    Symbol(double longitude, double latitude);

    /** Paints the shadow for position(); all shadows lie below all symbols. */
    virtual void drawShadow(QPainter &painter) = 0;
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
