// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ShellIntegration.h"

#include <memory>

namespace velkor::x11 {

class X11Connection;

// The overlay as an override-redirect window (never managed, so never
// focused, on every desktop and in no task list), blur through the KDE
// blur protocol where a compositor offers it, icons from desktop entries.
class X11ShellIntegration final : public ShellIntegration
{
public:
    explicit X11ShellIntegration(std::shared_ptr<X11Connection> connection);

    void prepareOverlayWindow(QWindow* window) override;
    bool canBlurBehind() const override;
    void setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius) override;
    void setRegularPresence(bool) override {}
    QIcon iconForFile(const QString& path) override;

private:
    std::shared_ptr<X11Connection> m_connection;
};

} // namespace velkor::x11
