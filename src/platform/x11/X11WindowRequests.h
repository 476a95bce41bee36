// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

namespace velkor::x11 {

class X11WindowCache;

// What this program asks of a managed window: through the window manager's
// EWMH messages while one runs, and of the window itself, as ICCCM lets a
// client do, while none does. A window that is gone is left alone.
class X11WindowRequests final
{
public:
    X11WindowRequests() = delete;

    // Raises the window and gives it the input focus.
    static void activate(X11WindowCache& cache, xcb_window_t window);
    // Raises the window to the top of the stack.
    static void raise(X11WindowCache& cache, xcb_window_t window);
    // Asks the window's client to close it.
    static void close(X11WindowCache& cache, xcb_window_t window);
};

} // namespace velkor::x11
