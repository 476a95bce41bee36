// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ShellIntegration.h"

#include <memory>

namespace velkor::x11 {

class X11Connection;
class X11FocusedKeyboardState;
class X11SelectionWatch;
class X11WindowCache;

// The overlay as an override-redirect window (never managed, so never
// focused, on every desktop and in no task list), the compositing manager
// and the tray host followed as they start and stop, blur through the KDE
// blur protocol where the compositor offers it, icons from desktop entries
// and from the icons windows carry; Qt's connection told of the keyboard's
// state only while one of Velkor's windows has the focus.
class X11ShellIntegration final : public ShellIntegration
{
public:
    // Without windows, no app has a window icon.
    X11ShellIntegration(std::shared_ptr<X11Connection> connection,
                        std::shared_ptr<const X11WindowCache> windows);
    ~X11ShellIntegration() override;

    void prepareOverlayWindow(QWindow* window) override;
    bool isCompositing() const override;
    void watchCompositing(QObject* receiver, std::function<void()> changed) override;
    bool hasSystemTray() const override;
    void watchSystemTray(QObject* receiver, std::function<void()> changed) override;
    bool canBlurBehind() const override;
    void setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius) override;
    void setRegularPresence(bool) override {}
    QIcon iconForFile(const QString& path) override;
    QIcon iconForProcess(Pid pid) override;

private:
    void readBlurSupport();

    std::shared_ptr<X11Connection> m_connection;
    std::shared_ptr<const X11WindowCache> m_windows;
    std::unique_ptr<X11SelectionWatch> m_compositor;
    std::unique_ptr<X11SelectionWatch> m_trayHost;
    std::unique_ptr<X11FocusedKeyboardState> m_keyboardState;
    bool m_blurSupported = false;
};

} // namespace velkor::x11
