// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

struct _XDisplay;

namespace velkor::x11 {

inline constexpr xcb_window_t NoWindow = 0;

// Replies from xcb are malloc'ed; this frees them.
template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> Reply<T> reply(T* raw)
{
    return Reply<T>(raw, &std::free);
}

// The atoms the backend reads and sends, interned once.
enum class Atom
{
    NetSupported,
    NetSupportingWmCheck,
    NetClientList,
    NetClientListStacking,
    NetActiveWindow,
    NetCurrentDesktop,
    NetNumberOfDesktops,
    NetWmDesktop,
    NetWmPid,
    NetWmName,
    NetWmIcon,
    NetWmState,
    NetWmStateHidden,
    NetWmStateSkipTaskbar,
    NetWmStateSkipPager,
    NetWmStateSticky,
    NetWmWindowType,
    NetWmWindowTypeNormal,
    NetWmWindowTypeDialog,
    NetWmWindowTypeDock,
    NetWmWindowTypeDesktop,
    NetWmWindowTypeSplash,
    NetWmWindowTypeNotification,
    NetWmWindowTypeUtility,
    NetCloseWindow,
    NetRestackWindow,
    NetFrameExtents,
    KdeBlurBehindRegion,
    GtkApplicationId,
    Utf8String,
    CompoundText,
    WmState,
    WmChangeState,
    WmProtocols,
    WmTakeFocus,
    WmDeleteWindow,
    Count
};

// Qt's own xcb connection plus the interned atoms and the freshest server
// time seen, shared by every X11 backend object.
class X11Connection final
{
public:
    // Null when Qt runs on another platform plugin or has no connection.
    static std::shared_ptr<X11Connection> fromQt();

    // xlib: Qt's Xlib display on the same connection, when it has one; only
    // COMPOUND_TEXT needs it.
    X11Connection(xcb_connection_t* connection, xcb_window_t root, _XDisplay* xlib = nullptr);

    xcb_connection_t* get() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    // The number of root()'s screen, as selections such as _NET_WM_CM_S<n> name it.
    int screenNumber() const { return m_screenNumber; }
    xcb_atom_t atom(Atom which) const { return m_atoms[size_t(which)]; }
    bool hasExtension(const char* name) const;

    // The latest server timestamp seen in an event; the activation and
    // desktop requests carry it so the window manager treats them as user
    // actions.
    xcb_timestamp_t time() const { return m_lastTime; }
    void noteTime(xcb_timestamp_t time);

    // Sends an EWMH client message about window to the root window.
    void sendRootMessage(xcb_window_t window, Atom type, std::array<quint32, 5> data);

    // Sends a WM_PROTOCOLS message (WM_TAKE_FOCUS, WM_DELETE_WINDOW) to the
    // client that owns window.
    void sendProtocolMessage(xcb_window_t window, Atom protocol);

    // 32-bit values of type, at most maxValues of them: absent when the
    // window or the property is missing or the property has another type or
    // format. Any client may write any property; nothing read is trusted.
    std::optional<QList<quint32>> cardinals(xcb_window_t window, xcb_atom_t property,
                                            xcb_atom_t type, uint32_t maxValues = 4096) const;
    // The text of a STRING, UTF8_STRING or COMPOUND_TEXT property value, read
    // as the type requested (XCB_ATOM_ANY: any of the three): absent for any
    // other type or format, and for UTF-8 that does not decode. A value cut
    // short by the request's length keeps what decodes.
    std::optional<QString> text(const xcb_get_property_reply_t* reply, xcb_atom_t requested) const;
    void flush() const { xcb_flush(m_connection); }

private:
    void internAtoms();

    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    int m_screenNumber = 0;
    _XDisplay* m_xlib;
    std::array<xcb_atom_t, size_t(Atom::Count)> m_atoms{};
    xcb_timestamp_t m_lastTime = XCB_CURRENT_TIME;
};

// Reads a property reply as 32-bit values; empty for any other format.
QList<quint32> values32(const xcb_get_property_reply_t* reply);

} // namespace velkor::x11
