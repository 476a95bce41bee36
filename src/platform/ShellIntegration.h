// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QIcon>
#include <QObject>
#include <QRectF>
#include <QString>
#include <QWindow>
#include <functional>

namespace velkor {

// The few native touches the shared Qt widgets need: how the overlay window
// behaves, the blur behind it, the app's presence in the Dock, app icons.
class ShellIntegration
{
public:
    virtual ~ShellIntegration() = default;

    // Makes a created (not yet shown) window an overlay: never takes focus,
    // above normal windows, on every desktop, not in task lists.
    virtual void prepareOverlayWindow(QWindow* window) = 0;

    // Brings the shown overlay window to the front of its level without
    // activating this application: the app the user works in keeps focus.
    virtual void orderOverlayFront(QWindow* window) { window->raise(); }

    // Whether see-through pixels of a window blend with what lies behind it.
    // On X11 that takes a compositing manager; without one (openbox, i3, XFCE
    // with compositing off) they show as black.
    virtual bool isCompositing() const { return true; }
    // Calls changed on receiver's thread each time isCompositing() changes,
    // for as long as receiver lives.
    virtual void watchCompositing(QObject* receiver, std::function<void()> changed)
    {
        Q_UNUSED(receiver);
        Q_UNUSED(changed);
    }

    // Whether the platform can blur what lies behind a window.
    virtual bool canBlurBehind() const = 0;
    // Blurs behind the given area (window coordinates) with rounded corners;
    // an empty area turns it off.
    virtual void setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius) = 0;

    // Regular presence (Dock icon, own menu bar) while a settings or
    // onboarding window is shown; accessory otherwise. No-op where there is
    // no such distinction.
    virtual void setRegularPresence(bool regular) = 0;

    // The icon of an app bundle or desktop entry; null when there is none.
    virtual QIcon iconForFile(const QString& path) = 0;
    // The icon a running app's windows carry; null when there is none.
    virtual QIcon iconForProcess(Pid pid) = 0;

    // Calls handler on the main thread when the user opens the running app
    // again (Finder, Dock, Spotlight). Where a second start reaches the
    // running instance another way, nothing is registered.
    virtual void setReopenHandler(std::function<void()> handler) { Q_UNUSED(handler); }

    // Whether the system tray opens the item's menu on a plain click by
    // itself (the macOS status item), so the program must not open it again.
    virtual bool trayOpensMenuOnClick() const { return false; }
};

} // namespace velkor
