// SPDX-License-Identifier: MIT
#include "platform/HeapRelease.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace velkor {

void releaseFreeHeap()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

} // namespace velkor
