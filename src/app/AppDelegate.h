// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/Platform.h"
#include "settings/PlatformTraits.h"

#include <QObject>
#include <memory>
#include <optional>

namespace velkor {

class AppCoordinator;
class AppRegistry;
class FirstStartNotice;
class PermissionsManager;
class Preferences;
class ShellWindows;
class StatusItemController;
class StatusMenuModel;

// Owns the long-lived parts of the running program and starts them in
// order: platform, preferences, registry, coordinator, the tray item, then
// the key monitor and its watchdog once the platform says the program is
// trusted (after the onboarding window when it is not yet).
class AppDelegate final : public QObject
{
    Q_OBJECT
public:
    static constexpr double WatchdogSeconds = 3.0;

    explicit AppDelegate(std::unique_ptr<Platform> platform, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Becomes the one running Velkor of this session. False when another
    // runs: it has been asked to show its settings and this one should exit.
    // When there is no telling (no session bus), true: this one runs.
    bool claimSingleInstance();

    // Runs once the application object exists: the reopen request and the
    // tray item, then the key monitor when trusted, else the onboarding
    // window. False when the program cannot work here; the reason has been
    // written to the log.
    bool start();

    Platform& platform() { return *m_platform; }
    Preferences& preferences() { return *m_prefs; }
    AppRegistry& registry() { return *m_registry; }
    AppCoordinator& coordinator() { return *m_coordinator; }
    PermissionsManager& permissions() { return *m_permissions; }
    ShellWindows& windows() { return *m_windows; }

private:
    // Starts the key monitor and the watchdog; again after a later grant is
    // harmless.
    void startMonitoring();
    // The onboarding callback: monitoring starts, the window closes.
    void permissionGranted();
    void installStatusItem();
    // The first start names the activation key: a small notice, or the
    // settings window where there is no tray to come back through.
    void greetFirstStart();
    // The key monitor's state goes to the log, the tray and the settings.
    void watchKeyMonitor();

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<AppRegistry> m_registry;
    std::unique_ptr<AppCoordinator> m_coordinator;
    std::unique_ptr<PermissionsManager> m_permissions;
    std::unique_ptr<ShellWindows> m_windows;
    std::unique_ptr<StatusMenuModel> m_menuModel;
    std::unique_ptr<StatusItemController> m_statusItem;
    std::unique_ptr<FirstStartNotice> m_notice;
    PlatformTraits m_traits;
    std::optional<Clock::TaskId> m_watchdog;
};

} // namespace velkor
