// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SpaceSystem.h"

#include <memory>

namespace velkor::x11 {

class X11WindowCache;

// EWMH desktops as Spaces: desktop n is Space id n, in the window manager's
// numbering.
class X11SpaceSystem final : public SpaceSystem
{
public:
    explicit X11SpaceSystem(std::shared_ptr<X11WindowCache> cache);

    std::optional<SpaceLayout> mainDisplaySpaces() override;
    bool setCurrentSpace(const QString& displayId, quint64 spaceId) override;
    bool moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId) override;
    QList<ServerWindow> windowList(bool onScreenOnly) override;
    bool postControlKey(int keyCode) override;

    // The X keycode of the key at the position of a (macOS) digit key code,
    // for the evdev keymaps every X server uses today; 0 for other keys.
    static int xKeycodeForDigit(int macKeyCode);

private:
    std::shared_ptr<X11WindowCache> m_owner;
    X11WindowCache& m_cache;
    bool m_hasXTest = false;
};

} // namespace velkor::x11
