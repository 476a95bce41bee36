// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayController.h"

namespace velkor {

class Preferences;
class ShellIntegration;

// Makes the overlay controller's panels as OverlayWindows. Both references
// must outlive every panel made.
OverlayController::PanelFactory makeOverlayPanelFactory(ShellIntegration& shell,
                                                        Preferences& prefs);

} // namespace velkor
