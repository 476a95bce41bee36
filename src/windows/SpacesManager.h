// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SpaceSystem.h"

#include <optional>

namespace velkor {

class Workspace;

// Jumps between virtual desktops by number, sends the frontmost window to
// one, and gathers an app's windows onto the current one. Reads the layout
// afresh on every call.
class SpacesManager
{
public:
    SpacesManager(Workspace& workspace, SpaceSystem& spaces);

    // The (macOS) key code of the digit key for Space n (1-9), else absent.
    static std::optional<int> digitKeyCode(int n);

    std::optional<SpaceLayout> mainDisplaySpaces();

    // Makes Space n current, falling back to the Control+digit shortcut.
    bool switchToSpace(int n);

    // Moves the frontmost window to Space n and follows it.
    bool moveActiveWindow(int n);

    // Moves every window of pid to the current Space.
    void gatherWindows(Pid pid);

    // The frontmost app's first normal on-screen window.
    std::optional<quint32> frontmostWindowId();

    // Posts Control + digit n; false for n outside 1-9.
    bool synthesizeSwitchShortcut(int n);

private:
    Workspace& m_workspace;
    SpaceSystem& m_spaces;
};

} // namespace velkor
