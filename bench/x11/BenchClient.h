// SPDX-License-Identifier: MIT
#pragma once

#include "Report.h"

#include <QString>
#include <functional>
#include <initializer_list>
#include <optional>
#include <xcb/xcb.h>

namespace velkor::xbench {

// The benchmark's own X client, on a connection of its own: it types
// through XTEST, sends the activation request a pager would (the floor any
// switcher pays), and learns of the window manager's answers from events,
// so the time of a change is the time another client can know of it.
class BenchClient final
{
public:
    explicit BenchClient(const QString& display);
    ~BenchClient();
    BenchClient(const BenchClient&) = delete;
    BenchClient& operator=(const BenchClient&) = delete;

    bool isConnected() const { return m_connected; }
    xcb_connection_t* connection() const { return m_c; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(const char* name) const;

    // Also hear of top-level windows mapping, unmapping and moving
    // (SubstructureNotify on the root): the overlay is one of them.
    void watchTopLevels();

    // A key by X keycode through XTEST, flushed, not waited for.
    void key(int keycode, bool press);
    // A round trip: the server has handled everything sent before.
    void sync();
    // Drops every event received so far.
    void drain();

    // What the server says now (one round trip each).
    xcb_window_t activeWindow() const;
    std::optional<quint32> currentDesktop() const;
    std::optional<quint32> desktopOf(xcb_window_t window) const;
    QString wmClass(xcb_window_t window) const;
    QString name(xcb_window_t window) const;

    // Milliseconds from start until this client learns that target is the
    // active window; negative after timeoutMs. The clock stops when the
    // property change arrives, not after the read that confirms its value.
    double waitForActive(xcb_window_t target, Clock::time_point start, double timeoutMs = 3000);
    // Waits, event by event, until the active window satisfies wanted; the
    // window, or 0 after timeoutMs.
    xcb_window_t waitForActiveWhere(const std::function<bool(xcb_window_t)>& wanted,
                                    double timeoutMs = 3000);
    // Waits until _NET_CURRENT_DESKTOP is desktop.
    bool waitForDesktop(quint32 desktop, double timeoutMs = 3000);

    // Called with every event this client takes in, before any wait looks
    // at it, so that one watcher (the overlay's) misses nothing while
    // another wait runs.
    using Observer = std::function<void(const xcb_generic_event_t*, Clock::time_point)>;
    void setObserver(Observer observer) { m_observer = std::move(observer); }

    // Hands every event to seen until it returns true; the time that event
    // was read from the server, or nothing after timeoutMs.
    std::optional<Clock::time_point>
    pump(const std::function<bool(const xcb_generic_event_t*)>& seen, double timeoutMs);

    // A fresh server timestamp, the way ICCCM tells a client to get one:
    // a zero-length append to a window of its own, and the time of the
    // PropertyNotify that follows. Untimed preparation only.
    xcb_timestamp_t freshTimestamp();

    // The activation request exactly as Velkor sends it: _NET_ACTIVE_WINDOW
    // with source indication 2 (a pager acting for the user), the given
    // server time and no requestor window, preceded by _NET_CURRENT_DESKTOP
    // when the window sits on another desktop (switchToDesktop, found out
    // beforehand: Velkor knows it from its cache, without a round trip).
    // Flushed, not waited for.
    void requestActivation(xcb_window_t window, xcb_timestamp_t time,
                           std::optional<quint32> switchToDesktop = std::nullopt);

    // A keycode the server knows that no key symbol is bound to: pressing
    // it through XTEST types nothing and means nothing to Velkor. 0 when
    // every keycode is bound.
    int unboundKeycode() const;
    // Names, on the root, the window velkor-key-floor activates at its key.
    // Flushed; the key floor reads it when the change reaches it.
    void setKeyFloorTarget(xcb_window_t window);

private:
    bool isActiveChange(const xcb_generic_event_t* e) const;
    bool isDesktopChange(const xcb_generic_event_t* e) const;
    void sendRootMessage(xcb_window_t window, xcb_atom_t type, std::initializer_list<quint32> data);
    std::optional<quint32> cardinal(xcb_window_t window, xcb_atom_t property) const;

    void observe(const xcb_generic_event_t* e, Clock::time_point at) const
    {
        if (m_observer)
            m_observer(e, at);
    }

    Observer m_observer;
    xcb_connection_t* m_c = nullptr;
    bool m_connected = false;
    xcb_window_t m_root = 0;
    xcb_window_t m_own = 0; // unmapped; only for timestamps
    uint32_t m_rootMask = 0;
    xcb_atom_t m_active = 0;
    xcb_atom_t m_currentDesktop = 0;
    xcb_atom_t m_wmDesktop = 0;
    xcb_atom_t m_netWmName = 0;
    xcb_atom_t m_utf8 = 0;
    xcb_atom_t m_stamp = 0;
};

} // namespace velkor::xbench
