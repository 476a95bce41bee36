// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/PermissionsManager.h"
#include "app/ShellWindows.h"
#include "app/StatusItemController.h"
#include "app/StatusMenuModel.h"
#include "catalogue/AppRegistry.h"
#include "core/AppCoordinator.h"
#include "overlay/OverlayPanelFactory.h"
#include "settings/Preferences.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcApp, "velkor.app")

namespace velkor {

AppDelegate::AppDelegate(std::unique_ptr<Platform> platform, QObject* parent)
    : QObject(parent), m_platform(std::move(platform))
{
    m_prefs = std::make_unique<Preferences>(Preferences::openUserStore());
    m_registry = std::make_unique<AppRegistry>(*m_platform->workspace,
                                               m_platform->installedApps.get(), *m_prefs);
    m_coordinator = std::make_unique<AppCoordinator>(
        *m_platform, *m_prefs, *m_registry, makeOverlayPanelFactory(*m_platform->shell, *m_prefs));
    m_permissions = std::make_unique<PermissionsManager>(*m_platform->trust, *m_platform->clock);
    const SettingsContext context{*m_prefs,
                                  *m_registry,
                                  *m_permissions,
                                  *m_platform->trust,
                                  *m_platform->loginItem,
                                  *m_platform->shell,
                                  PlatformTraits::forPlatform(QGuiApplication::platformName()),
                                  QStringLiteral(VELKOR_VERSION)};
    m_windows = std::make_unique<ShellWindows>(context, [this] { permissionGranted(); });
    m_menuModel = std::make_unique<StatusMenuModel>(*m_permissions);
}

AppDelegate::~AppDelegate()
{
    if (m_watchdog)
        m_platform->clock->cancel(*m_watchdog);
    // The coordinator holds the key monitor, which holds the platform's key
    // source: it goes before the platform.
    m_statusItem.reset();
    m_windows.reset();
    m_coordinator.reset();
    m_registry.reset();
}

bool AppDelegate::claimSingleInstance()
{
    SingleInstance* instance = m_platform->singleInstance.get();
    if (!instance)
        return true;
    switch (instance->claim()) {
    case SingleInstance::Claim::anotherRuns:
        return false;
    case SingleInstance::Claim::unchecked:
        return true; // why has been logged; a start without a bus still works
    case SingleInstance::Claim::claimed:
        break;
    }
    connect(instance, &SingleInstance::showSettingsRequested, this,
            [this] { m_windows->showSettings(); });
    return true;
}

bool AppDelegate::start()
{
    // Opening the running app again (Finder, Dock, Spotlight) shows its settings.
    m_platform->shell->setReopenHandler([this] { m_windows->showSettings(); });
    installStatusItem();
    if (m_permissions->isTrusted()) {
        startMonitoring();
        return true;
    }
    qCWarning(lcApp).noquote() << m_permissions->missingExplanation();
    m_windows->showPermissions();
    return true;
}

void AppDelegate::installStatusItem()
{
    StatusMenuCallbacks& callbacks = m_menuModel->callbacks;
    callbacks.openSettings = [this] { m_windows->showSettings(); };
    callbacks.openPermissions = [this] { m_windows->showPermissions(); };
    callbacks.checkForUpdates = [this] { m_platform->updater->checkForUpdates(); };
    callbacks.quit = [] { QCoreApplication::quit(); };
    m_menuModel->setUpdatesAvailable(m_platform->updater->isAvailable());
    m_statusItem = std::make_unique<StatusItemController>(
        *m_menuModel, m_platform->shell->trayOpensMenuOnClick());
    m_statusItem->install();
}

void AppDelegate::permissionGranted()
{
    startMonitoring();
    m_windows->closePermissions();
}

void AppDelegate::startMonitoring()
{
    m_coordinator->keyMonitor().start();
    if (m_watchdog)
        return;
    // The watchdog brings the activation key back within three seconds when
    // the platform has switched the key source off (on X11: lost grabs).
    m_watchdog = m_platform->clock->callEvery(
        WatchdogSeconds, [this] { m_coordinator->keyMonitor().reenableIfDisabled(); });
}

} // namespace velkor
