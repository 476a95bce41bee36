// SPDX-License-Identifier: MIT
#include "platform/x11/X11Connection.h"

#include "platform/x11/X11CompoundText.h"

#include <QGuiApplication>
#include <QStringDecoder>
#include <cstring>

namespace velkor::x11 {

namespace {

constexpr std::array<const char*, size_t(Atom::Count)> AtomNames = {
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_CLIENT_LIST",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_ACTIVE_WINDOW",
    "_NET_CURRENT_DESKTOP",
    "_NET_NUMBER_OF_DESKTOPS",
    "_NET_WM_DESKTOP",
    "_NET_WM_PID",
    "_NET_WM_NAME",
    "_NET_WM_ICON",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_SKIP_PAGER",
    "_NET_WM_STATE_STICKY",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_SPLASH",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_NET_CLOSE_WINDOW",
    "_NET_RESTACK_WINDOW",
    "_NET_FRAME_EXTENTS",
    "_KDE_NET_WM_BLUR_BEHIND_REGION",
    "_GTK_APPLICATION_ID",
    "UTF8_STRING",
    "COMPOUND_TEXT",
    "WM_STATE",
    "WM_CHANGE_STATE",
    "WM_PROTOCOLS",
    "WM_TAKE_FOCUS",
    "WM_DELETE_WINDOW",
};

// Strict UTF-8: text that does not decode is not text. A value cut off by
// the request's length may end inside a character; that part is dropped.
std::optional<QString> fromStrictUtf8(QByteArrayView bytes, bool truncated)
{
    QStringDecoder decoder(QStringDecoder::Utf8, truncated ? QStringDecoder::Flag::Default
                                                           : QStringDecoder::Flag::Stateless);
    QString decoded = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return decoded;
}

} // namespace

std::shared_ptr<X11Connection> X11Connection::fromQt()
{
    auto* native =
        qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    // Under "offscreen" the interface can exist while the connection is null.
    if (!native || !native->connection())
        return nullptr;
    xcb_connection_t* connection = native->connection();
    const xcb_setup_t* setup = xcb_get_setup(connection);
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    if (!screens.rem)
        return nullptr;
    return std::make_shared<X11Connection>(connection, screens.data->root, native->display());
}

X11Connection::X11Connection(xcb_connection_t* connection, xcb_window_t root, _XDisplay* xlib)
    : m_connection(connection), m_root(root), m_xlib(xlib)
{
    int number = 0;
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem;
         xcb_screen_next(&it), ++number)
        if (it.data->root == root)
            m_screenNumber = number;
    internAtoms();
}

void X11Connection::internAtoms()
{
    std::array<xcb_intern_atom_cookie_t, size_t(Atom::Count)> cookies{};
    for (size_t i = 0; i < AtomNames.size(); ++i)
        cookies[i] =
            xcb_intern_atom(m_connection, 0, uint16_t(std::strlen(AtomNames[i])), AtomNames[i]);
    for (size_t i = 0; i < AtomNames.size(); ++i) {
        auto r = reply(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        m_atoms[i] = r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
    }
}

bool X11Connection::hasExtension(const char* name) const
{
    auto cookie = xcb_query_extension(m_connection, uint16_t(std::strlen(name)), name);
    auto r = reply(xcb_query_extension_reply(m_connection, cookie, nullptr));
    return r && r->present;
}

void X11Connection::noteTime(xcb_timestamp_t time)
{
    // Server time wraps after 49 days; a time "behind" by more than half the
    // range is a wrap, not an old event.
    if (time != XCB_CURRENT_TIME && qint32(time - m_lastTime) > 0)
        m_lastTime = time;
    else if (m_lastTime == XCB_CURRENT_TIME)
        m_lastTime = time;
}

void X11Connection::sendRootMessage(xcb_window_t window, Atom type, std::array<quint32, 5> data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(type);
    for (size_t i = 0; i < data.size(); ++i)
        event.data.data32[i] = data[i];
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
}

void X11Connection::sendProtocolMessage(xcb_window_t window, Atom protocol)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(Atom::WmProtocols);
    event.data.data32[0] = atom(protocol);
    event.data.data32[1] = m_lastTime;
    xcb_send_event(m_connection, 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
}

std::optional<QList<quint32>> X11Connection::cardinals(xcb_window_t window, xcb_atom_t property,
                                                       xcb_atom_t type, uint32_t maxValues) const
{
    auto cookie = xcb_get_property(m_connection, 0, window, property, type, 0, maxValues);
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(m_connection, cookie, &error));
    std::free(error); // a window that is gone has no properties
    if (!r || r->type != type || r->format != 32)
        return std::nullopt;
    return values32(r.get());
}

std::optional<QString> X11Connection::text(const xcb_get_property_reply_t* r,
                                           xcb_atom_t requested) const
{
    if (!r || r->format != 8 || (requested != XCB_ATOM_ANY && r->type != requested))
        return std::nullopt;
    const QByteArrayView bytes(static_cast<const char*>(xcb_get_property_value(r)),
                               xcb_get_property_value_length(r));
    if (r->type == XCB_ATOM_STRING)
        return QString::fromLatin1(bytes);
    if (r->type == atom(Atom::Utf8String))
        return fromStrictUtf8(bytes, r->bytes_after > 0);
    if (r->type == atom(Atom::CompoundText))
        return decodeCompoundText(m_xlib, bytes);
    return std::nullopt;
}

QList<quint32> values32(const xcb_get_property_reply_t* r)
{
    QList<quint32> out;
    if (!r || r->format != 32)
        return out;
    const int n = xcb_get_property_value_length(r) / 4;
    const auto* data = static_cast<const quint32*>(xcb_get_property_value(r));
    out.reserve(n);
    for (int i = 0; i < n; ++i)
        out.append(data[i]);
    return out;
}

} // namespace velkor::x11
