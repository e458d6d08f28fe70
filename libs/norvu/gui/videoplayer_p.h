// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/api.h>

#include <tellarix/core/time.h>

namespace Norvu {
namespace Gui {

/** Where players take the present from; null stands for the system's clock. */
NORVU_GUI_API void setVideoPlayerClock(Tellarix::Core::Time (*clock)());
Tellarix::Core::Time videoPlayerNow();

} // namespace Gui
} // namespace Norvu
