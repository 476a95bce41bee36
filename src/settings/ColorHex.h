// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QStringView>
#include <optional>

namespace velkor {

inline constexpr auto DefaultAccentHex = "#FEBC2E";

// "#" optional, surrounding white space ignored, exactly six hex digits;
// an opaque sRGB colour, or absent for anything else.
std::optional<QColor> colorFromHex(QStringView text);

// "#RRGGBB" in upper case.
QString hexFromColor(const QColor& color);

} // namespace velkor
