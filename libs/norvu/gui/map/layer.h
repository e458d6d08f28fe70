// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/qt/map/layer.h>

namespace Norvu {
namespace Gui {
namespace Map {

/** A layer that leaves the mouse cursor as it is. */
class NORVU_GUI_API Layer : public Tellarix::Gui::Map::Layer
{
public:
    explicit Layer(QObject *parent = nullptr);
};

} // namespace Map
} // namespace Gui
} // namespace Norvu
