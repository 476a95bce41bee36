// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WindowSystem.h"

#include <QString>
#include <optional>

namespace velkor {

// One top-level window of a running app. The id ("<pid>:<index>") is only
// stable while the app's window list does not change.
struct WindowEntry
{
    QString id;
    QString title; // the app's name when the window's title is unreadable
    QString appName;
    Pid pid = 0;
    std::optional<QString> bundleId;
    bool isMinimized = false;
    WindowHandle element;
};

} // namespace velkor
