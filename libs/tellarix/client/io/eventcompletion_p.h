// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <tellarix/core/datamodel/event.h>

namespace Tellarix {
namespace IO {

/**
 * Gives an event what its source left out: an id of its own made of its origin, ids for solutions
 * that have none, and preferred ids where none is named or the named solution isn't there.
 * @return false if the event had no id
 */
bool completeEvent(DataModel::Event &event);

} // namespace IO
} // namespace Tellarix
