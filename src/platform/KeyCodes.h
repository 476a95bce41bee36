// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

// Key codes and flag bits as the key monitor understands them: the macOS
// virtual key codes and event flag word. Other backends translate into these
// by physical key position, so the mapping follows the key, not the layout.
namespace velkor::keys {

// Modifier keys (flags-changed events carry these codes).
inline constexpr qint64 RightCommand = 54;
inline constexpr qint64 LeftCommand = 55;
inline constexpr qint64 LeftShift = 56;
inline constexpr qint64 LeftOption = 58;
inline constexpr qint64 LeftControl = 59;
inline constexpr qint64 RightShift = 60;
inline constexpr qint64 RightOption = 61;
inline constexpr qint64 RightControl = 62;

// Keys with a meaning of their own.
inline constexpr qint64 Return = 36;
inline constexpr qint64 Tab = 48;
inline constexpr qint64 Grave = 50;
inline constexpr qint64 Escape = 53;
inline constexpr qint64 W = 13;
inline constexpr qint64 Q = 12;
inline constexpr qint64 H = 4;
inline constexpr qint64 LeftBracket = 33;
inline constexpr qint64 RightBracket = 30;

// The digit keys 1-9 of the main row and of the keypad, by position: a
// layout that types "&" or "é" there (AZERTY) still picks rows and desktops.
inline constexpr qint64 DigitRow[9] = {18, 19, 20, 21, 23, 22, 26, 28, 25};
inline constexpr qint64 KeypadDigits[9] = {83, 84, 85, 86, 87, 88, 89, 91, 92};

// Device-dependent bits: set while that very key is down.
inline constexpr quint64 LeftControlBit = 0x1;
inline constexpr quint64 LeftShiftBit = 0x2;
inline constexpr quint64 RightShiftBit = 0x4;
inline constexpr quint64 LeftCommandBit = 0x8;
inline constexpr quint64 RightCommandBit = 0x10;
inline constexpr quint64 LeftOptionBit = 0x20;
inline constexpr quint64 RightOptionBit = 0x40;
inline constexpr quint64 RightControlBit = 0x2000;

// Device-independent masks: set while either key of the pair is down.
inline constexpr quint64 ShiftMask = 0x20000;
inline constexpr quint64 ControlMask = 0x40000;
inline constexpr quint64 OptionMask = 0x80000;
inline constexpr quint64 CommandMask = 0x100000;

} // namespace velkor::keys
