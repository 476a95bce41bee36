// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/InstalledAppSource.h"
#include "platform/KeySource.h"
#include "platform/ShellIntegration.h"
#include "platform/SingleInstance.h"
#include "platform/SpaceSystem.h"
#include "platform/SystemServices.h"
#include "platform/WindowSystem.h"
#include "platform/Workspace.h"

#include <memory>

namespace velkor {

// Everything the portable code needs of the operating system, owned in one
// place. The factory picks the backend; tests build one from fakes.
struct Platform
{
    std::unique_ptr<Clock> clock;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<WindowSystem> windows;
    std::unique_ptr<SpaceSystem> spaces;
    std::unique_ptr<KeySource> keys;
    std::unique_ptr<InstalledAppSource> installedApps;
    std::unique_ptr<TrustCheck> trust;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<Updater> updater;
    std::unique_ptr<ShellIntegration> shell;
    // Absent where the system itself keeps one copy running (macOS).
    std::unique_ptr<SingleInstance> singleInstance;
};

// The backend for the running Qt platform plugin ("xcb" → X11, macOS → mac,
// anything else → a backend that reports nothing and does nothing).
std::unique_ptr<Platform> createPlatform();

} // namespace velkor
