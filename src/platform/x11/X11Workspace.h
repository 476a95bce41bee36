// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"
#include "platform/x11/GioLauncher.h"
#include "platform/x11/XdgDesktopEntryIndex.h"

#include <QHash>
#include <QSet>
#include <memory>
#include <xcb/xcb.h>

namespace velkor::x11 {

class X11WindowCache;
struct X11Client;

// Running apps on X11: the processes that own managed windows, grouped by
// pid and named after their desktop entries. Launch, terminate and activate
// notifications come from the cache's event handling, and from the entries
// when a new reading of the folders renames an app.
class X11Workspace final : public Workspace
{
public:
    X11Workspace(std::shared_ptr<X11WindowCache> cache,
                 std::shared_ptr<XdgDesktopEntryIndex> entries, Pid ownPid,
                 QObject* parent = nullptr);

    QList<RunningApp> runningApplications() const override;
    std::optional<Pid> frontmostPid() const override;
    std::optional<QString> ownBundleId() const override;
    bool isRunning(Pid pid) const override;
    bool isHidden(Pid pid) const override;
    void unhide(Pid pid) override;
    void hide(Pid pid) override;
    void terminate(Pid pid) override;
    void activate(Pid pid) override;
    void openApplication(const QString& bundlePath) override;

private:
    QList<const X11Client*> windowsOf(Pid pid) const;
    QList<RunningApp> readRunningApplications() const;
    RunningApp describe(Pid pid, const QList<const X11Client*>& windows) const;
    void onClientsChanged();
    void onActiveWindowChanged();
    void sendPendingActivation();

    std::shared_ptr<X11WindowCache> m_owner;
    X11WindowCache& m_cache;
    std::shared_ptr<XdgDesktopEntryIndex> m_entries;
    GioLauncher m_launcher;
    Pid m_ownPid;
    QList<RunningApp> m_lastApps;
    // What runningApplications() last made, and of which clients and entries.
    mutable QList<RunningApp> m_apps;
    mutable std::optional<quint64> m_appsGeneration;
    std::optional<Pid> m_lastFrontmost;
    xcb_window_t m_pendingActivation = 0;
};

} // namespace velkor::x11
