// SPDX-License-Identifier: MIT
//
// velkor-key-floor: the least any switcher driven by a key can do, as a
// baseline for velkor-x11-bench. It grabs one key on the root; when the key
// goes down it sends _NET_ACTIVE_WINDOW for the window the bench named
// beforehand in a property on the root, with source indication 2 and the
// key's own server time, as Velkor does. One connection, one thread, a
// blocking read, no toolkit and no other work: what is left between the key
// and the request is the server delivering the key, this process waking up
// and the request going back.
//
// Usage: velkor-key-floor KEYCODE (the display from DISPLAY). Prints
// "ready" once the key is grabbed; exits when the server goes away.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace {

// The bench writes the target window here (type WINDOW, format 32).
constexpr const char* TargetProperty = "VELKOR_BENCH_KEY_FLOOR_TARGET";

xcb_atom_t atom(xcb_connection_t* c, const char* name)
{
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> r(
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(std::strlen(name)), name), nullptr),
        &std::free);
    return r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_window_t readTarget(xcb_connection_t* c, xcb_window_t root, xcb_atom_t property)
{
    std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> r(
        xcb_get_property_reply(c, xcb_get_property(c, 0, root, property, XCB_ATOM_WINDOW, 0, 1),
                               nullptr),
        &std::free);
    if (!r || r->format != 32 || xcb_get_property_value_length(r.get()) < 4)
        return XCB_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(r.get()));
}

} // namespace

int main(int argc, char** argv)
{
    const int keycode = argc == 2 ? std::atoi(argv[1]) : 0;
    if (keycode < 8 || keycode > 255) {
        std::fprintf(stderr, "usage: velkor-key-floor KEYCODE (8-255)\n");
        return 2;
    }
    int screen = 0;
    xcb_connection_t* c = xcb_connect(nullptr, &screen);
    if (xcb_connection_has_error(c)) {
        std::fprintf(stderr, "velkor-key-floor: cannot open the display\n");
        return 1;
    }
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (int i = 0; i < screen; ++i)
        xcb_screen_next(&it);
    const xcb_window_t root = it.data->root;
    const xcb_atom_t active = atom(c, "_NET_ACTIVE_WINDOW");
    const xcb_atom_t targetProperty = atom(c, TargetProperty);

    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c, root, XCB_CW_EVENT_MASK, &mask);
    if (xcb_generic_error_t* error = xcb_request_check(
            c, xcb_grab_key_checked(c, 1, root, XCB_MOD_MASK_ANY, xcb_keycode_t(keycode),
                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC))) {
        std::fprintf(stderr, "velkor-key-floor: keycode %d is grabbed by another client\n",
                     keycode);
        std::free(error);
        return 1;
    }
    xcb_window_t target = readTarget(c, root, targetProperty);
    std::printf("ready\n");
    std::fflush(stdout);

    while (xcb_generic_event_t* event = xcb_wait_for_event(c)) {
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_KEY_PRESS) {
            const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event);
            if (key->detail == keycode && target != XCB_NONE) {
                xcb_client_message_event_t message{};
                message.response_type = XCB_CLIENT_MESSAGE;
                message.format = 32;
                message.window = target;
                message.type = active;
                message.data.data32[0] = 2;
                message.data.data32[1] = key->time;
                xcb_send_event(c, 0, root,
                               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                               reinterpret_cast<const char*>(&message));
                xcb_flush(c);
            }
        } else if (type == XCB_PROPERTY_NOTIFY) {
            const auto* property = reinterpret_cast<const xcb_property_notify_event_t*>(event);
            if (property->window == root && property->atom == targetProperty)
                target = readTarget(c, root, targetProperty);
        }
        std::free(event);
    }
    xcb_disconnect(c);
    return 0;
}
