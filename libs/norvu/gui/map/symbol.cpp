// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/map/symbol.h>

namespace Norvu {
namespace Gui {
namespace Map {

Symbol::Symbol() : Tellarix::Gui::Map::Symbol(nullptr)
{}

Symbol::Symbol(double longitude, double latitude)
    : Tellarix::Gui::Map::Symbol(longitude, latitude, nullptr)
{}

} // namespace Map
} // namespace Gui
} // namespace Norvu
