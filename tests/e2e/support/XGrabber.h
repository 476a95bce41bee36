// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <xcb/xcb.h>

namespace velkor::e2e {

// Another X client on the test desktop that holds what users' desktops
// hold: a key (a hotkey daemon, GNOME's Super+Tab) or the whole keyboard (a
// screen locker, an open menu, a VM viewer). Everything it holds goes with it.
class XGrabber final
{
public:
    explicit XGrabber(const QString& display);
    ~XGrabber();
    XGrabber(const XGrabber&) = delete;
    XGrabber& operator=(const XGrabber&) = delete;

    void grabKey(int keycode, uint16_t modifiers);
    void ungrabKey(int keycode, uint16_t modifiers);
    // True when the keyboard was free and is now held.
    bool grabKeyboard();
    void ungrabKeyboard();
    // Whether the keyboard is free to take; let go again at once.
    bool keyboardIsFree();

    xcb_window_t root() const { return m_root; }

private:
    void sync();

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
};

} // namespace velkor::e2e
