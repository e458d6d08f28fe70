// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowaddition.h"

namespace Workbench {

void RowAddition::followUnit(Norvu::Gui::Trace *)
{}

} // namespace Workbench
