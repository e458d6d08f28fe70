// SPDX-License-Identifier: LGPL-3.0-or-later

#include "rowaddition.h"

namespace Workbench {

bool RowAddition::areAmplitudesShown(const Tellarix::Gui::RecordWidget *) const
{
    return true;
}

void RowAddition::finish(Tellarix::Gui::RecordWidget *)
{}

void RowAddition::followUnit(Norvu::Gui::Trace *)
{}

} // namespace Workbench
