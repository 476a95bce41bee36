// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <xcb/xcb.h>

struct xkb_context;
struct xkb_keymap;

namespace velkor {

// The server's current keyboard map as xkbcommon sees it, and the modifier
// masks that grabs are made with. Reloaded whenever the server reports a new
// map (setxkbmap, a new keyboard).
class X11Keymap final
{
public:
    explicit X11Keymap(xcb_connection_t* connection);
    ~X11Keymap();
    X11Keymap(const X11Keymap&) = delete;
    X11Keymap& operator=(const X11Keymap&) = delete;

    // False when the server's map cannot be read; the old one is kept.
    bool reload();

    xkb_keymap* keymap() const { return m_keymap; }
    bool hasKey(xcb_keycode_t keycode) const;

    // The modifier bits of Num Lock and of the Super keys in core key
    // events; grabs must list every Num Lock variant.
    uint16_t numLockMask() const { return m_numLockMask; }
    uint16_t superMask() const { return m_superMask; }

    // For logs: the key's name in the current layout, e.g. "Super_R (keycode 134)".
    QString describe(xcb_keycode_t keycode) const;

private:
    void readModifierMasks();
    bool keyProduces(xcb_keycode_t keycode, uint32_t keysym) const;

    xcb_connection_t* m_connection;
    xkb_context* m_context = nullptr;
    xkb_keymap* m_keymap = nullptr;
    uint16_t m_numLockMask = 0;
    uint16_t m_superMask = XCB_MOD_MASK_4;
};

} // namespace velkor
