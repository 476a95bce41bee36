// SPDX-License-Identifier: MIT
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

namespace velkor {

// The four private window-server entry points of the SkyLight framework,
// bound once for the life of the process. A missing library or symbol leaves
// its entry null and is logged once.
struct MacSkyLight final
{
    using MainConnectionFn = int32_t (*)();
    // Returns the display list retained: the caller releases it.
    using CopyDisplaySpacesFn = CFArrayRef (*)(int32_t connection);
    using SetCurrentSpaceFn = void (*)(int32_t connection, CFStringRef display, uint64_t space);
    using MoveWindowsFn = void (*)(int32_t connection, CFArrayRef windows, uint64_t space);

    MainConnectionFn mainConnection = nullptr;
    CopyDisplaySpacesFn copyDisplaySpaces = nullptr;
    SetCurrentSpaceFn setCurrentSpace = nullptr;
    MoveWindowsFn moveWindows = nullptr;

    // Bound on first use; safe against a concurrent first use.
    static const MacSkyLight& shared();

    // The main connection when bound, else 0.
    int32_t connection() const { return mainConnection ? mainConnection() : 0; }
};

} // namespace velkor
