// SPDX-License-Identifier: MIT
#pragma once

namespace velkor {

// Hands the memory the C library's allocator keeps after frees back to the
// system. glibc keeps a freed heap for reuse, so what the overlay's first
// showings took would stay resident for good; elsewhere this does nothing.
void releaseFreeHeap();

} // namespace velkor
