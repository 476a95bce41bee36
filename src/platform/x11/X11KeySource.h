// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/KeySource.h"
#include "platform/x11/X11KeyGrabs.h"
#include "platform/x11/X11Keymap.h"
#include "platform/x11/X11ModifierState.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QSet>
#include <QTimer>
#include <memory>
#include <xcb/xcb.h>

namespace velkor {

// The key monitor's events from the X server, on Qt's own connection.
//
// A passive grab of the activation key makes the server hand us every key
// pressed while it is held, so nothing typed under it reaches the focused
// window; Super+Tab and Super+grave are grabbed only while watched. Which
// modifiers are down comes from XInput2 raw events while another client (or
// nobody) holds the keyboard, and from our own key events while we do, so
// modifier changes are seen with or without a grab. A key the monitor passes
// while we hold the keyboard is typed again into the focused window through
// XTEST.
class X11KeySource final : public KeySource, private QAbstractNativeEventFilter
{
public:
    explicit X11KeySource(const Clock& clock);
    ~X11KeySource() override;

    bool install(Callback callback) override;
    bool isInstalled() const override { return m_installed; }
    void watch(const KeyWatch& keys) override;
    bool isEnabled() const override;
    void enable() override;

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    bool connectToServer();
    bool prepareExtensions();
    void selectRawKeyEvents();
    void readModifiersDown();

    QList<X11KeyGrab> wantedGrabs() const;
    void regrab();
    void placeMissingGrabs();
    void releaseGrabs();
    void reloadKeymap();

    void handleKey(const xcb_key_press_event_t* event, bool press);
    void handleRawKey(quint32 keycode, bool press);
    void handleModifier(qint64 keyCode, bool press);
    void deliverFlagsChanged(qint64 keyCode);
    void retype(xcb_keycode_t keycode);
    void releaseKeyboardIfActivationUp();

    const Clock& m_clock;
    Callback m_callback;
    KeyWatch m_watch;
    bool m_installed = false;

    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    uint8_t m_xkbEventBase = 0;
    uint8_t m_xinputOpcode = 0;
    std::unique_ptr<X11Keymap> m_keymap;
    std::unique_ptr<X11KeyGrabs> m_grabs;

    QList<X11KeyGrab> m_placed;
    uint16_t m_placedNumLockMask = 0;
    QSet<QString> m_reported; // problems logged once, until they go away
    bool m_activationGrabbed = false;

    X11ModifierState m_modifiers;
    // Held after a key was typed again while the activation key is down,
    // since giving the key back ended the passive grab early.
    bool m_keyboardGrabbed = false;
    QTimer m_keymapChanged;
};

} // namespace velkor
