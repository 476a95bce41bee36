// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/AppEntry.h"

namespace velkor {

class Workspace;
class WindowSystem;

// Brings a chosen app to the front, or opens it when it is not running.
class AppActivator
{
public:
    AppActivator(Workspace& workspace, WindowSystem& windows);

    // Unhide, raise the focused (else first) window, make frontmost, activate.
    void bringToFront(Pid pid);

    // bringToFront for a running entry; otherwise opens its bundle.
    void activate(const AppEntry& app);

private:
    Workspace& m_workspace;
    WindowSystem& m_windows;
};

} // namespace velkor
