// SPDX-License-Identifier: MIT
#pragma once

#include "overlay/OverlayPanel.h"
#include "settings/PlatformTraits.h"

#include <QTimer>
#include <QWidget>

class QPropertyAnimation;

namespace velkor {

class OverlayModel;
class OverlayView;
class Preferences;
class ShellIntegration;

// The floating window that holds the overlay view: frameless, translucent,
// above other windows, and never focused, so the app the user works in keeps
// the keyboard while it shows. The platform's own touches (window type,
// every-desktop presence, blur) come from the shell integration. Without a
// compositor a see-through window shows black where it is clear, so it is
// then opaque, cut to the pill and the dots, and shown without a fade; it
// follows the compositor as it starts and stops.
class OverlayWindow final : public QWidget, public OverlayPanel
{
    Q_OBJECT
public:
    OverlayWindow(OverlayModel& model, Preferences& prefs, ShellIntegration& shell,
                  KeyNaming naming = KeyNaming::pc);
    ~OverlayWindow() override;

    OverlayView& view() const { return *m_view; }

    bool isVisible() const override;
    std::optional<QSizeF> fittingSize() override;
    std::optional<QRectF> mainScreenArea() const override;
    void setFrame(const QRectF& frame) override;
    void orderFront() override;
    void fadeIn(double seconds) override;
    void orderOut() override;

    // Whether a fade-in is still running.
    bool isFading() const;

private:
    void followCompositing();
    void pillChanged();
    void followPill();
    void updateBlur();
    void updateShape();

    Preferences& m_prefs;
    ShellIntegration& m_shell;
    OverlayView* m_view;
    QPropertyAnimation* m_fade;
    QTimer m_releaseHeap;
    bool m_pillChanged = false; // the shape and blur do not follow the pill yet
};

} // namespace velkor
