// SPDX-License-Identifier: MIT
#include "windows/WindowManager.h"

#include "platform/Workspace.h"
#include "settings/Preferences.h"

#include <algorithm>

namespace velkor {

WindowManager::WindowManager(Workspace& workspace, WindowSystem& windows, const Preferences& prefs)
    : m_workspace(workspace), m_windows(windows), m_prefs(prefs)
{}

QList<WindowEntry> WindowManager::windows(Pid pid, const QString& appName,
                                          const std::optional<QString>& bundleId) const
{
    const auto raw = m_windows.windowsOf(pid);
    if (!raw)
        return {};
    QList<WindowEntry> entries;
    entries.reserve(raw->size());
    for (qsizetype i = 0; i < raw->size(); ++i) {
        const RawWindow& w = raw->at(i);
        entries.append(WindowEntry{QStringLiteral("%1:%2").arg(pid).arg(i),
                                   w.title.value_or(appName), appName, pid, bundleId,
                                   w.minimized.value_or(false), w.element});
    }
    return entries;
}

QList<WindowEntry> WindowManager::frontmostAppWindows() const
{
    const auto pid = m_workspace.frontmostPid();
    if (!pid)
        return {};
    const QList<RunningApp> apps = m_workspace.runningApplications();
    const auto app =
        std::find_if(apps.begin(), apps.end(), [&](const RunningApp& a) { return a.pid == *pid; });
    const QString name = app != apps.end() ? app->name.value_or(QString()) : QString();
    const std::optional<QString> bundleId = app != apps.end() ? app->bundleId : std::nullopt;

    QList<WindowEntry> entries = windows(*pid, name, bundleId);
    entries.removeIf([](const WindowEntry& w) { return w.isMinimized; });
    return entries;
}

QList<WindowEntry> WindowManager::allWindows() const
{
    const std::optional<QString> ownId = m_workspace.ownBundleId();
    const QStringList excluded = m_prefs.excludedBundleIds();
    QList<WindowEntry> entries;
    for (const RunningApp& app : m_workspace.runningApplications()) {
        if (!app.regular)
            continue;
        if (app.bundleId && ownId && *app.bundleId == *ownId)
            continue;
        if (app.bundleId && excluded.contains(*app.bundleId))
            continue;
        entries.append(windows(app.pid, app.name.value_or(QString()), app.bundleId));
    }
    return entries;
}

void WindowManager::close(const WindowEntry& window)
{
    m_windows.close(window.element);
}

void WindowManager::centerMouse(Pid pid)
{
    const QList<WindowEntry> entries = windows(pid, QString(), std::nullopt);
    const auto first = std::find_if(entries.begin(), entries.end(),
                                    [](const WindowEntry& w) { return !w.isMinimized; });
    if (first == entries.end())
        return;
    // Frames are already in the top-left-origin coordinates the warp takes.
    if (const auto frame = m_windows.frameOf(first->element))
        m_windows.warpPointer(frame->center());
}

void WindowManager::focus(const WindowEntry& window)
{
    if (window.isMinimized)
        m_windows.setMinimized(window.element, false);
    m_windows.raise(window.element);
    m_windows.setFrontmost(window.pid);
    if (m_workspace.isRunning(window.pid))
        m_workspace.activate(window.pid);
}

} // namespace velkor
