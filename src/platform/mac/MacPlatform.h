// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <memory>

namespace velkor {

// Every part of the macOS backend, ready for the Cocoa platform plugin.
std::unique_ptr<Platform> createMacPlatform();

} // namespace velkor
