// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsEnums.h"

#include <QColor>
#include <QString>

namespace velkor {

// Colours the overlay derives from the user's appearance settings.
namespace Theme {

// The accent for the given background: as stored on dark backgrounds; on
// light ones darkened (brightness at most 0.58, a little more saturated) so
// that it still reads. A stored value that is not a colour gives the default.
QColor readableAccent(const QString& hex, bool light);

// Whether the overlay draws in its light variant. systemIsLight is the
// application's current appearance, used for AppTheme::system.
bool isLight(AppTheme theme, bool systemIsLight);

// The application's current appearance, judged from its palette.
bool systemIsLight();

} // namespace Theme
} // namespace velkor
