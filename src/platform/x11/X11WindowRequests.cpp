// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowRequests.h"

#include "platform/x11/X11WindowCache.h"

namespace velkor::x11 {

namespace {

// Without a window manager the requests go to windows that may vanish at
// any moment; their errors are expected and dropped, without a round trip.
void forgetErrors(X11Connection& x, xcb_void_cookie_t cookie)
{
    xcb_discard_reply(x.get(), cookie.sequence);
}

void restackAbove(X11Connection& x, xcb_window_t window)
{
    const uint32_t above = XCB_STACK_MODE_ABOVE;
    forgetErrors(
        x, xcb_configure_window_checked(x.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above));
}

} // namespace

void X11WindowRequests::activate(X11WindowCache& cache, xcb_window_t window)
{
    const X11Client* client = cache.client(window);
    if (!client)
        return;
    X11Connection& x = cache.connection();
    if (cache.hasWindowManager()) {
        // Source indication 2: a pager acting for the user. Windows that take
        // no input focus are raised but never become active.
        x.sendRootMessage(window, Atom::NetActiveWindow, {2, x.time(), 0, 0, 0});
        x.flush();
        return;
    }
    restackAbove(x, window);
    // ICCCM's focus models: a window with the input hint is given the focus,
    // one that lists WM_TAKE_FOCUS is asked to take it (both, when both).
    if (client->acceptsInput)
        forgetErrors(x, xcb_set_input_focus_checked(x.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window,
                                                    x.time()));
    if (client->takesFocus)
        x.sendProtocolMessage(window, Atom::WmTakeFocus);
    x.flush();
    if (client->acceptsInput || client->takesFocus)
        cache.noteFocused(window);
}

void X11WindowRequests::raise(X11WindowCache& cache, xcb_window_t window)
{
    if (!cache.client(window))
        return;
    X11Connection& x = cache.connection();
    if (cache.hasWindowManager())
        x.sendRootMessage(window, Atom::NetRestackWindow,
                          {2, NoWindow, XCB_STACK_MODE_ABOVE, 0, 0});
    else
        restackAbove(x, window);
    x.flush();
}

void X11WindowRequests::close(X11WindowCache& cache, xcb_window_t window)
{
    const X11Client* client = cache.client(window);
    if (!client)
        return;
    X11Connection& x = cache.connection();
    if (cache.hasWindowManager())
        x.sendRootMessage(window, Atom::NetCloseWindow, {x.time(), 2, 0, 0, 0});
    else if (client->deletesWindow)
        x.sendProtocolMessage(window, Atom::WmDeleteWindow);
    x.flush();
}

} // namespace velkor::x11
