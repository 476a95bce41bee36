// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QString>
#include <optional>

namespace velkor {

class OverlayModel;

// The letter or query chip beside the texts.
struct OverlayChip
{
    QString text;
    bool monospaced = false; // the typed query; else an upper-cased badge

    friend bool operator==(const OverlayChip&, const OverlayChip&) = default;
};

// What the overlay's pill and dots show for the model's current state.
struct OverlayContent
{
    QString primary;
    std::optional<QString> secondary;
    std::optional<OverlayChip> chip;
    std::optional<QString> iconPath; // its icon first
    std::optional<Pid> pid;          // then its windows' icon, else a tile
    QString appName;                 // for the tile; empty with nothing selected
    int dotCount = 0;                // no dots for fewer than two rows
    int selectedDot = -1;

    static OverlayContent of(const OverlayModel& model);
    friend bool operator==(const OverlayContent&, const OverlayContent&) = default;
};

} // namespace velkor
