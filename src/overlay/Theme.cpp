// SPDX-License-Identifier: MIT
#include "overlay/Theme.h"

#include "settings/ColorHex.h"

#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

namespace velkor::Theme {

namespace {
constexpr double LightMaxBrightness = 0.58;
constexpr double LightSaturationBoost = 1.08;
} // namespace

QColor readableAccent(const QString& hex, bool light)
{
    std::optional<QColor> parsed = colorFromHex(hex);
    if (!parsed)
        parsed = colorFromHex(QString::fromLatin1(DefaultAccentHex));
    QColor color = parsed ? parsed->toRgb() : QColor(255, 149, 0);
    if (!light)
        return color;
    float hue = 0;
    float saturation = 0;
    float brightness = 0;
    color.getHsvF(&hue, &saturation, &brightness);
    saturation = float(std::min(1.0, saturation * LightSaturationBoost));
    brightness = float(std::min(double(brightness), LightMaxBrightness));
    return QColor::fromHsvF(hue, saturation, brightness, 1.0f).toRgb();
}

bool isLight(AppTheme theme, bool systemIsLight)
{
    switch (theme) {
    case AppTheme::light:
        return true;
    case AppTheme::dark:
        return false;
    case AppTheme::system:
        break;
    }
    return systemIsLight;
}

bool systemIsLight()
{
    // A light window background means a light appearance; Qt 6.4 has no
    // colour-scheme query of its own.
    return QGuiApplication::palette().color(QPalette::Window).lightness() >= 128;
}

} // namespace velkor::Theme
