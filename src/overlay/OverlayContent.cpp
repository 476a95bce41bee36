// SPDX-License-Identifier: MIT
#include "overlay/OverlayContent.h"

#include "overlay/OverlayModel.h"

namespace velkor {

OverlayContent OverlayContent::of(const OverlayModel& model)
{
    OverlayContent content;
    const std::optional<OverlayItem> selected = model.selected();
    const bool search = model.mode() == ModeSearch;
    const bool windows = model.mode() == ModeWindows;

    if (!selected) {
        content.primary = search ? QStringLiteral("No match") : QStringLiteral("Press a letter");
    } else if (windows && selected->title.isEmpty()) {
        // Some windows have no title; their app's name stands in.
        content.primary = selected->subtitle.value_or(QStringLiteral("Window"));
    } else {
        content.primary = selected->title;
    }
    if (selected && (search || windows))
        content.secondary = selected->subtitle;

    if (search && !model.query().isEmpty())
        content.chip = OverlayChip{model.query(), true};
    else if (selected && selected->badge)
        content.chip = OverlayChip{selected->badge->toUpper(), false};

    if (selected) {
        content.iconPath = selected->iconPath;
        content.pid = selected->pid;
        // A window row's subtitle is its app's name.
        content.appName = windows ? selected->subtitle.value_or(selected->title) : selected->title;
    }

    const int count = int(model.items().size());
    if (count >= 2) {
        content.dotCount = count;
        content.selectedDot = model.selection();
    }
    return content;
}

} // namespace velkor
