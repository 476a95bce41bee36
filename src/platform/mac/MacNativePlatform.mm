// SPDX-License-Identifier: MIT
#include "platform/NativePlatform.h"
#include "platform/mac/MacPlatform.h"

#include <QtGlobal>

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
    // Qt's cocoa plugin activates the whole application when a window is
    // raised, and again when launching finishes. Velkor is an agent whose
    // overlay must leave the focus where it is; it activates itself only
    // when it shows a window of its own. Both are read once, so here.
    qputenv("QT_MAC_SET_RAISE_PROCESS", "0");
    qputenv("QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM", "1");
    return std::nullopt;
}

} // namespace velkor
