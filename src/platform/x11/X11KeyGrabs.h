// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <xcb/xcb.h>

namespace velkor {

// One passive key grab on the root window, made in every Caps Lock / Num
// Lock variant so that those locks never hide a key from us.
struct X11KeyGrab
{
    xcb_keycode_t keycode = 0;
    uint16_t modifiers = 0;
    QString name; // for logs, e.g. "Super+Tab (keycode 23)"; changes with the layout

    // The same grab whatever the layout calls the key.
    friend bool operator==(const X11KeyGrab& a, const X11KeyGrab& b)
    {
        return a.keycode == b.keycode && a.modifiers == b.modifiers;
    }
};

// Places and removes passive grabs, checking each request on its own so
// that a refusal (another client holds the key) is an answer, not a crash.
class X11KeyGrabs final
{
public:
    X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root);

    // The Lock/NumLock variants of modifiers (without duplicates when Num
    // Lock has no modifier bit).
    static QList<uint16_t> lockVariants(uint16_t modifiers, uint16_t numLockMask);

    // False when the server refused any variant; then none is left in place.
    bool place(const X11KeyGrab& grab, uint16_t numLockMask);
    void remove(const X11KeyGrab& grab, uint16_t numLockMask);

private:
    xcb_connection_t* m_connection;
    xcb_window_t m_root;
};

} // namespace velkor
