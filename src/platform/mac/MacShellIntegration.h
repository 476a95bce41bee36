// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ShellIntegration.h"

namespace velkor {

// The AppKit touches the shared Qt widgets need: the overlay's NSWindow,
// the blur view under the pill, the activation policy and Finder icons.
class MacShellIntegration final : public ShellIntegration
{
public:
    void prepareOverlayWindow(QWindow* window) override;
    bool canBlurBehind() const override { return true; }
    void setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius) override;
    void setRegularPresence(bool regular) override;
    QIcon iconForFile(const QString& path) override;
};

} // namespace velkor
