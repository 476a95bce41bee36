// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/Platform.h"

#include <QObject>
#include <memory>
#include <optional>

namespace velkor {

class AppCoordinator;
class AppRegistry;
class PermissionsManager;
class Preferences;

// Owns the long-lived parts of the running program and starts them in
// order: platform, preferences, registry, coordinator, then the key
// monitor and its watchdog once the platform says the program is trusted.
class AppDelegate final : public QObject
{
    Q_OBJECT
public:
    static constexpr double WatchdogSeconds = 3.0;

    explicit AppDelegate(std::unique_ptr<Platform> platform, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Runs once the application object exists. False when the program cannot
    // work here; the reason has been written to the log.
    bool start();

    Platform& platform() { return *m_platform; }
    Preferences& preferences() { return *m_prefs; }
    AppRegistry& registry() { return *m_registry; }
    AppCoordinator& coordinator() { return *m_coordinator; }
    PermissionsManager& permissions() { return *m_permissions; }

private:
    // Starts the key monitor and the watchdog; again after a later grant is
    // harmless.
    void startMonitoring();
    // Where the onboarding window opens once the UI has one; until then the
    // reason is logged and start-up gives up.
    bool showPermissions();

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<AppRegistry> m_registry;
    std::unique_ptr<AppCoordinator> m_coordinator;
    std::unique_ptr<PermissionsManager> m_permissions;
    std::optional<Clock::TaskId> m_watchdog;
};

} // namespace velkor
