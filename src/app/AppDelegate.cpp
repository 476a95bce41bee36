// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/FirstStartNotice.h"
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
    : QObject(parent), m_platform(std::move(platform)),
      m_traits(PlatformTraits::forPlatform(QGuiApplication::platformName()))
{
    m_prefs = std::make_unique<Preferences>(Preferences::openUserStore());
    m_registry = std::make_unique<AppRegistry>(*m_platform->workspace,
                                               m_platform->installedApps.get(), *m_prefs);
    m_coordinator = std::make_unique<AppCoordinator>(
        *m_platform, *m_prefs, *m_registry,
        makeOverlayPanelFactory(*m_platform->shell, *m_prefs, m_traits.keyNaming));
    m_permissions = std::make_unique<PermissionsManager>(*m_platform->trust, *m_platform->clock);
    const SettingsContext context{*m_prefs,
                                  *m_registry,
                                  *m_permissions,
                                  *m_platform->trust,
                                  *m_platform->loginItem,
                                  *m_platform->shell,
                                  m_traits,
                                  QStringLiteral(VELKOR_VERSION)};
    m_windows = std::make_unique<ShellWindows>(context, [this] { permissionGranted(); });
    m_menuModel = std::make_unique<StatusMenuModel>(*m_permissions, m_traits.keyNaming);
    watchKeyMonitor();
}

AppDelegate::~AppDelegate()
{
    if (m_watchdog)
        m_platform->clock->cancel(*m_watchdog);
    m_notice.reset();
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
    qWarning().noquote() << keyAccessLogLine(m_permissions->keyAccess(), m_prefs->modifierKey(),
                                             m_traits.keyNaming);
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
    // A tray host that starts later gets the icon from Qt itself.
    m_statusItem->install();
}

void AppDelegate::permissionGranted()
{
    startMonitoring();
    m_windows->closePermissions();
}

void AppDelegate::watchKeyMonitor()
{
    KeyMonitor& monitor = m_coordinator->keyMonitor();
    // One line per change of state, not one per watchdog tick.
    monitor.setAccessObserver([this](KeyAccess access) {
        const QString line = keyAccessLogLine(access, m_prefs->modifierKey(), m_traits.keyNaming);
        if (access == KeyAccess::active)
            qInfo().noquote() << line;
        else
            qWarning().noquote() << line;
        m_permissions->setMonitorAccess(access);
    });
    monitor.setActivationPressObserver([this] { m_permissions->noteActivationKeyPressed(); });
}

void AppDelegate::startMonitoring()
{
    m_coordinator->keyMonitor().start();
    if (m_watchdog)
        return;
    // The watchdog brings the activation key back within three seconds when
    // the platform has switched the key source off, or another program lets
    // go of the key; an earlier start that failed is tried again.
    m_watchdog = m_platform->clock->callEvery(
        WatchdogSeconds, [this] { m_coordinator->keyMonitor().watchdogTick(); });
    greetFirstStart();
}

void AppDelegate::greetFirstStart()
{
    if (!m_traits.showsFirstStartNotice)
        return;
    if (!m_platform->shell->hasSystemTray()) {
        // Without a tray icon nothing would show that Velkor runs; the
        // settings window names the activation key too, and says how to
        // come back to it.
        if (FirstStartNotice::markShown(m_prefs->store()))
            m_windows->showSettings();
        return;
    }
    m_notice = FirstStartNotice::showOnce(
        m_prefs->store(), activationKeyLabel(m_prefs->modifierKey(), m_traits.keyNaming),
        [this] { m_windows->showSettings(); });
}

} // namespace velkor
