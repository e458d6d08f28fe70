// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "bench/panelregistry.h"

namespace Workbench {

/** The panels of new windows. Plug-ins add theirs before a window is made. */
PanelRegistry &panelRegistry();

} // namespace Workbench
