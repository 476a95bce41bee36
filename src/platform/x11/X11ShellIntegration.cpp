// SPDX-License-Identifier: MIT
#include "platform/x11/X11ShellIntegration.h"

#include "platform/x11/Gio.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11FocusedKeyboardState.h"
#include "platform/x11/X11SelectionWatch.h"
#include "platform/x11/X11WindowCache.h"
#include "platform/x11/X11WindowIcon.h"
#include "platform/x11/XdgDesktopEntry.h"
#include "platform/x11/XdgDesktopFiles.h"

#include <QFileInfo>
#include <QSystemTrayIcon>
#include <QWindow>
#include <array>

namespace velkor::x11 {

namespace {

// _NET_WM_ICON commonly holds several sizes up to 256 × 256; this reads them
// all (about 90,000 values) with room to spare.
constexpr quint32 MaxIconValues = 1u << 18;

} // namespace

X11ShellIntegration::X11ShellIntegration(std::shared_ptr<X11Connection> connection,
                                         std::shared_ptr<const X11WindowCache> windows)
    : m_connection(std::move(connection)), m_windows(std::move(windows)),
      m_compositor(std::make_unique<X11SelectionWatch>(m_connection, "_NET_WM_CM_S")),
      m_trayHost(std::make_unique<X11SelectionWatch>(m_connection, "_NET_SYSTEM_TRAY_S")),
      m_keyboardState(std::make_unique<X11FocusedKeyboardState>(m_connection))
{
    readBlurSupport();
    // A compositor that starts may be the window manager itself (KWin), with
    // a new list of what it supports.
    QObject::connect(m_compositor.get(), &X11SelectionWatch::ownershipChanged, m_compositor.get(),
                     [this] { readBlurSupport(); });
}

X11ShellIntegration::~X11ShellIntegration() = default;

void X11ShellIntegration::prepareOverlayWindow(QWindow* window)
{
    if (!window)
        return;
    window->setFlags(window->flags() | Qt::Tool | Qt::FramelessWindowHint |
                     Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus |
                     Qt::X11BypassWindowManagerHint);
    // Qt finds a window's frame in _NET_FRAME_EXTENTS or else by walking the
    // window tree, several round trips after every move, resize and showing.
    // No window manager frames the overlay: its extents are zero.
    if (!m_connection)
        return;
    xcb_connection_t* c = m_connection->get();
    const auto id = xcb_window_t(window->winId());
    const std::array<quint32, 4> noFrame{};
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, id, m_connection->atom(Atom::NetFrameExtents),
                        XCB_ATOM_CARDINAL, 32, noFrame.size(), noFrame.data());
    // Qt hears of every property written on its windows, and the overlay's
    // own are written at each showing and resize (size hints, state, user
    // time): each comes back as an event, and the state as a read too. No
    // window manager reads them on an override-redirect window, and nothing
    // else writes them.
    auto attributes =
        reply(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id), nullptr));
    if (attributes && (attributes->your_event_mask & XCB_EVENT_MASK_PROPERTY_CHANGE)) {
        const quint32 mask = attributes->your_event_mask & ~quint32(XCB_EVENT_MASK_PROPERTY_CHANGE);
        xcb_change_window_attributes(c, id, XCB_CW_EVENT_MASK, &mask);
    }
}

bool X11ShellIntegration::isCompositing() const
{
    return m_compositor->isOwned();
}

void X11ShellIntegration::watchCompositing(QObject* receiver, std::function<void()> changed)
{
    // Queued: the change is seen inside Qt's event dispatch, where repainting
    // and reshaping windows at once is best avoided.
    QObject::connect(
        m_compositor.get(), &X11SelectionWatch::ownershipChanged, receiver,
        [changed = std::move(changed)] { changed(); }, Qt::QueuedConnection);
}

bool X11ShellIntegration::hasSystemTray() const
{
    // An XEmbed tray host owns the selection; Qt also docks in trays that
    // only speak the StatusNotifierItem protocol (GNOME's AppIndicator
    // extension), and knows whether one is there.
    return m_trayHost->isOwned() || QSystemTrayIcon::isSystemTrayAvailable();
}

void X11ShellIntegration::watchSystemTray(QObject* receiver, std::function<void()> changed)
{
    QObject::connect(
        m_trayHost.get(), &X11SelectionWatch::ownershipChanged, receiver,
        [changed = std::move(changed)] { changed(); }, Qt::QueuedConnection);
}

void X11ShellIntegration::readBlurSupport()
{
    // The blur is KDE's protocol, announced in _NET_SUPPORTED.
    const auto supported = m_connection->cardinals(
        m_connection->root(), m_connection->atom(Atom::NetSupported), XCB_ATOM_ATOM);
    m_blurSupported =
        supported && supported->contains(m_connection->atom(Atom::KdeBlurBehindRegion));
}

bool X11ShellIntegration::canBlurBehind() const
{
    return m_blurSupported && isCompositing();
}

void X11ShellIntegration::setBlurBehind(QWindow* window, const QRectF& area, qreal)
{
    if (!window || !canBlurBehind())
        return;
    const auto id = xcb_window_t(window->winId());
    const xcb_atom_t property = m_connection->atom(Atom::KdeBlurBehindRegion);
    if (area.isEmpty()) {
        xcb_delete_property(m_connection->get(), id, property);
    } else {
        const QRect r = area.toAlignedRect();
        const quint32 region[4] = {quint32(r.x()), quint32(r.y()), quint32(r.width()),
                                   quint32(r.height())};
        xcb_change_property(m_connection->get(), XCB_PROP_MODE_REPLACE, id, property,
                            XCB_ATOM_CARDINAL, 32, 4, region);
    }
    m_connection->flush();
}

QIcon X11ShellIntegration::iconForFile(const QString& path)
{
    if (!path.endsWith(QLatin1String(".desktop")))
        return QIcon();
    // Only the Icon key is needed: GLib's key-file reader gets it without
    // starting GIO's application registry and its folder monitors. The file
    // is read as the folders' scan reads it: never a FIFO or device, which
    // would hold the main thread.
    const std::optional<QByteArray> contents = XdgDesktopFiles::read(path.toUtf8());
    const KeyFile file = contents ? parseDesktopFile(*contents) : nullptr;
    if (!file)
        return QIcon();
    gchar* raw = g_key_file_get_string(file.get(), G_KEY_FILE_DESKTOP_GROUP,
                                       G_KEY_FILE_DESKTOP_KEY_ICON, nullptr);
    const QString icon = QString::fromUtf8(raw ? raw : "");
    g_free(raw);
    if (icon.isEmpty())
        return QIcon();
    // An icon path names a regular file, or no icon: reading a FIFO would
    // hold the main thread.
    if (QFileInfo(icon).isAbsolute())
        return QFileInfo(icon).isFile() ? QIcon(icon) : QIcon();
    return QIcon::fromTheme(icon);
}

QIcon X11ShellIntegration::iconForProcess(Pid pid)
{
    if (!m_connection || !m_windows || pid <= 0)
        return QIcon();
    // Taskbar windows first: a dialog or tool window may carry another icon.
    QList<xcb_window_t> windows;
    QList<xcb_window_t> others;
    for (const X11Client* client : m_windows->inClientOrder())
        if (client->pid == pid)
            (client->isTaskbarWindow() ? windows : others).append(client->id);
    windows += others;

    // One window at a time: the first usually has the icon, and asking all
    // of them at once would transfer every copy of it.
    xcb_connection_t* c = m_connection->get();
    const xcb_atom_t property = m_connection->atom(Atom::NetWmIcon);
    for (xcb_window_t window : windows) {
        auto r = reply(xcb_get_property_reply(
            c, xcb_get_property(c, 0, window, property, XCB_ATOM_CARDINAL, 0, MaxIconValues),
            nullptr));
        if (!r || r->format != 32)
            continue;
        const auto count = size_t(xcb_get_property_value_length(r.get())) / sizeof(quint32);
        QIcon icon =
            iconFromNetWmIcon(static_cast<const quint32*>(xcb_get_property_value(r.get())), count);
        if (!icon.isNull())
            return icon;
    }
    return QIcon();
}

} // namespace velkor::x11
