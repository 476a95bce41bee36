// SPDX-License-Identifier: MIT
#include "platform/x11/X11KeyTranslator.h"

#include "platform/KeyCodes.h"

#include <array>
#include <utility>
#include <xkbcommon/xkbcommon.h>

namespace velkor {

namespace {

// Kernel evdev code → macOS virtual key code of the key at the same place.
// ANSI positions; the ISO key left of Z and the Japanese keys have their own
// codes on both sides.
constexpr std::array<std::pair<quint32, qint64>, 104> EvdevToKeyCode{{
    {1, 53},    // Escape
    {2, 18},    // 1
    {3, 19},    // 2
    {4, 20},    // 3
    {5, 21},    // 4
    {6, 23},    // 5
    {7, 22},    // 6
    {8, 26},    // 7
    {9, 28},    // 8
    {10, 25},   // 9
    {11, 29},   // 0
    {12, 27},   // minus
    {13, 24},   // equal
    {14, 51},   // backspace (macOS "Delete")
    {15, 48},   // Tab
    {16, 12},   // Q
    {17, 13},   // W
    {18, 14},   // E
    {19, 15},   // R
    {20, 17},   // T
    {21, 16},   // Y
    {22, 32},   // U
    {23, 34},   // I
    {24, 31},   // O
    {25, 35},   // P
    {26, 33},   // [
    {27, 30},   // ]
    {28, 36},   // Return
    {29, 59},   // Left Control
    {30, 0},    // A
    {31, 1},    // S
    {32, 2},    // D
    {33, 3},    // F
    {34, 5},    // G
    {35, 4},    // H
    {36, 38},   // J
    {37, 40},   // K
    {38, 37},   // L
    {39, 41},   // semicolon
    {40, 39},   // apostrophe
    {41, 50},   // grave accent
    {42, 56},   // Left Shift
    {43, 42},   // backslash
    {44, 6},    // Z
    {45, 7},    // X
    {46, 8},    // C
    {47, 9},    // V
    {48, 11},   // B
    {49, 45},   // N
    {50, 46},   // M
    {51, 43},   // comma
    {52, 47},   // period
    {53, 44},   // slash
    {54, 60},   // Right Shift
    {55, 67},   // keypad *
    {56, 58},   // Left Alt
    {57, 49},   // Space
    {58, 57},   // Caps Lock
    {59, 122},  // F1
    {60, 120},  // F2
    {61, 99},   // F3
    {62, 118},  // F4
    {63, 96},   // F5
    {64, 97},   // F6
    {65, 98},   // F7
    {66, 100},  // F8
    {67, 101},  // F9
    {68, 109},  // F10
    {69, 71},   // Num Lock (macOS keypad Clear sits there)
    {71, 89},   // keypad 7
    {72, 91},   // keypad 8
    {73, 92},   // keypad 9
    {74, 78},   // keypad -
    {75, 86},   // keypad 4
    {76, 87},   // keypad 5
    {77, 88},   // keypad 6
    {78, 69},   // keypad +
    {79, 83},   // keypad 1
    {80, 84},   // keypad 2
    {81, 85},   // keypad 3
    {82, 82},   // keypad 0
    {83, 65},   // keypad .
    {86, 10},   // ISO key left of Z (macOS "Section")
    {87, 103},  // F11
    {88, 111},  // F12
    {89, 94},   // Japanese Ro (underscore)
    {96, 76},   // keypad Enter
    {97, 62},   // Right Control
    {98, 75},   // keypad /
    {100, 61},  // Right Alt
    {102, 115}, // Home
    {103, 126}, // Up
    {104, 116}, // Page Up
    {105, 123}, // Left
    {106, 124}, // Right
    {107, 119}, // End
    {108, 125}, // Down
    {109, 121}, // Page Down
    {110, 114}, // Insert (macOS "Help" sits there)
    {111, 117}, // Delete (macOS "Forward Delete")
    {117, 81},  // keypad =
    {124, 93},  // Japanese Yen
    {125, 55},  // Left Super
    {126, 54},  // Right Super
}};

} // namespace

std::optional<qint64> X11KeyTranslator::keyCodeForXKeycode(quint32 xKeycode)
{
    if (xKeycode < EvdevOffset)
        return std::nullopt;
    const quint32 evdev = xKeycode - EvdevOffset;
    for (const auto& [code, keyCode] : EvdevToKeyCode) {
        if (code == evdev)
            return keyCode;
    }
    return std::nullopt;
}

std::optional<quint32> X11KeyTranslator::xKeycodeForKeyCode(qint64 keyCode)
{
    for (const auto& [evdev, code] : EvdevToKeyCode) {
        if (code == keyCode)
            return evdev + EvdevOffset;
    }
    return std::nullopt;
}

bool X11KeyTranslator::isModifier(qint64 keyCode)
{
    using namespace keys;
    switch (keyCode) {
    case LeftShift:
    case RightShift:
    case LeftControl:
    case RightControl:
    case LeftOption:
    case RightOption:
    case LeftCommand:
    case RightCommand:
        return true;
    default:
        return false;
    }
}

QString X11KeyTranslator::characters(xkb_keymap* keymap, quint32 xKeycode, quint32 group)
{
    if (!keymap)
        return {};
    const xkb_keysym_t* syms = nullptr;
    // An out-of-range group is wrapped by the key's own rule, as the server does.
    const int count = xkb_keymap_key_get_syms_by_level(keymap, xKeycode, group, 0, &syms);
    QString text;
    for (int i = 0; i < count; ++i) {
        const char32_t ucs = xkb_keysym_to_utf32(syms[i]);
        // Control characters (Tab, Return, Escape) are keys, not text.
        if (ucs >= 0x20 && ucs != 0x7f)
            text += QString::fromUcs4(&ucs, 1);
    }
    return text;
}

} // namespace velkor
