// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/memory.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Tellarix {
namespace Core {

void setUpMemory()
{
#ifdef __GLIBC__
    constexpr int MB = 1024 * 1024;
    // Heaps of single threads would grow by a page at a time, whatever the padding.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_TOP_PAD, 16 * MB);
    // A padding ends the adaption of these: they get the values that it would come to.
    mallopt(M_TRIM_THRESHOLD, 64 * MB);
    mallopt(M_MMAP_THRESHOLD, 32 * MB);
#endif
}

} // namespace Core
} // namespace Tellarix
