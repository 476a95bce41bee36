// SPDX-License-Identifier: MIT
#pragma once

namespace velkor::x11 {

// Whether the desktop session is a Wayland one (XDG_SESSION_TYPE or
// WAYLAND_DISPLAY say so). There Velkor runs on Xwayland, whose key grabs
// work only while one of its own X11 windows has the focus.
bool isWaylandSession();

} // namespace velkor::x11
