// SPDX-License-Identifier: MIT
// An X client with several top-level windows in one process, which xterm
// and the other stock clients cannot be: one app with many windows.
//   e2e_multi_window_client CLASS WINDOW...
// Each WINDOW is a comma list, possibly empty, of name= (_NET_WM_NAME),
// wmname= (WM_NAME), gtk=, icon=RRGGBB, type=utility|dialog, skip, noinput.
// Windows are mapped one at a time, so the window manager lists them in this
// order; each closes on WM_DELETE_WINDOW and the client exits with the last.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

xcb_connection_t* c = nullptr;

xcb_atom_t atom(const char* name)
{
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : XCB_ATOM_NONE;
    free(reply);
    return result;
}

void set(xcb_window_t w, xcb_atom_t property, xcb_atom_t type, int format, const void* data,
         size_t count)
{
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, property, type, uint8_t(format),
                        uint32_t(count), data);
}

void describe(xcb_window_t w, const std::string& description)
{
    std::vector<xcb_atom_t> states;
    for (size_t start = 0; start <= description.size();) {
        const size_t end = std::min(description.find(',', start), description.size());
        const std::string item = description.substr(start, end - start);
        start = end + 1;
        const size_t equals = item.find('=');
        const std::string key = item.substr(0, equals);
        const std::string value =
            equals == std::string::npos ? std::string() : item.substr(equals + 1);
        if (key == "name")
            set(w, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 8, value.data(), value.size());
        else if (key == "wmname")
            set(w, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, value.data(), value.size());
        else if (key == "gtk")
            set(w, atom("_GTK_APPLICATION_ID"), atom("UTF8_STRING"), 8, value.data(), value.size());
        else if (key == "icon") {
            // A small frame and one of the overlay's size, in one colour.
            const uint32_t argb = 0xFF000000u | uint32_t(std::stoul(value, nullptr, 16));
            std::vector<uint32_t> icon;
            for (const uint32_t side : {16u, 48u}) {
                icon.insert(icon.end(), {side, side});
                icon.insert(icon.end(), size_t(side * side), argb);
            }
            set(w, atom("_NET_WM_ICON"), XCB_ATOM_CARDINAL, 32, icon.data(), icon.size());
        } else if (key == "type") {
            const xcb_atom_t type = atom(value == "utility" ? "_NET_WM_WINDOW_TYPE_UTILITY"
                                                            : "_NET_WM_WINDOW_TYPE_DIALOG");
            set(w, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, &type, 1);
        } else if (key == "skip")
            states.push_back(atom("_NET_WM_STATE_SKIP_TASKBAR"));
        else if (key == "noinput") {
            const uint32_t hints[9] = {1}; // InputHint set, input false
            set(w, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32, hints, 9);
        }
    }
    if (!states.empty())
        set(w, atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.data(), states.size());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c))
        return 1;
    xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const xcb_atom_t protocols = atom("WM_PROTOCOLS");
    const xcb_atom_t deleteWindow = atom("WM_DELETE_WINDOW");

    std::string instance = argv[1];
    for (char& ch : instance)
        ch = char(tolower(ch));
    const std::string wmClass = instance + '\0' + argv[1] + '\0';
    const uint32_t pid = uint32_t(getpid());
    std::vector<xcb_window_t> windows;
    for (int i = 2; i < argc; ++i) {
        const xcb_window_t w = xcb_generate_id(c);
        const uint32_t values[] = {screen->white_pixel};
        xcb_create_window(c, XCB_COPY_FROM_PARENT, w, screen->root, 40 * i, 40 * i, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_BACK_PIXEL,
                          values);
        set(w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, wmClass.data(), wmClass.size());
        set(w, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, &pid, 1);
        set(w, protocols, XCB_ATOM_ATOM, 32, &deleteWindow, 1);
        describe(w, argv[i]);
        xcb_map_window(c, w);
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
