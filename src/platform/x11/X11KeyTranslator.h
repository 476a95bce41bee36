// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

struct xkb_keymap;

namespace velkor {

// Translates X keys into the key codes and characters the key monitor
// understands. Key codes follow the physical key: an X keycode is the
// kernel's evdev code plus 8 on every evdev-based server, and the evdev code
// names a position on the keyboard whatever the layout types there.
class X11KeyTranslator final
{
public:
    static constexpr quint32 EvdevOffset = 8;
    // Handed on for keys with no counterpart; matches no action key.
    static constexpr qint64 UnmappedKeyCode = -1;

    static std::optional<qint64> keyCodeForXKeycode(quint32 xKeycode);
    static std::optional<quint32> xKeycodeForKeyCode(qint64 keyCode);

    // Shift, Control, Option (Alt) and Command (Super), left or right.
    static bool isModifier(qint64 keyCode);

    // What the key types at the first level of the given layout group, with
    // every modifier ignored; empty for keys that type nothing (dead keys,
    // function keys, modifiers).
    static QString characters(xkb_keymap* keymap, quint32 xKeycode, quint32 group);
};

} // namespace velkor
