// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/KeySource.h"
#include "platform/x11/X11EventTime.h"
#include "platform/x11/X11KeyGrabs.h"
#include "platform/x11/X11Keymap.h"
#include "platform/x11/X11ModifierState.h"

#include <QList>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace velkor {

// The key monitor's events from the X server, on a connection of our own
// read on the main thread: a key reaches the monitor without waiting for
// Qt's reader thread to pass it on, and Qt's events never queue before it.
//
// A passive grab of the activation key makes the server hand us every key
// pressed while it is held, so nothing typed under it reaches the focused
// window; Super+Tab and Super+grave are grabbed only while watched. Only a
// press our own grab delivers starts a session: when another client holds
// the keyboard (a screen locker, a menu, a VM viewer) the keys go there, and
// we see the press only as an XInput2 raw event.
//
// Which modifiers are down comes from raw events while another client (or
// nobody) holds the keyboard, and from our own key events while we do, so
// modifier changes are seen with or without a grab; the watchdog reads them
// from the server again while any is believed down, in case a release never
// came. A key the monitor passes while we hold the keyboard is typed again
// into the focused window through XTEST.
class X11KeySource final : public KeySource
{
public:
    // Told the server time of every key event, which Qt's connection no
    // longer sees: requests made for a key carry its time.
    using ServerTimeSink = std::function<void(xcb_timestamp_t)>;

    explicit X11KeySource(const Clock& clock, ServerTimeSink noteServerTime = {});
    ~X11KeySource() override;

    // True once the X server offers what is needed; whether the activation
    // key is ours is access().
    bool install(Callback callback) override;
    bool isInstalled() const override { return m_installed; }
    void watch(const KeyWatch& keys) override;
    bool isEnabled() const override;
    void enable() override { recover(); }
    KeyAccess access() const override;
    void recover() override;

    // One event of the source's own connection. Public so that a test can
    // hand in what the server cannot be made to send: a release that never
    // comes.
    void handleEvent(const xcb_generic_event_t* event);

private:
    void readEvents();
    // Events a blocking reply read into xcb's queue leave the socket quiet.
    void readQueuedEventsSoon() { m_queuedEvents.start(); }

    bool connectToServer();
    void disconnect();
    bool prepareExtensions();
    void selectRawKeyEvents();
    void askServerTime();
    X11ModifierState modifiersOnServer() const;
    void resynchroniseModifiers();

    // The activation key's keycode, when the keyboard map has the key.
    std::optional<xcb_keycode_t> activationKeycode() const;
    QList<X11KeyGrab> wantedGrabs() const;
    void applyGrabs();
    void reloadKeymap();

    void handleKey(const xcb_key_press_event_t* event, bool press);
    void handleModifier(qint64 keyCode, bool press, bool fromOurGrab, double time);
    void deliver(KeyEventType type, qint64 keyCode, double time);
    void retype(xcb_keycode_t keycode);
    void takeKeyboardGrabAnswer();
    void releaseKeyboardIfActivationUp();

    const Clock& m_clock;
    ServerTimeSink m_noteServerTime;
    Callback m_callback;
    KeyWatch m_watch;
    bool m_installed = false;

    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    uint8_t m_xkbEventBase = 0;
    uint8_t m_xinputOpcode = 0;
    std::unique_ptr<X11Keymap> m_keymap;
    std::unique_ptr<X11KeyGrabs> m_grabs;

    X11ModifierState m_modifiers;
    // The monitor was told the activation key went down and not yet that it
    // went up.
    bool m_activationDelivered = false;
    X11EventTime m_eventTime;
    xcb_window_t m_timeProbe = XCB_NONE;
    // Held after a key was typed again while the activation key is down,
    // since giving the key back ended the passive grab early. The server's
    // answer is read when it has come, never waited for on a key press.
    bool m_keyboardGrabbed = false;
    std::optional<unsigned int> m_keyboardGrabRequest;
    QTimer m_keymapChanged;
    std::unique_ptr<QSocketNotifier> m_readable;
    QTimer m_queuedEvents;
};

} // namespace velkor
