// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/baseobject.h>
#include <tellarix/qt/api.h>

class QPainter;

namespace Tellarix {
namespace Gui {
namespace Map {

class Canvas;
class Symbol;

/** Paints something about a symbol, such as a ring around it; several symbols may share one. */
class TELLARIX_GUI_API Decorator : public Core::BaseObject
{
public:
    ~Decorator() override;

    /** Called by Symbol::draw() before the symbol paints itself. */
    virtual void draw(const Canvas *canvas, QPainter &painter, const Symbol &symbol) = 0;
};

} // namespace Map
} // namespace Gui
} // namespace Tellarix
