// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace velkor {

// The case order of each enumeration is the order of its picker in the
// settings window; raw values are what is stored.

enum class ModifierKey
{
    rightCommand,
    rightOption,
    rightControl,
    leftCommand,
    leftOption,
    leftControl
};
enum class OverlayPosition
{
    center,
    bottomRight,
    bottomLeft,
    topRight,
    topLeft
};
enum class AppTheme
{
    system,
    light,
    dark
};
enum class SpaceMode
{
    followApp,
    gatherWindows
};

QString rawValue(ModifierKey key);
QString rawValue(OverlayPosition position);
QString rawValue(AppTheme theme);
QString rawValue(SpaceMode mode);

// The picker label ("Right Command (⌘)", "Bottom Right", "System", ...).
QString label(ModifierKey key);
QString label(OverlayPosition position);
QString label(AppTheme theme);
QString label(SpaceMode mode);

// Exact, case-sensitive match of a stored raw value; absent when it names no case.
std::optional<ModifierKey> modifierKeyFromRaw(const QString& raw);
std::optional<OverlayPosition> overlayPositionFromRaw(const QString& raw);
std::optional<AppTheme> appThemeFromRaw(const QString& raw);
std::optional<SpaceMode> spaceModeFromRaw(const QString& raw);

QList<ModifierKey> allModifierKeys();
QList<OverlayPosition> allOverlayPositions();
QList<AppTheme> allAppThemes();
QList<SpaceMode> allSpaceModes();

// Cases 0-2 of ModifierKey are right-hand keys, 3-5 left-hand.
bool isRightHand(ModifierKey key);

} // namespace velkor
