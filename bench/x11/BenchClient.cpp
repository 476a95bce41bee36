// SPDX-License-Identifier: MIT
#include "BenchClient.h"

#include <QByteArray>
#include <QList>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <poll.h>
#include <xcb/xtest.h>

namespace velkor::xbench {

namespace {

template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> Reply<T> reply(T* raw)
{
    return Reply<T>(raw, &std::free);
}

uint8_t typeOf(const xcb_generic_event_t* e)
{
    return e->response_type & 0x7f;
}

} // namespace

BenchClient::BenchClient(const QString& display)
    : m_c(xcb_connect(display.toLatin1().constData(), nullptr))
{
    if (xcb_connection_has_error(m_c))
        return;
    m_connected = true;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
    m_active = atom("_NET_ACTIVE_WINDOW");
    m_currentDesktop = atom("_NET_CURRENT_DESKTOP");
    m_wmDesktop = atom("_NET_WM_DESKTOP");
    m_netWmName = atom("_NET_WM_NAME");
    m_utf8 = atom("UTF8_STRING");
    m_stamp = atom("VELKOR_BENCH_TIMESTAMP");

    m_rootMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_c, m_root, XCB_CW_EVENT_MASK, &m_rootMask);
    m_own = xcb_generate_id(m_c);
    const uint32_t ownMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_c, 0, m_own, m_root, -10, -10, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &ownMask);
    sync();
}

BenchClient::~BenchClient()
{
    xcb_disconnect(m_c);
}

xcb_atom_t BenchClient::atom(const char* name) const
{
    auto r = reply(
        xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, uint16_t(strlen(name)), name), nullptr));
    return r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
}

void BenchClient::watchTopLevels()
{
    m_rootMask |= XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_c, m_root, XCB_CW_EVENT_MASK, &m_rootMask);
    sync();
}

void BenchClient::key(int keycode, bool press)
{
    xcb_test_fake_input(m_c, press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, uint8_t(keycode),
                        XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_c);
}

void BenchClient::sync()
{
    std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr));
}

void BenchClient::drain()
{
    while (xcb_generic_event_t* e = xcb_poll_for_event(m_c)) {
        observe(e, Clock::now());
        std::free(e);
    }
}

std::optional<quint32> BenchClient::cardinal(xcb_window_t window, xcb_atom_t property) const
{
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(
        m_c, xcb_get_property(m_c, 0, window, property, XCB_ATOM_ANY, 0, 1), &error));
    std::free(error);
    if (!r || r->format != 32 || xcb_get_property_value_length(r.get()) < 4)
        return std::nullopt;
    return *static_cast<const quint32*>(xcb_get_property_value(r.get()));
}

xcb_window_t BenchClient::activeWindow() const
{
    return cardinal(m_root, m_active).value_or(0);
}

std::optional<quint32> BenchClient::currentDesktop() const
{
    return cardinal(m_root, m_currentDesktop);
}

std::optional<quint32> BenchClient::desktopOf(xcb_window_t window) const
{
    return cardinal(window, m_wmDesktop);
}

QString BenchClient::wmClass(xcb_window_t window) const
{
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(
        m_c, xcb_get_property(m_c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256), &error));
    std::free(error);
    if (!r || r->format != 8)
        return {};
    const QByteArray raw(static_cast<const char*>(xcb_get_property_value(r.get())),
                         xcb_get_property_value_length(r.get()));
    return QString::fromLatin1(raw.split('\0').value(1));
}

QString BenchClient::name(xcb_window_t window) const
{
    for (const xcb_atom_t property : {m_netWmName, xcb_atom_t(XCB_ATOM_WM_NAME)}) {
        xcb_generic_error_t* error = nullptr;
        auto r = reply(xcb_get_property_reply(
            m_c, xcb_get_property(m_c, 0, window, property, XCB_ATOM_ANY, 0, 256), &error));
        std::free(error);
        if (r && r->format == 8 && xcb_get_property_value_length(r.get()) > 0)
            return QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(r.get())),
                                     xcb_get_property_value_length(r.get()));
    }
    return {};
}

bool BenchClient::isActiveChange(const xcb_generic_event_t* e) const
{
    return typeOf(e) == XCB_PROPERTY_NOTIFY &&
           reinterpret_cast<const xcb_property_notify_event_t*>(e)->window == m_root &&
           reinterpret_cast<const xcb_property_notify_event_t*>(e)->atom == m_active;
}

bool BenchClient::isDesktopChange(const xcb_generic_event_t* e) const
{
    return typeOf(e) == XCB_PROPERTY_NOTIFY &&
           reinterpret_cast<const xcb_property_notify_event_t*>(e)->window == m_root &&
           reinterpret_cast<const xcb_property_notify_event_t*>(e)->atom == m_currentDesktop;
}

std::optional<Clock::time_point>
BenchClient::pump(const std::function<bool(const xcb_generic_event_t*)>& seen, double timeoutMs)
{
    const auto start = Clock::now();
    pollfd socket{xcb_get_file_descriptor(m_c), POLLIN, 0};
    for (;;) {
        xcb_generic_event_t* e = xcb_poll_for_event(m_c);
        if (!e) {
            const double left = timeoutMs - msSince(start);
            if (left <= 0 || xcb_connection_has_error(m_c))
                return std::nullopt;
            poll(&socket, 1, int(left) + 1);
            continue;
        }
        const auto arrived = Clock::now();
        observe(e, arrived);
        const bool done = seen(e);
        std::free(e);
        if (done)
            return arrived;
    }
}

double BenchClient::waitForActive(xcb_window_t target, Clock::time_point start, double timeoutMs)
{
    bool confirmed = false;
    const auto arrived = pump(
        [&](const xcb_generic_event_t* e) {
            confirmed = isActiveChange(e) && activeWindow() == target;
            return confirmed;
        },
        timeoutMs - msSince(start));
    if (!arrived)
        return -1;
    // A change that came in with the confirming reply (the window manager
    // often clears the property before setting it) was only learnt now.
    bool laterChange = false;
    while (xcb_generic_event_t* queued = xcb_poll_for_queued_event(m_c)) {
        observe(queued, Clock::now());
        laterChange = laterChange || isActiveChange(queued);
        std::free(queued);
    }
    return msBetween(start, laterChange ? Clock::now() : *arrived);
}

xcb_window_t BenchClient::waitForActiveWhere(const std::function<bool(xcb_window_t)>& wanted,
                                             double timeoutMs)
{
    xcb_window_t now = activeWindow();
    if (now && wanted(now))
        return now;
    now = 0;
    pump(
        [&](const xcb_generic_event_t* e) {
            if (!isActiveChange(e))
                return false;
            const xcb_window_t w = activeWindow();
            if (w && wanted(w))
                now = w;
            return now != 0;
        },
        timeoutMs);
    return now;
}

bool BenchClient::waitForDesktop(quint32 desktop, double timeoutMs)
{
    if (currentDesktop() == desktop)
        return true;
    return pump(
               [&](const xcb_generic_event_t* e) {
                   return isDesktopChange(e) && currentDesktop() == desktop;
               },
               timeoutMs)
        .has_value();
}

xcb_timestamp_t BenchClient::freshTimestamp()
{
    xcb_change_property(m_c, XCB_PROP_MODE_APPEND, m_own, m_stamp, XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(m_c);
    xcb_timestamp_t time = XCB_CURRENT_TIME;
    pump(
        [&](const xcb_generic_event_t* e) {
            if (typeOf(e) != XCB_PROPERTY_NOTIFY)
                return false;
            const auto* p = reinterpret_cast<const xcb_property_notify_event_t*>(e);
            if (p->window != m_own)
                return false;
            time = p->time;
            return true;
        },
        1000);
    return time;
}

void BenchClient::sendRootMessage(xcb_window_t window, xcb_atom_t type,
                                  std::initializer_list<quint32> data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = type;
    size_t i = 0;
    for (quint32 value : data)
        event.data.data32[i++] = value;
    xcb_send_event(m_c, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
}

void BenchClient::requestActivation(xcb_window_t window, xcb_timestamp_t time,
                                    std::optional<quint32> switchToDesktop)
{
    if (switchToDesktop)
        sendRootMessage(m_root, m_currentDesktop, {*switchToDesktop, time, 0, 0, 0});
    sendRootMessage(window, m_active, {2, time, 0, 0, 0});
    xcb_flush(m_c);
}

int BenchClient::unboundKeycode() const
{
    const xcb_setup_t* setup = xcb_get_setup(m_c);
    const int first = setup->min_keycode;
    const int count = setup->max_keycode - first + 1;
    auto map = reply(xcb_get_keyboard_mapping_reply(
        m_c, xcb_get_keyboard_mapping(m_c, xcb_keycode_t(first), uint8_t(count)), nullptr));
    if (!map || map->keysyms_per_keycode == 0)
        return 0;
    const xcb_keysym_t* syms = xcb_get_keyboard_mapping_keysyms(map.get());
    const int per = map->keysyms_per_keycode;
    // From the top: the keycodes nearest the end are the least likely to be
    // any real keyboard's.
    for (int i = count - 1; i >= 0; --i) {
        bool bound = false;
        for (int j = 0; j < per && !bound; ++j)
            bound = syms[i * per + j] != 0;
        if (!bound)
            return first + i;
    }
    return 0;
}

void BenchClient::setKeyFloorTarget(xcb_window_t window)
{
    xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, m_root, atom("VELKOR_BENCH_KEY_FLOOR_TARGET"),
                        XCB_ATOM_WINDOW, 32, 1, &window);
    xcb_flush(m_c);
}

} // namespace velkor::xbench
