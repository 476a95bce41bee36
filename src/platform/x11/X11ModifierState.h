// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace velkor {

// Which modifier keys are down, kept apart by side, and the flag word they
// make: one device bit per key plus the mask of its pair.
class X11ModifierState final
{
public:
    // Both take a translated key code and answer whether the flag word
    // changed; keys that are not modifiers change nothing.
    bool press(qint64 keyCode);
    bool release(qint64 keyCode);

    quint64 flags() const;
    bool isDown(qint64 keyCode) const;

private:
    quint64 m_deviceBits = 0;
};

} // namespace velkor
