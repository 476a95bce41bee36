// SPDX-License-Identifier: MIT
#include "platform/x11/X11SelectionWatch.h"

#include <QCoreApplication>
#include <xcb/xfixes.h>

namespace velkor::x11 {

X11SelectionWatch::X11SelectionWatch(std::shared_ptr<X11Connection> connection,
                                     const QByteArray& prefix)
    : m_connection(std::move(connection))
{
    xcb_connection_t* c = m_connection->get();
    const QByteArray name = prefix + QByteArray::number(m_connection->screenNumber());
    auto atom = reply(xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, uint16_t(name.size()), name.data()), nullptr));
    if (!atom)
        return;
    m_selection = atom->atom;

    const xcb_query_extension_reply_t* xfixes = xcb_get_extension_data(c, &xcb_xfixes_id);
    if (xfixes && xfixes->present) {
        // The version must be asked before any other XFixes request.
        auto version = reply(xcb_xfixes_query_version_reply(
            c, xcb_xfixes_query_version(c, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION),
            nullptr));
        if (version && version->major_version >= 1) {
            m_firstEvent = xfixes->first_event;
            xcb_xfixes_select_selection_input(
                c, m_connection->root(), m_selection,
                XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
            QCoreApplication::instance()->installNativeEventFilter(this);
        }
    }
    // Read after selecting the events, so that no change falls in between.
    readOwner();
}

X11SelectionWatch::~X11SelectionWatch()
{
    if (auto* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

void X11SelectionWatch::readOwner()
{
    xcb_connection_t* c = m_connection->get();
    auto owner =
        reply(xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, m_selection), nullptr));
    m_owned = owner && owner->owner != NoWindow;
}

bool X11SelectionWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != m_firstEvent + XCB_XFIXES_SELECTION_NOTIFY)
        return false;
    auto* notify = reinterpret_cast<xcb_xfixes_selection_notify_event_t*>(event);
    if (notify->selection != m_selection || notify->window != m_connection->root())
        return false;
    // Asked again rather than read from the event: a rare round trip, and
    // right whatever the kind of change.
    const bool before = m_owned;
    readOwner();
    if (m_owned != before)
        emit ownershipChanged(m_owned);
    return false; // Qt watches some selections itself
}

} // namespace velkor::x11
