// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayController.h"
#include "settings/PlatformTraits.h"

namespace velkor {

class Preferences;
class ShellIntegration;

// Makes the overlay controller's panels as OverlayWindows. Both references
// must outlive every panel made.
OverlayController::PanelFactory makeOverlayPanelFactory(ShellIntegration& shell, Preferences& prefs,
                                                        KeyNaming naming = KeyNaming::pc);

} // namespace velkor
