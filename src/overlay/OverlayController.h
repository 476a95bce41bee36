// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayModel.h"
#include "overlay/OverlayPanel.h"
#include "platform/Clock.h"
#include "settings/SettingsEnums.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <functional>
#include <memory>
#include <optional>

namespace velkor {

class Preferences;

// Shows the overlay panel after the configured delay, at once, or hides it,
// and places it by the configured position. Owns the model and the panel.
class OverlayController
{
public:
    using PanelFactory = std::function<std::unique_ptr<OverlayPanel>(OverlayModel&)>;

    static constexpr double FadeInSeconds = 0.14;
    static constexpr double MinWidth = 180;
    static constexpr double MinHeight = 60;
    static constexpr double Margin = 24;

    OverlayController(Preferences& prefs, Clock& clock, PanelFactory makePanel);
    ~OverlayController();

    OverlayModel& model() { return m_model; }
    const OverlayModel& model() const { return m_model; }

    // The panel, once a show has created it.
    OverlayPanel* panel() const { return m_panel.get(); }
    bool isPanelVisible() const { return m_panel && m_panel->isVisible(); }
    bool hasPendingShow() const { return m_showTask.has_value(); }

    void scheduleShow();
    void showNow();
    void hide();
    void layout(OverlayPanel& panel);

    // Creates the panel on first use. Null when the factory makes none (a
    // build without widgets): every show and layout is then a no-op.
    OverlayPanel* ensurePanel();

    // Where a panel of this size goes within the usable screen area.
    static QPointF panelOrigin(OverlayPosition position, const QRectF& area, const QSizeF& size);

private:
    Preferences& m_prefs;
    Clock& m_clock;
    PanelFactory m_makePanel;
    OverlayModel m_model;
    std::unique_ptr<OverlayPanel> m_panel;
    std::optional<Clock::TaskId> m_showTask;
};

} // namespace velkor
