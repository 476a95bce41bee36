// SPDX-License-Identifier: MIT
#include "platform/x11/X11KeySource.h"

#include "platform/KeyCodes.h"
#include "platform/x11/X11KeyTranslator.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <cstdlib>
#include <utility>
#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

// xcb's XKB header names a field "explicit", which C++ reserves.
#define explicit xkb_explicit
#include <xcb/xkb.h>
#undef explicit

// Xlib's, declared here: its header's macros (None, KeyPress, Bool) would
// collide with xcb's and ours.
extern "C" char* XDisplayString(_XDisplay* display);

namespace velkor {

namespace {

// Debug lines (every key and its decision) only when asked for: they are
// what the user types.
Q_LOGGING_CATEGORY(lcKeys, "velkor.x11.keys", QtInfoMsg)

template <typename T> using Reply = std::unique_ptr<T, decltype(&free)>;

template <typename T> Reply<T> takeReply(T* reply)
{
    return Reply<T>(reply, &free);
}

// The modifiers the activation key is grabbed under besides none.
constexpr std::pair<uint16_t, QLatin1StringView> HeldWithActivation[] = {
    {XCB_MOD_MASK_SHIFT, QLatin1StringView(" with Shift")},
    {XCB_MOD_MASK_CONTROL, QLatin1StringView(" with Control")},
    {XCB_MOD_MASK_1, QLatin1StringView(" with Alt")},
    {XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL, QLatin1StringView(" with Shift+Control")},
    {XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1, QLatin1StringView(" with Shift+Alt")},
    {XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1, QLatin1StringView(" with Control+Alt")},
    {XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1,
     QLatin1StringView(" with Shift+Control+Alt")},
};

// setxkbmap sends several notifications in a row; one reload covers them.
constexpr int KeymapSettleMs = 50;

} // namespace

X11KeySource::X11KeySource(const Clock& clock, ServerTimeSink noteServerTime)
    : m_clock(clock), m_noteServerTime(std::move(noteServerTime))
{
    m_keymapChanged.setSingleShot(true);
    m_keymapChanged.setInterval(KeymapSettleMs);
    m_keymapChanged.callOnTimeout([this] { reloadKeymap(); });
    m_queuedEvents.setSingleShot(true);
    m_queuedEvents.setInterval(0);
    m_queuedEvents.callOnTimeout([this] { readEvents(); });
}

X11KeySource::~X11KeySource()
{
    if (m_installed) {
        m_grabs->liftAll();
        if (m_timeProbe)
            xcb_destroy_window(m_connection, m_timeProbe);
        if (m_keyboardGrabbed)
            xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
        xcb_flush(m_connection);
    }
    disconnect();
}

bool X11KeySource::install(Callback callback)
{
    m_callback = std::move(callback);
    if (m_installed)
        return true;
    if (!connectToServer())
        return false;
    if (!prepareExtensions()) {
        disconnect();
        return false;
    }
    m_keymap = std::make_unique<X11Keymap>(m_connection);
    if (!m_keymap->reload()) {
        qCWarning(lcKeys) << "cannot read the keyboard map from the X server";
        m_keymap.reset();
        disconnect();
        return false;
    }
    m_grabs = std::make_unique<X11KeyGrabs>(m_connection, m_root);
    selectRawKeyEvents();
    m_modifiers = modifiersOnServer();
    m_readable = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                   QSocketNotifier::Read);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, [this] { readEvents(); });
    askServerTime();
    m_installed = true;
    // A refused activation key leaves the source installed: access() says
    // so, and the watchdog tries again.
    applyGrabs();
    readQueuedEventsSoon();
    return true;
}

bool X11KeySource::connectToServer()
{
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    // Under the offscreen platform the interface exists but has no connection.
    if (!x11 || !x11->connection()) {
        qCWarning(lcKeys) << "no X11 connection: global keys need the xcb platform";
        return false;
    }
    // The same server as Qt's, under the name Qt opened it by.
    const char* name = x11->display() ? XDisplayString(x11->display()) : nullptr;
    int screen = 0;
    m_connection = xcb_connect(name, &screen);
    if (xcb_connection_has_error(m_connection)) {
        qCWarning(lcKeys) << "cannot open a connection to the X server for the keys";
        disconnect();
        return false;
    }
    auto roots = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screen && roots.rem > 1; ++i)
        xcb_screen_next(&roots);
    m_root = roots.data->root;
    return true;
}

void X11KeySource::disconnect()
{
    m_readable.reset();
    m_queuedEvents.stop();
    if (m_connection)
        xcb_disconnect(std::exchange(m_connection, nullptr));
}

void X11KeySource::readEvents()
{
    if (!m_connection)
        return;
    while (xcb_generic_event_t* event = xcb_poll_for_event(m_connection)) {
        handleEvent(event);
        free(event);
    }
    // A server that went away leaves the socket readable for ever; Qt ends
    // the program with a line of its own.
    if (xcb_connection_has_error(m_connection) && m_readable)
        m_readable->setEnabled(false);
}

bool X11KeySource::prepareExtensions()
{
    const xcb_query_extension_reply_t* xkb = xcb_get_extension_data(m_connection, &xcb_xkb_id);
    const xcb_query_extension_reply_t* xinput = xcb_get_extension_data(m_connection, &xcb_input_id);
    const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(m_connection, &xcb_test_id);
    if (!xkb || !xkb->present || !xinput || !xinput->present || !xtest || !xtest->present) {
        qCWarning(lcKeys) << "the X server lacks XKB, XInput or XTEST";
        return false;
    }

    auto useXkb = takeReply(xcb_xkb_use_extension_reply(
        m_connection,
        xcb_xkb_use_extension(m_connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION),
        nullptr));
    // Raw events reach every client whoever grabs the keyboard only from
    // XInput 2.1 on.
    auto xiVersion = takeReply(xcb_input_xi_query_version_reply(
        m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
    if (!useXkb || !useXkb->supported || !xiVersion ||
        (xiVersion->major_version == 2 && xiVersion->minor_version < 1) ||
        xiVersion->major_version < 2) {
        qCWarning(lcKeys) << "the X server lacks XKB or XInput 2.1";
        return false;
    }
    m_xkbEventBase = xkb->first_event;
    m_xinputOpcode = xinput->major_opcode;

    // A held key then repeats as presses alone, instead of release/press
    // pairs that would read as the key going up and down again.
    const uint32_t detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    auto flags = takeReply(xcb_xkb_per_client_flags_reply(
        m_connection,
        xcb_xkb_per_client_flags(m_connection, XCB_XKB_ID_USE_CORE_KBD, detectable, detectable, 0,
                                 0, 0),
        nullptr));
    if (!flags || !(flags->value & detectable))
        qCWarning(lcKeys) << "the X server cannot report auto-repeat as presses alone";

    // Only these two event types are touched; Qt's selection of the others
    // on this connection stays as it is.
    const uint16_t mapEvents =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    const uint16_t allMapParts = 0xff;
    xcb_xkb_select_events(m_connection, XCB_XKB_ID_USE_CORE_KBD, mapEvents, 0, mapEvents,
                          allMapParts, allMapParts, nullptr);
    return true;
}

void X11KeySource::selectRawKeyEvents()
{
    uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    // Keep whatever this connection already selects on the root.
    auto selected = takeReply(xcb_input_xi_get_selected_events_reply(
        m_connection, xcb_input_xi_get_selected_events(m_connection, m_root), nullptr));
    if (selected) {
        auto it = xcb_input_xi_get_selected_events_masks_iterator(selected.get());
        for (; it.rem; xcb_input_event_mask_next(&it)) {
            if (it.data->deviceid == XCB_INPUT_DEVICE_ALL_MASTER && it.data->mask_len >= 1)
                mask |= xcb_input_event_mask_mask(it.data)[0];
        }
    }
    struct
    {
        xcb_input_event_mask_t head;
        uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, mask};
    xcb_input_xi_select_events(m_connection, m_root, 1, &selection.head);
    xcb_flush(m_connection);
}

// Event times are the server's; the first answer that comes at once ties
// them to the Clock, before keys queued behind a stall could arrive first
// and make the tie late. An empty change of a property of our own window
// comes back with the server's time. It is waited for here, one round trip:
// nothing else reads this connection before the event loop runs, and a
// program stopped before then would otherwise tie the times to the moment
// it went on.
void X11KeySource::askServerTime()
{
    m_timeProbe = xcb_generate_id(m_connection);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, m_timeProbe, m_root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_timeProbe, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(m_connection);
    // Raw modifier events may come first; they are handled as they come.
    while (m_timeProbe) {
        xcb_generic_event_t* event = xcb_wait_for_event(m_connection);
        if (!event)
            break; // the server went away
        handleEvent(event);
        free(event);
    }
}

X11ModifierState X11KeySource::modifiersOnServer() const
{
    X11ModifierState down;
    auto keymap =
        takeReply(xcb_query_keymap_reply(m_connection, xcb_query_keymap(m_connection), nullptr));
    if (!keymap)
        return down;
    for (quint32 keycode = 8; keycode < 256; ++keycode) {
        if (keymap->keys[keycode / 8] & (1u << (keycode % 8))) {
            if (const auto code = X11KeyTranslator::keyCodeForXKeycode(keycode))
                down.press(*code);
        }
    }
    return down;
}

// A release that never came (the keyboard was taken over, a device went
// away, a VM held it) leaves a modifier believed down; the server knows
// better. Asked only while something is believed down, so an idle watchdog
// costs no round trip.
void X11KeySource::resynchroniseModifiers()
{
    takeKeyboardGrabAnswer();
    if (!m_keyboardGrabbed && !m_activationDelivered && m_modifiers.flags() == 0)
        return;
    const X11ModifierState onServer = modifiersOnServer();
    const bool activationLost =
        m_activationDelivered && !onServer.isDown(m_watch.activationKeyCode);
    if (!activationLost && onServer.flags() == m_modifiers.flags())
        return;
    qCInfo(lcKeys) << "a modifier release never arrived; read the modifiers from the server";
    m_modifiers = onServer;
    if (activationLost)
        m_activationDelivered = false;
    deliver(KeyEventType::FlagsResynchronised, 0, m_clock.now());
}

void X11KeySource::watch(const KeyWatch& keys)
{
    // The monitor resolves a held old key itself, from the flag word.
    if (keys.activationKeyCode != m_watch.activationKeyCode)
        m_activationDelivered = false;
    m_watch = keys;
    if (m_installed) {
        applyGrabs();
        readQueuedEventsSoon();
    }
}

std::optional<xcb_keycode_t> X11KeySource::activationKeycode() const
{
    const auto keycode = X11KeyTranslator::xKeycodeForKeyCode(m_watch.activationKeyCode);
    if (!keycode || !m_keymap->hasKey(*keycode))
        return std::nullopt;
    return xcb_keycode_t(*keycode);
}

QList<X11KeyGrab> X11KeySource::wantedGrabs() const
{
    QList<X11KeyGrab> grabs;
    if (const auto keycode = activationKeycode()) {
        const QString name = QStringLiteral("activation key %1").arg(m_keymap->describe(*keycode));
        grabs.append({*keycode, 0, name, true});
        // A hand may already hold Shift, Control or Alt when the key goes
        // down; it still starts a session, and the letters typed under it
        // must not reach the focused window.
        for (const auto& [held, heldName] : HeldWithActivation)
            grabs.append({*keycode, held, name + heldName});
    }
    const uint16_t super = m_keymap->superMask();
    // By position: some layouts have no grave keysym anywhere.
    const std::pair<bool, qint64> combos[] = {{m_watch.commandTab, keys::Tab},
                                              {m_watch.commandGrave, keys::Grave}};
    for (const auto& [wanted, keyCode] : combos) {
        const auto keycode = X11KeyTranslator::xKeycodeForKeyCode(keyCode);
        if (!wanted || !keycode)
            continue;
        const QString name = m_keymap->describe(*keycode);
        grabs.append({xcb_keycode_t(*keycode), super, QStringLiteral("Super+%1").arg(name)});
        // Shift walks backwards; the monitor sees it in the flags.
        grabs.append({xcb_keycode_t(*keycode), uint16_t(super | XCB_MOD_MASK_SHIFT),
                      QStringLiteral("Super+Shift+%1").arg(name)});
    }
    return grabs;
}

void X11KeySource::applyGrabs()
{
    m_grabs->apply(wantedGrabs(), m_keymap->numLockMask(), m_clock.now());
}

KeyAccess X11KeySource::access() const
{
    if (!m_installed)
        return KeyAccess::notTrusted;
    const auto keycode = activationKeycode();
    if (!keycode)
        return KeyAccess::activationKeyMissing;
    return m_grabs->isHeld(X11KeyGrab{*keycode, 0, QString(), true})
               ? KeyAccess::active
               : KeyAccess::activationKeyTaken;
}

bool X11KeySource::isEnabled() const
{
    const bool strayGrab = m_keyboardGrabbed && !m_activationDelivered;
    return access() == KeyAccess::active && !strayGrab;
}

void X11KeySource::recover()
{
    if (!m_installed)
        return;
    resynchroniseModifiers();
    releaseKeyboardIfActivationUp();
    m_grabs->retryDue(m_clock.now());
    readQueuedEventsSoon();
}

void X11KeySource::reloadKeymap()
{
    // A server that went away has no map to read, and Qt ends the program
    // with a line of its own.
    const auto serverGone = [this] {
        return !m_connection || xcb_connection_has_error(m_connection);
    };
    if (serverGone())
        return;
    if (!m_keymap->reload()) {
        if (!serverGone())
            qCWarning(lcKeys) << "cannot read the new keyboard map; keeping the old one";
        return;
    }
    // Grabs name keycodes, which a new layout leaves where they are; only
    // moved modifier bits (Num Lock, Super) or a key gone from the map move
    // grabs, and only those are made again. The server also reports a map
    // change whenever another keyboard (XTEST among them) types, with
    // nothing changed.
    applyGrabs();
    readQueuedEventsSoon();
}

void X11KeySource::handleEvent(const xcb_generic_event_t* event)
{
    const uint8_t type = event->response_type & 0x7f;
    switch (type) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE: {
        auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event);
        if (m_noteServerTime)
            m_noteServerTime(key->time);
        // Only our grabs report keys, on the root.
        if (key->event == m_root)
            handleKey(key, type == XCB_KEY_PRESS);
        return;
    }
    case XCB_GE_GENERIC: {
        auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event);
        if (generic->extension != m_xinputOpcode ||
            (generic->event_type != XCB_INPUT_RAW_KEY_PRESS &&
             generic->event_type != XCB_INPUT_RAW_KEY_RELEASE))
            return;
        auto* raw = reinterpret_cast<const xcb_input_raw_key_press_event_t*>(event);
        // Raw events only track modifiers: the keys themselves went to
        // whoever holds the keyboard, or to the focused window.
        const auto keyCode = X11KeyTranslator::keyCodeForXKeycode(raw->detail);
        if (keyCode && X11KeyTranslator::isModifier(*keyCode))
            handleModifier(*keyCode, generic->event_type == XCB_INPUT_RAW_KEY_PRESS, false,
                           m_eventTime.toClock(raw->time, m_clock.now()));
        return;
    }
    case XCB_PROPERTY_NOTIFY: {
        auto* property = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (!m_timeProbe || property->window != m_timeProbe)
            return;
        m_eventTime.toClock(property->time, m_clock.now());
        xcb_destroy_window(m_connection, std::exchange(m_timeProbe, XCB_NONE));
        xcb_flush(m_connection);
        return;
    }
    case XCB_MAPPING_NOTIFY:
        m_keymapChanged.start();
        return;
    default:
        if (type == m_xkbEventBase) {
            // Every XKB event shares one code; the second byte says which.
            const uint8_t xkbType = reinterpret_cast<const uint8_t*>(event)[1];
            if (xkbType == XCB_XKB_NEW_KEYBOARD_NOTIFY || xkbType == XCB_XKB_MAP_NOTIFY)
                m_keymapChanged.start();
        }
        return;
    }
}

void X11KeySource::handleKey(const xcb_key_press_event_t* event, bool press)
{
    const double time = m_eventTime.toClock(event->time, m_clock.now());
    const qint64 keyCode = X11KeyTranslator::keyCodeForXKeycode(event->detail)
                               .value_or(X11KeyTranslator::UnmappedKeyCode);
    if (X11KeyTranslator::isModifier(keyCode)) {
        handleModifier(keyCode, press, true, time);
        return;
    }
    releaseKeyboardIfActivationUp();
    if (!m_callback) {
        if (press)
            retype(event->detail);
        return;
    }
    // XKB puts the effective layout group in bits 13-14 of the state.
    const quint32 group = (event->state >> 13) & 0x3;
    const KeyEvent keyEvent{
        press ? KeyEventType::KeyDown : KeyEventType::KeyUp, keyCode, m_modifiers.flags(),
        X11KeyTranslator::characters(m_keymap->keymap(), event->detail, group), time};
    const KeyDecision decision = m_callback(keyEvent);
    qCDebug(lcKeys) << (press ? "down" : "up") << keyCode << Qt::hex << keyEvent.flags
                    << keyEvent.characters
                    << (decision == KeyDecision::Pass ? "passed" : "swallowed");
    if (press && decision == KeyDecision::Pass)
        retype(event->detail);
}

// The server sends raw events to every client but the one holding the
// keyboard, and key events only to that one; a change seen both ways (the
// press that starts a grab) counts once.
void X11KeySource::handleModifier(qint64 keyCode, bool press, bool fromOurGrab, double time)
{
    const bool changed = press ? m_modifiers.press(keyCode) : m_modifiers.release(keyCode);
    if (keyCode == m_watch.activationKeyCode) {
        // Only a press our own grab delivered starts a session. Seen only
        // as a raw event, the press went to a client that holds the
        // keyboard or the key, and so will whatever is typed under it.
        const bool begins = press && fromOurGrab && !m_activationDelivered;
        const bool ends = !press && m_activationDelivered;
        if (begins || ends)
            m_activationDelivered = begins;
        if (!press)
            releaseKeyboardIfActivationUp();
        if (begins || ends)
            deliver(KeyEventType::FlagsChanged, keyCode, time);
        return;
    }
    if (!press)
        releaseKeyboardIfActivationUp();
    if (changed)
        deliver(KeyEventType::FlagsChanged, keyCode, time);
}

void X11KeySource::deliver(KeyEventType type, qint64 keyCode, double time)
{
    if (!m_callback)
        return;
    qCDebug(lcKeys) << "flags" << int(type) << keyCode << Qt::hex << m_modifiers.flags() << Qt::dec
                    << "at" << time;
    // Modifier changes always pass: the server has delivered them already.
    m_callback(KeyEvent{type, keyCode, m_modifiers.flags(), {}, time});
}

void X11KeySource::retype(xcb_keycode_t keycode)
{
    xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
    m_keyboardGrabbed = false;
    if (const auto request = std::exchange(m_keyboardGrabRequest, std::nullopt))
        xcb_discard_reply(m_connection, *request);
    // Our own grab of this key would catch it again on its way back.
    const QList<X11KeyGrab> lifted = m_grabs->liftKey(keycode);
    // A key still down on the XTEST device (keys typed by another XTEST
    // client) would make our press a repeat; releasing it first gives a
    // clean stroke, and is ignored for a key that is up there.
    xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, keycode, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                        0);
    xcb_test_fake_input(m_connection, XCB_KEY_PRESS, keycode, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, keycode, XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                        0);
    m_grabs->restore(lifted, m_clock.now());
    // Giving the key back ended the activation key's grab; keep the rest of
    // what is typed under the key until it goes up.
    if (m_activationDelivered) {
        m_keyboardGrabRequest = xcb_grab_keyboard(m_connection, 0, m_root, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)
                                    .sequence;
        m_keyboardGrabbed = true;
    }
    xcb_flush(m_connection);
}

// The answer to the keyboard grab made after typing a key again, if it has
// come; a refusal means the keys typed next go to the focused window.
void X11KeySource::takeKeyboardGrabAnswer()
{
    if (!m_keyboardGrabRequest)
        return;
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (!xcb_poll_for_reply(m_connection, *m_keyboardGrabRequest, &reply, &error))
        return;
    m_keyboardGrabRequest.reset();
    const auto* grab = static_cast<const xcb_grab_keyboard_reply_t*>(reply);
    if (!grab || grab->status != XCB_GRAB_STATUS_SUCCESS) {
        qCWarning(lcKeys) << "cannot hold the keyboard after typing a key again";
        m_keyboardGrabbed = false;
    }
    free(reply);
    free(error);
}

void X11KeySource::releaseKeyboardIfActivationUp()
{
    takeKeyboardGrabAnswer();
    if (m_keyboardGrabbed && !m_activationDelivered) {
        xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
        xcb_flush(m_connection);
        m_keyboardGrabbed = false;
    }
}

} // namespace velkor
