// SPDX-License-Identifier: MIT
#include "windows/SpacesManager.h"

#include "platform/Workspace.h"

namespace velkor {

SpacesManager::SpacesManager(Workspace& workspace, SpaceSystem& spaces)
    : m_workspace(workspace), m_spaces(spaces)
{}

std::optional<int> SpacesManager::digitKeyCode(int n)
{
    // The digit row's key codes are not in numeric order.
    static constexpr int codes[] = {18, 19, 20, 21, 23, 22, 26, 28, 25};
    if (n < 1 || n > 9)
        return std::nullopt;
    return codes[n - 1];
}

std::optional<SpaceLayout> SpacesManager::mainDisplaySpaces()
{
    return m_spaces.mainDisplaySpaces();
}

bool SpacesManager::switchToSpace(int n)
{
    if (n < 1)
        return false;
    if (const auto layout = m_spaces.mainDisplaySpaces(); layout && n <= layout->spaceIds.size()) {
        if (m_spaces.setCurrentSpace(layout->displayId, layout->spaceIds.at(n - 1)))
            return true;
    }
    // Without a usable desktop API (or past the last Space) the system's own
    // Control+digit shortcut is the only way left.
    return synthesizeSwitchShortcut(n);
}

bool SpacesManager::moveActiveWindow(int n)
{
    const auto layout = m_spaces.mainDisplaySpaces();
    if (!layout || n < 1 || n > layout->spaceIds.size())
        return false;
    const auto window = frontmostWindowId();
    if (!window)
        return false;
    if (!m_spaces.moveWindows({*window}, layout->spaceIds.at(n - 1)))
        return false;
    switchToSpace(n);
    return true;
}

void SpacesManager::gatherWindows(Pid pid)
{
    const auto layout = m_spaces.mainDisplaySpaces();
    if (!layout || layout->currentIndex < 0 || layout->currentIndex >= layout->spaceIds.size())
        return;
    const quint64 target = layout->spaceIds.at(layout->currentIndex);
    // Every window the app owns, on any desktop and of any layer.
    QList<quint32> numbers;
    for (const ServerWindow& w : m_spaces.windowList(false)) {
        if (w.ownerPid == pid)
            numbers.append(w.number);
    }
    if (!numbers.isEmpty())
        m_spaces.moveWindows(numbers, target);
}

std::optional<quint32> SpacesManager::frontmostWindowId()
{
    const auto pid = m_workspace.frontmostPid();
    if (!pid)
        return std::nullopt;
    for (const ServerWindow& w : m_spaces.windowList(true)) {
        if (w.ownerPid == *pid && w.layer == 0)
            return w.number;
    }
    return std::nullopt;
}

bool SpacesManager::synthesizeSwitchShortcut(int n)
{
    const auto code = digitKeyCode(n);
    if (!code)
        return false;
    return m_spaces.postControlKey(*code);
}

} // namespace velkor
