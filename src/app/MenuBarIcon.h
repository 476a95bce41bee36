// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>

namespace velkor {

// Velkor's mark for the menu bar or tray, drawn in code: an open ring and a
// three-stroke bolt through it, on a 24-unit grid with 1.9-unit round strokes,
// in one colour.
namespace MenuBarIcon {

inline constexpr double GridUnits = 24;
inline constexpr double StrokeUnits = 1.9;
inline constexpr int MenuBarSize = 18;

// The mark at size × size pixels, transparent around the strokes.
QImage render(int size, const QColor& color);

// The mark at the sizes menu bars and trays ask for, marked as a mask so
// that macOS tints it for light and dark menu bars.
QIcon icon(const QColor& color);

} // namespace MenuBarIcon
} // namespace velkor
