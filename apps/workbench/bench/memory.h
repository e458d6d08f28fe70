// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

namespace Workbench {

/** Hands memory that is free back to the system, as far as the C library lets; to be called when
 *  much was freed. It takes some milliseconds for each gigabyte. */
void returnFreeMemory();

} // namespace Workbench
