// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/layer.h>

namespace Norvu {
namespace Gui {
namespace Map {

Layer::Layer(QObject *parent) : Tellarix::Gui::Map::Layer(parent)
{
    unsetCursorShape();
}

} // namespace Map
} // namespace Gui
} // namespace Norvu
