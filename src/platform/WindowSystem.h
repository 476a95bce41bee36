// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <memory>
#include <optional>

namespace velkor {

// An opaque, reference-counted handle to one top-level window (an
// AXUIElement on macOS, an X window id on X11). Backends derive from it.
class WindowElement
{
public:
    virtual ~WindowElement() = default;
};
using WindowHandle = std::shared_ptr<const WindowElement>;

// One window as the platform lists it, before fallbacks are applied.
struct RawWindow
{
    WindowHandle element;
    std::optional<QString> title;  // absent when unreadable
    std::optional<bool> minimized; // absent when unreadable
};

// Windows of running applications and the pointer. Every call is a best
// effort: failures give empty lists, absent values, or nothing.
class WindowSystem
{
public:
    virtual ~WindowSystem() = default;

    // The app's top-level windows, front first; absent when the list cannot
    // be read at all (the app refuses, or access is missing).
    virtual std::optional<QList<RawWindow>> windowsOf(Pid pid) = 0;

    // The app's focused window, or null.
    virtual WindowHandle focusedWindowOf(Pid pid) = 0;

    virtual void raise(const WindowHandle& window) = 0;
    virtual void setMinimized(const WindowHandle& window, bool minimized) = 0;

    // Presses the window's close button; windows without one are left alone.
    virtual void close(const WindowHandle& window) = 0;

    // Makes the application element frontmost (the step between raising a
    // window and activating the app).
    virtual void setFrontmost(Pid pid) = 0;

    // The window's frame in global top-left-origin coordinates.
    virtual std::optional<QRectF> frameOf(const WindowHandle& window) = 0;

    virtual void warpPointer(QPointF globalPoint) = 0;
};

} // namespace velkor
