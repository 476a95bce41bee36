// SPDX-License-Identifier: MIT
#include "platform/x11/X11FocusedKeyboardState.h"

#include <QGuiApplication>
#include <QWindow>

// xcb's XKB header names a field "explicit", which C++ reserves.
#define explicit xkb_explicit
#include <xcb/xkb.h>
#undef explicit

namespace velkor::x11 {

namespace {

// What Qt reads from a state event: the modifiers and the group, pressed,
// latched and locked.
constexpr uint16_t TranslationParts =
    XCB_XKB_STATE_PART_MODIFIER_BASE | XCB_XKB_STATE_PART_MODIFIER_LATCH |
    XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_GROUP_BASE |
    XCB_XKB_STATE_PART_GROUP_LATCH | XCB_XKB_STATE_PART_GROUP_LOCK;
constexpr uint16_t AllParts = XCB_XKB_STATE_PART_POINTER_BUTTONS * 2 - 1;

} // namespace

X11FocusedKeyboardState::X11FocusedKeyboardState(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    // Qt has set XKB up on its connection by now, or the server has none.
    const xcb_query_extension_reply_t* xkb =
        xcb_get_extension_data(m_connection->get(), &xcb_xkb_id);
    if (!xkb || !xkb->present)
        return;
    m_firstEvent = xkb->first_event;
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &X11FocusedKeyboardState::follow);
    follow(QGuiApplication::focusWindow());
}

X11FocusedKeyboardState::~X11FocusedKeyboardState()
{
    // Qt's connection outlives this only while the application does.
    if (!m_listening && QCoreApplication::instance())
        listen(true);
}

void X11FocusedKeyboardState::follow(QWindow* focused)
{
    const bool listen = focused != nullptr;
    if (listen == m_listening)
        return;
    this->listen(listen);
    if (listen)
        tellState(focused);
}

void X11FocusedKeyboardState::listen(bool on)
{
    m_listening = on;
    xcb_xkb_select_events_details_t details{};
    details.affectState = AllParts;
    details.stateDetails = on ? TranslationParts : 0;
    xcb_xkb_select_events_aux(m_connection->get(), XCB_XKB_ID_USE_CORE_KBD,
                              XCB_XKB_EVENT_TYPE_STATE_NOTIFY, 0, 0, 0, 0, &details);
    xcb_flush(m_connection->get());
}

void X11FocusedKeyboardState::tellState(QWindow* window)
{
    // Asked after listening again, so that a later change comes after it.
    xcb_connection_t* c = m_connection->get();
    auto state =
        reply(xcb_xkb_get_state_reply(c, xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (!state)
        return;
    // The state as a state event, sent to a window of Qt's: with no event
    // mask, the server hands it to the client that made the window.
    xcb_xkb_state_notify_event_t event{};
    event.response_type = m_firstEvent;
    event.xkbType = XCB_XKB_STATE_NOTIFY;
    event.time = XCB_CURRENT_TIME;
    event.deviceID = state->deviceID;
    event.mods = state->mods;
    event.baseMods = state->baseMods;
    event.latchedMods = state->latchedMods;
    event.lockedMods = state->lockedMods;
    event.group = state->group;
    event.baseGroup = state->baseGroup;
    event.latchedGroup = state->latchedGroup;
    event.lockedGroup = state->lockedGroup;
    event.compatState = state->compatState;
    event.grabMods = state->grabMods;
    event.compatGrabMods = state->compatGrabMods;
    event.lookupMods = state->lookupMods;
    event.compatLoockupMods = state->compatLookupMods;
    event.ptrBtnState = state->ptrBtnState;
    event.changed = TranslationParts;
    static_assert(sizeof(event) == 32, "an X event is 32 bytes");
    xcb_send_event(c, 0, xcb_window_t(window->winId()), XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(c);
}

} // namespace velkor::x11
