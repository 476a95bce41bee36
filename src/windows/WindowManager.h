// SPDX-License-Identifier: MIT
#pragma once

#include "windows/WindowEntry.h"

#include <QList>

namespace velkor {

class Preferences;
class Workspace;
class WindowSystem;

// Lists, focuses and closes windows, and moves the pointer onto an app's
// window. Stateless: every call asks the platform afresh.
class WindowManager
{
public:
    WindowManager(Workspace& workspace, WindowSystem& windows, const Preferences& prefs);

    // One app's windows, minimised ones included, front first.
    QList<WindowEntry> windows(Pid pid, const QString& appName,
                               const std::optional<QString>& bundleId) const;

    // The frontmost app's windows that are not minimised.
    QList<WindowEntry> frontmostAppWindows() const;

    // The windows of every regular, non-excluded app but this program.
    QList<WindowEntry> allWindows() const;

    void close(const WindowEntry& window);

    // Moves the pointer to the centre of the app's first non-minimised window.
    void centerMouse(Pid pid);

    // Un-minimises and raises the window, makes its app frontmost and
    // activates it.
    void focus(const WindowEntry& window);

private:
    Workspace& m_workspace;
    WindowSystem& m_windows;
    const Preferences& m_prefs;
};

} // namespace velkor
