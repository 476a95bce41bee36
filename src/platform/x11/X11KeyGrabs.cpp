// SPDX-License-Identifier: MIT
#include "platform/x11/X11KeyGrabs.h"

#include <cstdlib>

namespace velkor {

X11KeyGrabs::X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root)
    : m_connection(connection), m_root(root)
{}

QList<uint16_t> X11KeyGrabs::lockVariants(uint16_t modifiers, uint16_t numLockMask)
{
    QList<uint16_t> variants;
    for (const uint16_t locks : {uint16_t(0), uint16_t(XCB_MOD_MASK_LOCK), numLockMask,
                                 uint16_t(XCB_MOD_MASK_LOCK | numLockMask)}) {
        const uint16_t variant = modifiers | locks;
        if (!variants.contains(variant))
            variants.append(variant);
    }
    return variants;
}

bool X11KeyGrabs::place(const X11KeyGrab& grab, uint16_t numLockMask)
{
    const QList<uint16_t> variants = lockVariants(grab.modifiers, numLockMask);
    QList<xcb_void_cookie_t> cookies;
    for (const uint16_t modifiers : variants) {
        // Asynchronous: the keyboard never freezes, whatever happens to us.
        cookies.append(xcb_grab_key_checked(m_connection, 0, m_root, modifiers, grab.keycode,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool refused = false;
    for (const xcb_void_cookie_t cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(m_connection, cookie)) {
            refused = true;
            free(error);
        }
    }
    if (refused)
        remove(grab, numLockMask);
    return !refused;
}

void X11KeyGrabs::remove(const X11KeyGrab& grab, uint16_t numLockMask)
{
    // Ungrabbing a key we do not hold is harmless, and another client's
    // grab of the same key is never touched by it.
    for (const uint16_t modifiers : lockVariants(grab.modifiers, numLockMask))
        xcb_ungrab_key(m_connection, grab.keycode, m_root, modifiers);
    xcb_flush(m_connection);
}

} // namespace velkor
