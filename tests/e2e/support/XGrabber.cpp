// SPDX-License-Identifier: MIT
#include "XGrabber.h"

#include <cstdlib>

namespace velkor::e2e {

XGrabber::XGrabber(const QString& display)
    : m_connection(xcb_connect(display.toLatin1().constData(), nullptr)),
      m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
{}

XGrabber::~XGrabber()
{
    xcb_disconnect(m_connection);
}

void XGrabber::sync()
{
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

void XGrabber::grabKey(int keycode, uint16_t modifiers)
{
    xcb_grab_key(m_connection, 0, m_root, modifiers, xcb_keycode_t(keycode), XCB_GRAB_MODE_ASYNC,
                 XCB_GRAB_MODE_ASYNC);
    sync();
}

void XGrabber::ungrabKey(int keycode, uint16_t modifiers)
{
    xcb_ungrab_key(m_connection, xcb_keycode_t(keycode), m_root, modifiers);
    sync();
}

bool XGrabber::grabKeyboard()
{
    auto* reply =
        xcb_grab_keyboard_reply(m_connection,
                                xcb_grab_keyboard(m_connection, 0, m_root, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr);
    const bool held = reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(reply);
    return held;
}

void XGrabber::ungrabKeyboard()
{
    xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
    sync();
}

bool XGrabber::keyboardIsFree()
{
    const bool free = grabKeyboard();
    ungrabKeyboard();
    return free;
}

} // namespace velkor::e2e
