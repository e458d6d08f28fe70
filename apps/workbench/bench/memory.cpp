// SPDX-License-Identifier: LGPL-3.0-or-later

#include "memory.h"

#include <tellarix/core/records/samplememory.h>

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Workbench {

void returnFreeMemory()
{
    Tellarix::SampleMemory::returnSpare();
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace Workbench
