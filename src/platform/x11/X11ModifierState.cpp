// SPDX-License-Identifier: MIT
#include "platform/x11/X11ModifierState.h"

#include "platform/KeyCodes.h"

namespace velkor {

namespace {

quint64 deviceBit(qint64 keyCode)
{
    using namespace keys;
    switch (keyCode) {
    case LeftShift:
        return LeftShiftBit;
    case RightShift:
        return RightShiftBit;
    case LeftControl:
        return LeftControlBit;
    case RightControl:
        return RightControlBit;
    case LeftOption:
        return LeftOptionBit;
    case RightOption:
        return RightOptionBit;
    case LeftCommand:
        return LeftCommandBit;
    case RightCommand:
        return RightCommandBit;
    default:
        return 0;
    }
}

} // namespace

bool X11ModifierState::press(qint64 keyCode)
{
    const quint64 before = m_deviceBits;
    m_deviceBits |= deviceBit(keyCode);
    return m_deviceBits != before;
}

bool X11ModifierState::release(qint64 keyCode)
{
    const quint64 before = m_deviceBits;
    m_deviceBits &= ~deviceBit(keyCode);
    return m_deviceBits != before;
}

bool X11ModifierState::isDown(qint64 keyCode) const
{
    const quint64 bit = deviceBit(keyCode);
    return bit && (m_deviceBits & bit);
}

quint64 X11ModifierState::flags() const
{
    using namespace keys;
    quint64 flags = m_deviceBits;
    if (m_deviceBits & (LeftShiftBit | RightShiftBit))
        flags |= ShiftMask;
    if (m_deviceBits & (LeftControlBit | RightControlBit))
        flags |= ControlMask;
    if (m_deviceBits & (LeftOptionBit | RightOptionBit))
        flags |= OptionMask;
    if (m_deviceBits & (LeftCommandBit | RightCommandBit))
        flags |= CommandMask;
    return flags;
}

} // namespace velkor
