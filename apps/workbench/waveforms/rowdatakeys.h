// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <norvu/gui/trace.h>

namespace Workbench {

/** What rows of waveforms carry beside the keys of Norvu::Gui::TraceDataKey. */
enum RowDataKey
{
    OpenedKey = 5, /**< when it came, counted from 0 */
    MisfitKey = 6, /**< why it isn't filtered; empty if it is */
    PlaceKey = 7,  /**< where it was put last */
};

/** "Z" of "BHZ". */
inline QString componentOf(const Norvu::Gui::Trace &row)
{
    return row.data(Norvu::Gui::TraceChannelCode).toString().right(1);
}

} // namespace Workbench
