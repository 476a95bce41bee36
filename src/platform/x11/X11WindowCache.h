// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/X11Client.h"
#include "platform/x11/X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>
#include <QObject>
#include <memory>
#include <optional>

namespace velkor::x11 {

// The managed windows, their stacking, the active window and the desktops,
// read once and then kept current from PropertyNotify events on the root and
// on each client, so that a key press costs no round trips.
class X11WindowCache final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    explicit X11WindowCache(std::shared_ptr<X11Connection> connection);
    ~X11WindowCache() override;

    X11Connection& connection() const { return *m_connection; }

    const X11Client* client(xcb_window_t window) const;
    // Managed windows, front first.
    QList<const X11Client*> frontToBack() const;
    // Managed windows in the window manager's mapping order.
    QList<const X11Client*> inClientOrder() const;

    xcb_window_t activeWindow() const { return m_active; }
    std::optional<quint32> desktopCount() const { return m_desktopCount; }
    quint32 currentDesktop() const { return m_currentDesktop; }

    // Requests sent by this program take effect only when the window manager
    // acts; these note what was asked so that requests made before its
    // answer build on it.
    void noteDesktopRequested(xcb_window_t window, quint32 desktop);
    // False when the window has no known app to note it for.
    bool noteRaised(xcb_window_t window);
    // The window most recently raised for pid, if it is still managed.
    xcb_window_t takeRaised(Pid pid);
    // Whether window is the one last raised for its app and not taken yet;
    // it is taken now.
    bool takePendingRaise(xcb_window_t window);

    // Reads everything again (after a window manager restart).
    void reload();

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

signals:
    // Windows came or went, or changed owner, class or type.
    void clientsChanged();
    void activeWindowChanged();
    void desktopsChanged();

private:
    enum Field : unsigned
    {
        PidField = 1u << 0,
        ClassField = 1u << 1,
        GtkIdField = 1u << 2,
        NameField = 1u << 3,
        TypeField = 1u << 4,
        StateField = 1u << 5,
        DesktopField = 1u << 6,
        HintsField = 1u << 7,
        AllFields = 0xFF
    };

    void watchRoot();
    void readClientList();
    void readStacking();
    void readActive();
    void readDesktops();
    void fetch(const QList<xcb_window_t>& windows, unsigned fields);
    void resolvePidsFromResources(const QList<xcb_window_t>& windows);
    void onRootProperty(xcb_atom_t atom);
    void onClientProperty(X11Client& client, xcb_atom_t atom);
    unsigned fieldOf(xcb_atom_t atom) const;

    std::shared_ptr<X11Connection> m_connection;
    QHash<xcb_window_t, X11Client> m_clients;
    QList<xcb_window_t> m_clientOrder;
    QList<xcb_window_t> m_stacking; // bottom to top
    xcb_window_t m_active = NoWindow;
    std::optional<quint32> m_desktopCount;
    quint32 m_currentDesktop = 0;
    QHash<Pid, xcb_window_t> m_raised;
    bool m_hasResourceExtension = false;
};

} // namespace velkor::x11
