// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/X11Client.h"
#include "platform/x11/X11ClientReader.h"
#include "platform/x11/X11Connection.h"

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>

namespace velkor::x11 {

// The managed windows, their stacking, the active window and the desktops,
// read once and then kept current from events on the root and on each
// client, so that a key press costs no round trips. With an EWMH window
// manager the lists come from its root properties; without one (it died, or
// none was started) the clients are the mapped top-level windows, read from
// the window tree and kept current from its structure events.
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

    // Whether an EWMH window manager runs: its check window names itself.
    // Without one, requests go to the windows themselves.
    bool hasWindowManager() const { return m_wmCheck != NoWindow; }

    // Changes whenever a client comes or goes, moves in the client order,
    // or has its properties read again: what is made of the clients can be
    // kept while it stays the same.
    quint64 generation() const { return m_generation; }

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
    // Without a window manager nobody announces the focus: this program
    // gave window the input focus.
    void noteFocused(xcb_window_t window);

    // Reads everything again (after a window manager came or went).
    void reload();

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

signals:
    // Windows came or went, or changed owner, class or type.
    void clientsChanged();
    void activeWindowChanged();
    void desktopsChanged();

private:
    // The root properties the lists come from, as flags of what to read.
    enum RootField : unsigned
    {
        ClientListField = 1,
        StackingField = 2,
        ActiveField = 4,
        DesktopsField = 8,
        AllRootFields = 15
    };
    // The requests for some root properties, sent but not yet answered.
    struct RootRequests
    {
        xcb_get_property_cookie_t clientList{};
        xcb_get_property_cookie_t stacking{};
        xcb_get_property_cookie_t active{};
        xcb_get_property_cookie_t desktopCount{};
        xcb_get_property_cookie_t currentDesktop{};
    };

    void readWindowManager();
    void selectRootEvents();
    void setClients(QList<xcb_window_t> windows);
    void requestRoot(unsigned fields, RootRequests& requests) const;
    void readRoot(unsigned fields, const RootRequests& requests);
    void readRootLater(unsigned fields);
    void readPendingRoot();
    std::optional<QList<quint32>> rootValues(xcb_get_property_cookie_t cookie,
                                             xcb_atom_t type) const;
    void readActiveFocus();
    QList<xcb_window_t> readTopLevels();
    void readTopLevelsLater();
    void readTopLevelsNow();
    void fetch(const QList<xcb_window_t>& windows, unsigned fields);
    void onRootProperty(xcb_atom_t atom);
    void onClientProperty(X11Client& client, xcb_atom_t atom);
    void onWindowManagerChanged();
    void handleWithoutWindowManager(uint8_t type, xcb_generic_event_t* event);

    std::shared_ptr<X11Connection> m_connection;
    X11ClientReader m_reader;
    QHash<xcb_window_t, X11Client> m_clients;
    QList<xcb_window_t> m_clientOrder;
    QList<xcb_window_t> m_stacking; // bottom to top
    xcb_window_t m_active = NoWindow;
    std::optional<quint32> m_desktopCount;
    quint32 m_currentDesktop = 0;
    QHash<Pid, xcb_window_t> m_raised;
    xcb_window_t m_wmCheck = NoWindow;
    uint32_t m_qtRootMask = 0; // what Qt selected on the root before us
    bool m_topLevelsPending = false;
    unsigned m_rootPending = 0; // RootField flags changed since the last read
    QTimer m_rootRead;          // reads m_rootPending after a burst
    quint64 m_generation = 0;
};

} // namespace velkor::x11
