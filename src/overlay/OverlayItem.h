// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QString>
#include <optional>

namespace velkor {

inline const QString ModeSwitch = QStringLiteral("Switch");
inline const QString ModeSearch = QStringLiteral("Search");
inline const QString ModeWindows = QStringLiteral("Windows");

// One candidate row of the overlay.
struct OverlayItem
{
    QString id;
    QString title;
    std::optional<QString> subtitle;
    std::optional<QString> badge; // shown upper-cased in the letter chip
    std::optional<qint64> number; // 1-based ordinal
    std::optional<QString> bundleId;
    std::optional<Pid> pid;
    std::optional<QString> iconPath; // bundle whose icon is shown

    friend bool operator==(const OverlayItem&, const OverlayItem&) = default;
};

} // namespace velkor
