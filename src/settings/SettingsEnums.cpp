// SPDX-License-Identifier: MIT
#include "settings/SettingsEnums.h"

#include <array>

namespace velkor {

namespace {

template <typename E> struct Case
{
    E value;
    const char* raw;
    const char* label;
};

// Each table lists the cases in picker order.
constexpr std::array<Case<ModifierKey>, 6> ModifierKeyCases{{
    {ModifierKey::rightCommand, "rightCommand", "Right Command (⌘)"},
    {ModifierKey::rightOption, "rightOption", "Right Option (⌥)"},
    {ModifierKey::rightControl, "rightControl", "Right Control (⌃)"},
    {ModifierKey::leftCommand, "leftCommand", "Left Command (⌘)"},
    {ModifierKey::leftOption, "leftOption", "Left Option (⌥)"},
    {ModifierKey::leftControl, "leftControl", "Left Control (⌃)"},
}};

constexpr std::array<Case<OverlayPosition>, 5> OverlayPositionCases{{
    {OverlayPosition::center, "center", "Center"},
    {OverlayPosition::bottomRight, "bottomRight", "Bottom Right"},
    {OverlayPosition::bottomLeft, "bottomLeft", "Bottom Left"},
    {OverlayPosition::topRight, "topRight", "Top Right"},
    {OverlayPosition::topLeft, "topLeft", "Top Left"},
}};

constexpr std::array<Case<AppTheme>, 3> AppThemeCases{{
    {AppTheme::system, "system", "System"},
    {AppTheme::light, "light", "Light"},
    {AppTheme::dark, "dark", "Dark"},
}};

constexpr std::array<Case<SpaceMode>, 2> SpaceModeCases{{
    {SpaceMode::followApp, "followApp", "Follow app to its Space"},
    {SpaceMode::gatherWindows, "gatherWindows", "Gather windows to current Space"},
}};

template <typename E, size_t N> const Case<E>& caseOf(const std::array<Case<E>, N>& cases, E value)
{
    for (const auto& c : cases) {
        if (c.value == value)
            return c;
    }
    return cases.front(); // unreachable for a valid enumerator
}

template <typename E, size_t N>
std::optional<E> fromRaw(const std::array<Case<E>, N>& cases, const QString& raw)
{
    for (const auto& c : cases) {
        if (raw == QLatin1String(c.raw))
            return c.value;
    }
    return std::nullopt;
}

template <typename E, size_t N> QList<E> allOf(const std::array<Case<E>, N>& cases)
{
    QList<E> all;
    all.reserve(qsizetype(N));
    for (const auto& c : cases)
        all.append(c.value);
    return all;
}

} // namespace

QString rawValue(ModifierKey key)
{
    return QString::fromLatin1(caseOf(ModifierKeyCases, key).raw);
}
QString rawValue(OverlayPosition position)
{
    return QString::fromLatin1(caseOf(OverlayPositionCases, position).raw);
}
QString rawValue(AppTheme theme)
{
    return QString::fromLatin1(caseOf(AppThemeCases, theme).raw);
}
QString rawValue(SpaceMode mode)
{
    return QString::fromLatin1(caseOf(SpaceModeCases, mode).raw);
}

QString label(ModifierKey key)
{
    return QString::fromUtf8(caseOf(ModifierKeyCases, key).label);
}
QString label(OverlayPosition position)
{
    return QString::fromUtf8(caseOf(OverlayPositionCases, position).label);
}
QString label(AppTheme theme)
{
    return QString::fromUtf8(caseOf(AppThemeCases, theme).label);
}
QString label(SpaceMode mode)
{
    return QString::fromUtf8(caseOf(SpaceModeCases, mode).label);
}

std::optional<ModifierKey> modifierKeyFromRaw(const QString& raw)
{
    return fromRaw(ModifierKeyCases, raw);
}
std::optional<OverlayPosition> overlayPositionFromRaw(const QString& raw)
{
    return fromRaw(OverlayPositionCases, raw);
}
std::optional<AppTheme> appThemeFromRaw(const QString& raw)
{
    return fromRaw(AppThemeCases, raw);
}
std::optional<SpaceMode> spaceModeFromRaw(const QString& raw)
{
    return fromRaw(SpaceModeCases, raw);
}

QList<ModifierKey> allModifierKeys()
{
    return allOf(ModifierKeyCases);
}
QList<OverlayPosition> allOverlayPositions()
{
    return allOf(OverlayPositionCases);
}
QList<AppTheme> allAppThemes()
{
    return allOf(AppThemeCases);
}
QList<SpaceMode> allSpaceModes()
{
    return allOf(SpaceModeCases);
}

bool isRightHand(ModifierKey key)
{
    switch (key) {
    case ModifierKey::rightCommand:
    case ModifierKey::rightOption:
    case ModifierKey::rightControl:
        return true;
    case ModifierKey::leftCommand:
    case ModifierKey::leftOption:
    case ModifierKey::leftControl:
        return false;
    }
    return false;
}

} // namespace velkor
