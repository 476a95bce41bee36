// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ShellIntegration.h"

#include <memory>

namespace velkor {

// The AppKit touches the shared Qt widgets need: the overlay's panel and
// the blur under its pill, the activation policy, Finder icons, the reopen
// request and the status item's own menu.
class MacShellIntegration final : public ShellIntegration
{
public:
    MacShellIntegration();
    ~MacShellIntegration() override;

    void prepareOverlayWindow(QWindow* window) override;
    void orderOverlayFront(QWindow* window) override;
    bool canBlurBehind() const override { return true; }
    void setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius) override;
    void setRegularPresence(bool regular) override;
    QIcon iconForFile(const QString& path) override;
    QIcon iconForProcess(Pid pid) override;
    void setReopenHandler(std::function<void()> handler) override;
    // The status item opens its menu itself when clicked.
    bool trayOpensMenuOnClick() const override { return true; }

private:
    // The Apple-event target of the reopen event; defined in the .mm.
    struct Reopen;
    std::unique_ptr<Reopen> m_reopen;
};

} // namespace velkor
