// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WindowSystem.h"

namespace velkor {

// Windows through the Accessibility interface; each handle holds a retained
// AXUIElement of its window. Every failure is silent.
class MacWindowSystem final : public WindowSystem
{
public:
    std::optional<QList<RawWindow>> windowsOf(Pid pid) override;
    WindowHandle focusedWindowOf(Pid pid) override;
    void raise(const WindowHandle& window) override;
    void setMinimized(const WindowHandle& window, bool minimized) override;
    void close(const WindowHandle& window) override;
    void setFrontmost(Pid pid) override;
    std::optional<QRectF> frameOf(const WindowHandle& window) override;
    void warpPointer(QPointF globalPoint) override;
};

} // namespace velkor
