// SPDX-License-Identifier: MIT
#include "platform/NativePlatform.h"
#include "platform/NullPlatform.h"
#include "platform/QtClock.h"
#include "platform/x11/DBusSingleInstance.h"
#include "platform/x11/GioInstalledAppSource.h"
#include "platform/x11/LinuxAppcastUpdater.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Environment.h"
#include "platform/x11/X11KeySource.h"
#include "platform/x11/X11ShellIntegration.h"
#include "platform/x11/X11SpaceSystem.h"
#include "platform/x11/X11TrustCheck.h"
#include "platform/x11/X11WindowCache.h"
#include "platform/x11/X11WindowSystem.h"
#include "platform/x11/X11Workspace.h"
#include "platform/x11/XdgAutostartLoginItem.h"
#include "platform/x11/XdgDesktopEntryIndex.h"

#include <QCoreApplication>

namespace velkor {

using namespace velkor::x11;

std::unique_ptr<Platform> createNativePlatform(const QString& qtPlatformName)
{
    if (qtPlatformName != QLatin1String("xcb"))
        return nullptr;
    auto connection = X11Connection::fromQt();
    if (!connection) {
        auto platform = createNullPlatform(QString());
        platform->trust = std::make_unique<X11TrustCheck>(nullptr, isWaylandSession());
        return platform;
    }
    auto cache = std::make_shared<X11WindowCache>(connection);
    // One reading of the desktop entries names the running apps and lists
    // the installed ones.
    auto entries = std::make_shared<XdgDesktopEntryIndex>();
    auto platform = std::make_unique<Platform>();
    platform->clock = std::make_unique<QtClock>();
    platform->keys = std::make_unique<X11KeySource>(
        *platform->clock, [connection](xcb_timestamp_t time) { connection->noteTime(time); });
    platform->workspace =
        std::make_unique<X11Workspace>(cache, entries, Pid(QCoreApplication::applicationPid()));
    platform->windows = std::make_unique<X11WindowSystem>(cache);
    platform->spaces = std::make_unique<X11SpaceSystem>(cache);
    platform->installedApps = std::make_unique<GioInstalledAppSource>(entries);
    platform->trust = std::make_unique<X11TrustCheck>(connection, isWaylandSession());
    platform->loginItem =
        std::make_unique<XdgAutostartLoginItem>(QCoreApplication::applicationFilePath());
    platform->updater = std::make_unique<LinuxAppcastUpdater>(
        QUrl(QStringLiteral(VELKOR_UPDATE_FEED_URL)), QStringLiteral(VELKOR_VERSION));
    platform->singleInstance = std::make_unique<DBusSingleInstance>();
    platform->shell = std::make_unique<X11ShellIntegration>(connection, cache);
    return platform;
}

} // namespace velkor
