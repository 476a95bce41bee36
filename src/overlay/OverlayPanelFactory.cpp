// SPDX-License-Identifier: MIT
#include "overlay/OverlayPanelFactory.h"

#include "overlay/OverlayWindow.h"

namespace velkor {

OverlayController::PanelFactory makeOverlayPanelFactory(ShellIntegration& shell, Preferences& prefs,
                                                        KeyNaming naming)
{
    return [&shell, &prefs, naming](OverlayModel& model) -> std::unique_ptr<OverlayPanel> {
        return std::make_unique<OverlayWindow>(model, prefs, shell, naming);
    };
}

} // namespace velkor
