// SPDX-License-Identifier: MIT
#pragma once

#include <QRectF>
#include <QSizeF>
#include <optional>

namespace velkor {

// What the overlay controller needs of the floating window: a borderless,
// never-focused, always-on-top panel. Geometry is in Qt's global top-left-
// origin coordinates.
class OverlayPanel
{
public:
    virtual ~OverlayPanel() = default;

    virtual bool isVisible() const = 0;

    // The content's preferred size after laying it out; absent without content.
    virtual std::optional<QSizeF> fittingSize() = 0;

    // The usable area (no panels or docks) of the screen holding the focused
    // window; absent when there is no screen.
    virtual std::optional<QRectF> mainScreenArea() const = 0;

    // Sets the frame and redraws at once.
    virtual void setFrame(const QRectF& frame) = 0;

    // Brings a visible panel to the front without activating anything.
    virtual void orderFront() = 0;

    // Shows a hidden panel from alpha 0 to 1 with an ease-out curve.
    virtual void fadeIn(double seconds) = 0;

    // Hides at once; the panel is kept for the next show.
    virtual void orderOut() = 0;
};

} // namespace velkor
