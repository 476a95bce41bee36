// SPDX-License-Identifier: MIT
#include "overlay/OverlayController.h"

#include "settings/Preferences.h"

#include <algorithm>

namespace velkor {

namespace {
// Used when the panel has no content to measure.
constexpr QSizeF EmptyPanelSize(240, 90);
} // namespace

OverlayController::OverlayController(Preferences& prefs, Clock& clock, PanelFactory makePanel)
    : m_prefs(prefs), m_clock(clock), m_makePanel(std::move(makePanel))
{}

OverlayController::~OverlayController()
{
    // The pending show captures this controller; it must not outlive it.
    if (m_showTask)
        m_clock.cancel(*m_showTask);
}

void OverlayController::scheduleShow()
{
    if (!m_prefs.overlayEnabled())
        return;
    if (m_showTask)
        m_clock.cancel(*m_showTask);
    m_showTask = m_clock.callAfter(m_prefs.overlayDelay(), [this] {
        m_showTask.reset();
        showNow();
    });
}

void OverlayController::showNow()
{
    if (!m_prefs.overlayEnabled())
        return;
    OverlayPanel* panel = ensurePanel();
    if (!panel)
        return;
    layout(*panel);
    // A panel already up only comes forward: fading it again would flicker.
    if (panel->isVisible())
        panel->orderFront();
    else
        panel->fadeIn(FadeInSeconds);
}

void OverlayController::hide()
{
    if (m_showTask) {
        m_clock.cancel(*m_showTask);
        m_showTask.reset();
    }
    if (m_panel)
        m_panel->orderOut();
}

void OverlayController::layout(OverlayPanel& panel)
{
    const auto area = panel.mainScreenArea();
    if (!area)
        return;
    QSizeF size = panel.fittingSize().value_or(EmptyPanelSize);
    size = QSizeF(std::max(size.width(), MinWidth), std::max(size.height(), MinHeight));
    panel.setFrame(QRectF(panelOrigin(m_prefs.overlayPosition(), *area, size), size));
}

OverlayPanel* OverlayController::ensurePanel()
{
    if (!m_panel && m_makePanel)
        m_panel = m_makePanel(m_model);
    return m_panel.get();
}

QPointF OverlayController::panelOrigin(OverlayPosition position, const QRectF& area,
                                       const QSizeF& size)
{
    const double w = size.width();
    const double h = size.height();
    // QRectF's right() and bottom() are x + width and y + height: the far edges.
    const double left = area.left() + Margin;
    const double right = area.right() - w - Margin;
    const double top = area.top() + Margin;
    const double bottom = area.bottom() - h - Margin;
    switch (position) {
    case OverlayPosition::center:
        return {area.center().x() - w / 2, area.center().y() - h / 2};
    case OverlayPosition::bottomRight:
        return {right, bottom};
    case OverlayPosition::bottomLeft:
        return {left, bottom};
    case OverlayPosition::topRight:
        return {right, top};
    case OverlayPosition::topLeft:
        return {left, top};
    }
    return {right, bottom};
}

} // namespace velkor
