// SPDX-License-Identifier: MIT
#include "platform/NullPlatform.h"

#include "platform/QtClock.h"

namespace velkor {

bool NullLoginItem::registerItem(QString* error)
{
    if (error)
        *error = QStringLiteral("launch at login is not available in this build");
    return false;
}

bool NullLoginItem::unregisterItem(QString* error)
{
    return registerItem(error);
}

std::unique_ptr<Platform> createNullPlatform(const QString& explanation)
{
    auto platform = std::make_unique<Platform>();
    platform->clock = std::make_unique<QtClock>();
    platform->workspace = std::make_unique<NullWorkspace>();
    platform->windows = std::make_unique<NullWindowSystem>();
    platform->spaces = std::make_unique<NullSpaceSystem>();
    platform->keys = std::make_unique<NullKeySource>();
    platform->installedApps = std::make_unique<NullInstalledAppSource>();
    platform->trust = std::make_unique<NullTrustCheck>(explanation);
    platform->loginItem = std::make_unique<NullLoginItem>();
    platform->updater = std::make_unique<NullUpdater>();
    platform->shell = std::make_unique<NullShellIntegration>();
    return platform;
}

} // namespace velkor
