// SPDX-License-Identifier: MIT
#include "core/AppActivator.h"

#include "platform/WindowSystem.h"
#include "platform/Workspace.h"

namespace velkor {

AppActivator::AppActivator(Workspace& workspace, WindowSystem& windows)
    : m_workspace(workspace), m_windows(windows)
{}

void AppActivator::bringToFront(Pid pid)
{
    const bool running = m_workspace.isRunning(pid);
    if (running && m_workspace.isHidden(pid))
        m_workspace.unhide(pid);

    // The window goes up before the app is made frontmost and activated, so
    // the activation lands on the window the user expects.
    if (WindowHandle focused = m_windows.focusedWindowOf(pid)) {
        m_windows.raise(focused);
    } else if (const auto listed = m_windows.windowsOf(pid); listed && !listed->isEmpty()) {
        m_windows.raise(listed->first().element);
    }

    m_windows.setFrontmost(pid);
    if (running)
        m_workspace.activate(pid);
}

void AppActivator::activate(const AppEntry& app)
{
    if (app.pid) {
        bringToFront(*app.pid);
        return;
    }
    if (const auto path = app.path())
        m_workspace.openApplication(*path);
}

} // namespace velkor
