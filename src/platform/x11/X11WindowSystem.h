// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WindowSystem.h"

#include <memory>
#include <xcb/xcb.h>

namespace velkor::x11 {

class X11WindowCache;

// A managed top-level window, by its X id.
class X11WindowElement final : public WindowElement
{
public:
    explicit X11WindowElement(xcb_window_t id) : window(id) {}
    const xcb_window_t window;
};

// One app's windows in stacking order, and what can be done to a window:
// EWMH requests to the window manager, or requests to the window itself
// while there is none.
class X11WindowSystem final : public WindowSystem
{
public:
    explicit X11WindowSystem(std::shared_ptr<X11WindowCache> cache);

    std::optional<QList<RawWindow>> windowsOf(Pid pid) override;
    WindowHandle focusedWindowOf(Pid pid) override;
    void raise(const WindowHandle& window) override;
    void setMinimized(const WindowHandle& window, bool minimized) override;
    void close(const WindowHandle& window) override;
    void setFrontmost(Pid pid) override;
    std::optional<QRectF> frameOf(const WindowHandle& window) override;
    void warpPointer(QPointF globalPoint) override;

    static xcb_window_t idOf(const WindowHandle& window);

private:
    std::shared_ptr<X11WindowCache> m_owner;
    X11WindowCache& m_cache;
};

} // namespace velkor::x11
