// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <QString>
#include <memory>
#include <optional>

// What each native backend provides to the factory and to start-up. Exactly
// one backend library implements these in a given build.
namespace velkor {

// The backend for this Qt platform plugin, or null when it serves another.
std::unique_ptr<Platform> createNativePlatform(const QString& qtPlatformName);

// Runs before the application object exists: picks the Qt platform plugin
// and checks that the program can run here. Absent when it can; otherwise
// one line saying why not.
std::optional<QString> prepareNativeEnvironment();

// Quits the application's event loop on SIGTERM, SIGINT and SIGHUP, so
// that settings are written and clean-up runs.
void quitOnTerminationSignals();

} // namespace velkor
