// SPDX-License-Identifier: MIT
#include "platform/mac/MacPlatform.h"

#include "platform/mac/MacClock.h"
#include "platform/mac/MacInstalledAppSource.h"
#include "platform/mac/MacKeySource.h"
#include "platform/mac/MacLoginItem.h"
#include "platform/mac/MacShellIntegration.h"
#include "platform/mac/MacSpaceSystem.h"
#include "platform/mac/MacTrustCheck.h"
#include "platform/mac/MacUpdater.h"
#include "platform/mac/MacWindowSystem.h"
#include "platform/mac/MacWorkspace.h"

namespace velkor {

// The key source stamps events with the platform's clock, which Platform
// declares first and so destroys last.
std::unique_ptr<Platform> createMacPlatform()
{
    auto platform = std::make_unique<Platform>();
    platform->clock = std::make_unique<MacClock>();
    platform->workspace = std::make_unique<MacWorkspace>();
    platform->windows = std::make_unique<MacWindowSystem>();
    platform->spaces = std::make_unique<MacSpaceSystem>();
    platform->keys = std::make_unique<MacKeySource>(*platform->clock);
    platform->installedApps = std::make_unique<MacInstalledAppSource>();
    platform->trust = std::make_unique<MacTrustCheck>();
    platform->loginItem = std::make_unique<MacLoginItem>();
    platform->updater = std::make_unique<MacUpdater>();
    platform->shell = std::make_unique<MacShellIntegration>();
    return platform;
}

} // namespace velkor
