// SPDX-License-Identifier: MIT
// An X client with several top-level windows in one process, which xterm
// and the other stock clients cannot be: one app with many windows.
//   e2e_multi_window_client <class> <title>...
// Each window closes on WM_DELETE_WINDOW; the client exits with the last.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

xcb_atom_t atom(xcb_connection_t* c, const char* name)
{
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : XCB_ATOM_NONE;
    free(reply);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c))
        return 1;
    xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_atom_t utf8 = atom(c, "UTF8_STRING");
    const xcb_atom_t netName = atom(c, "_NET_WM_NAME");
    const xcb_atom_t netPid = atom(c, "_NET_WM_PID");
    const xcb_atom_t protocols = atom(c, "WM_PROTOCOLS");
    const xcb_atom_t deleteWindow = atom(c, "WM_DELETE_WINDOW");

    std::string instance = argv[1];
    for (char& ch : instance)
        ch = char(tolower(ch));
    const std::string wmClass = instance + '\0' + argv[1] + '\0';
    const uint32_t pid = uint32_t(getpid());
    std::vector<xcb_window_t> windows;
    for (int i = 2; i < argc; ++i) {
        const xcb_window_t w = xcb_generate_id(c);
        const uint32_t values[] = {screen->white_pixel};
        xcb_create_window(c, XCB_COPY_FROM_PARENT, w, screen->root, 40 * i, 40 * i, 320, 200, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL,
                          values);
        const char* title = argv[i];
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                            uint32_t(strlen(title)), title);
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, netName, utf8, 8, uint32_t(strlen(title)),
                            title);
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            uint32_t(wmClass.size()), wmClass.data());
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, netPid, XCB_ATOM_CARDINAL, 32, 1, &pid);
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, protocols, XCB_ATOM_ATOM, 32, 1,
                            &deleteWindow);
        xcb_map_window(c, w);
        // One at a time, so the window manager lists them in this order.
        free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        usleep(100 * 1000);
        windows.push_back(w);
    }
    xcb_flush(c);

    while (!windows.empty()) {
        xcb_generic_event_t* event = xcb_wait_for_event(c);
        if (!event)
            break;
        if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
            auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if (message->type == protocols && message->data.data32[0] == deleteWindow) {
                xcb_destroy_window(c, message->window);
                xcb_flush(c);
                std::erase(windows, message->window);
            }
        }
        free(event);
    }
    xcb_disconnect(c);
    return 0;
}
