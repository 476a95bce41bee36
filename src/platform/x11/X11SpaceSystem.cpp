// SPDX-License-Identifier: MIT
#include "platform/x11/X11SpaceSystem.h"

#include "platform/x11/X11WindowCache.h"

#include <xcb/xtest.h>

namespace velkor::x11 {

namespace {

// evdev codes are X keycodes minus 8.
constexpr int EvdevOffset = 8;
constexpr int EvdevLeftCtrl = 29;

} // namespace

X11SpaceSystem::X11SpaceSystem(std::shared_ptr<X11WindowCache> cache)
    : m_owner(cache), m_cache(*cache), m_hasXTest(cache->connection().hasExtension("XTEST"))
{}

int X11SpaceSystem::xKeycodeForDigit(int macKeyCode)
{
    // The digit row 1…9, 0 is evdev KEY_1 (2) … KEY_0 (11).
    switch (macKeyCode) {
    case 18:
        return EvdevOffset + 2;
    case 19:
        return EvdevOffset + 3;
    case 20:
        return EvdevOffset + 4;
    case 21:
        return EvdevOffset + 5;
    case 23:
        return EvdevOffset + 6;
    case 22:
        return EvdevOffset + 7;
    case 26:
        return EvdevOffset + 8;
    case 28:
        return EvdevOffset + 9;
    case 25:
        return EvdevOffset + 10;
    case 29:
        return EvdevOffset + 11;
    default:
        return 0;
    }
}

std::optional<SpaceLayout> X11SpaceSystem::mainDisplaySpaces()
{
    const auto count = m_cache.desktopCount();
    if (!count)
        return std::nullopt;
    SpaceLayout layout;
    for (quint32 i = 0; i < *count; ++i)
        layout.spaceIds.append(i);
    layout.currentIndex = m_cache.currentDesktop() < *count ? int(m_cache.currentDesktop()) : 0;
    return layout;
}

bool X11SpaceSystem::setCurrentSpace(const QString&, quint64 spaceId)
{
    const auto count = m_cache.desktopCount();
    if (!count || spaceId >= *count)
        return false;
    X11Connection& x = m_cache.connection();
    x.sendRootMessage(x.root(), Atom::NetCurrentDesktop, {quint32(spaceId), x.time(), 0, 0, 0});
    x.flush();
    return true;
}

bool X11SpaceSystem::moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId)
{
    const auto count = m_cache.desktopCount();
    if (!count || spaceId >= *count)
        return false;
    X11Connection& x = m_cache.connection();
    for (quint32 window : windowNumbers) {
        m_cache.noteDesktopRequested(window, quint32(spaceId));
        x.sendRootMessage(window, Atom::NetWmDesktop, {quint32(spaceId), 2, 0, 0, 0});
    }
    x.flush();
    return true;
}

QList<ServerWindow> X11SpaceSystem::windowList(bool onScreenOnly)
{
    QList<ServerWindow> out;
    const quint32 current = m_cache.currentDesktop();
    for (const X11Client* c : m_cache.frontToBack()) {
        if (onScreenOnly && (c->hidden || !c->onDesktop(current)))
            continue;
        ServerWindow w;
        w.number = c->id;
        w.ownerPid = c->pid;
        w.layer = c->kind == X11Client::Kind::Normal ? 0 : 1;
        out.append(w);
    }
    return out;
}

bool X11SpaceSystem::postControlKey(int keyCode)
{
    // Without any window manager nobody takes the shortcut: it would land in
    // the focused window as typing.
    const int key = xKeycodeForDigit(keyCode);
    if (!key || !m_hasXTest || !m_cache.hasWindowManager())
        return false;
    xcb_connection_t* c = m_cache.connection().get();
    const xcb_window_t root = m_cache.connection().root();
    const uint8_t ctrl = EvdevOffset + EvdevLeftCtrl;
    xcb_test_fake_input(c, XCB_KEY_PRESS, ctrl, XCB_CURRENT_TIME, root, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_PRESS, uint8_t(key), XCB_CURRENT_TIME, root, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_RELEASE, uint8_t(key), XCB_CURRENT_TIME, root, 0, 0, 0);
    xcb_test_fake_input(c, XCB_KEY_RELEASE, ctrl, XCB_CURRENT_TIME, root, 0, 0, 0);
    m_cache.connection().flush();
    return true;
}

} // namespace velkor::x11
