// SPDX-License-Identifier: MIT
#include "platform/NativePlatform.h"
#include "platform/mac/MacPlatform.h"

namespace velkor {

// On Apple platforms there is one backend, whatever the Qt platform plugin
// ("cocoa" normally, "offscreen" in tests).
std::unique_ptr<Platform> createNativePlatform(const QString&)
{
    return createMacPlatform();
}

// Qt picks the cocoa plugin by itself, and a missing Accessibility grant is
// handled by the onboarding window, so nothing can stop the start here.
std::optional<QString> prepareNativeEnvironment()
{
    return std::nullopt;
}

} // namespace velkor
