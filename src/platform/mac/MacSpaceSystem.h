// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SpaceSystem.h"

namespace velkor {

// Spaces through the late-bound SkyLight calls, the window server's window
// list, and posted keyboard events for the Control+digit shortcut.
class MacSpaceSystem final : public SpaceSystem
{
public:
    std::optional<SpaceLayout> mainDisplaySpaces() override;
    bool setCurrentSpace(const QString& displayId, quint64 spaceId) override;
    bool moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId) override;
    QList<ServerWindow> windowList(bool onScreenOnly) override;
    bool postControlKey(int keyCode) override;
};

} // namespace velkor
