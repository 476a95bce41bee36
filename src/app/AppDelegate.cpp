// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/PermissionsManager.h"
#include "catalogue/AppRegistry.h"
#include "core/AppCoordinator.h"
#include "settings/Preferences.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcApp, "velkor.app")

namespace velkor {

AppDelegate::AppDelegate(std::unique_ptr<Platform> platform, QObject* parent)
    : QObject(parent), m_platform(std::move(platform))
{
    m_prefs = std::make_unique<Preferences>(Preferences::openUserStore());
    m_registry = std::make_unique<AppRegistry>(*m_platform->workspace,
                                               m_platform->installedApps.get(), *m_prefs);
    // The overlay window comes with the widgets; until then sessions run
    // without a panel.
    m_coordinator = std::make_unique<AppCoordinator>(*m_platform, *m_prefs, *m_registry,
                                                     OverlayController::PanelFactory());
    m_permissions = std::make_unique<PermissionsManager>(*m_platform->trust, *m_platform->clock);
}

AppDelegate::~AppDelegate()
{
    if (m_watchdog)
        m_platform->clock->cancel(*m_watchdog);
    // The coordinator holds the key monitor, which holds the platform's key
    // source: it goes before the platform.
    m_coordinator.reset();
    m_registry.reset();
}

bool AppDelegate::start()
{
    if (m_permissions->isTrusted()) {
        startMonitoring();
        return true;
    }
    return showPermissions();
}

void AppDelegate::startMonitoring()
{
    m_coordinator->keyMonitor().start();
    if (m_watchdog)
        return;
    // The watchdog brings the activation key back within three seconds when
    // the platform has switched the key source off (on X11: lost grabs).
    m_watchdog = m_platform->clock->callEvery(WatchdogSeconds, [this] {
        m_coordinator->keyMonitor().reenableIfDisabled();
    });
}

bool AppDelegate::showPermissions()
{
    qCCritical(lcApp).noquote() << m_permissions->missingExplanation();
    return false;
}

} // namespace velkor
