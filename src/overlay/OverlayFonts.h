// SPDX-License-Identifier: MIT
#pragma once

#include <QFont>

namespace velkor {

// The overlay's typefaces. Titles and letter chips use Futura Bold; where
// Futura is not installed (every Linux system), League Spartan Bold, a free
// geometric face of the same cut, is used from the system's font folder.
namespace OverlayFonts {

// The bold display face at the given pixel size.
QFont title(int pixelSize);

// The system face at the given pixel size and weight.
QFont system(int pixelSize, QFont::Weight weight);

// The system's fixed-pitch face, semibold, for the typed query.
QFont monospaced(int pixelSize);

// The family title() resolved to, for diagnostics and tests.
QString titleFamily();

} // namespace OverlayFonts
} // namespace velkor
