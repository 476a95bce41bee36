// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"
#include "platform/x11/X11Connection.h"

#include <QString>
#include <optional>

namespace velkor::x11 {

// What the backend knows about one managed top-level window, kept current
// from PropertyNotify events.
struct X11Client
{
    enum class Kind
    {
        Normal, // normal windows, dialogs, windows without a type
        Utility,
        Other // docks, desktops, splashes, notifications
    };

    // Desktop number of windows shown on every desktop.
    static constexpr quint32 AllDesktops = 0xFFFFFFFF;
    // No window manager offers more desktops; a larger count or number read
    // from a property is some client's mistake.
    static constexpr quint32 MaxDesktops = 1024;

    xcb_window_t id = NoWindow;
    Pid pid = 0;          // 0 when neither _NET_WM_PID nor X-Resource tells
    QString instanceName; // WM_CLASS, first part
    QString className;    // WM_CLASS, second part
    std::optional<QString> gtkApplicationId;
    std::optional<QString> netName; // _NET_WM_NAME
    std::optional<QString> wmName;  // WM_NAME
    Kind kind = Kind::Normal;
    bool hidden = false;
    bool skipTaskbar = false;
    bool sticky = false;
    std::optional<quint32> desktop;
    bool acceptsInput = true;   // WM_HINTS input
    bool takesFocus = false;    // WM_PROTOCOLS has WM_TAKE_FOCUS
    bool deletesWindow = false; // WM_PROTOCOLS has WM_DELETE_WINDOW

    std::optional<QString> title() const { return netName ? netName : wmName; }
    bool onDesktop(quint32 current) const
    {
        return sticky || !desktop || *desktop == AllDesktops || *desktop == current;
    }
    // Counts towards an app being a regular, switchable app.
    bool isTaskbarWindow() const { return kind == Kind::Normal && !skipTaskbar; }
};

} // namespace velkor::x11
