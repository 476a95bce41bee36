// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QColor>
#include <QDateTime>
#include <QHash>
#include <QPixmap>
#include <QSet>
#include <QString>
#include <optional>

namespace velkor {

class ShellIntegration;

// The picture at the overlay's left, ready to draw: an app's icon, or the
// tile with its initial for an app without one. Finding an icon in the theme,
// decoding it and laying out the initial cost more than the rest of a paint,
// so the pictures outlive a showing: an entry's icon until its file changes,
// a tile until its colour does. A window's icon is kept for one showing only:
// pids are reused, and apps change their windows' icons.
class OverlayIcons final
{
public:
    explicit OverlayIcons(ShellIntegration& shell);

    // The entry's icon, else the one the app's windows carry (apps known
    // only by their windows have no entry); null when neither has one.
    QPixmap icon(const std::optional<QString>& entryPath, std::optional<Pid> pid, int size,
                 qreal dpr);
    QPixmap tile(const QString& text, const QColor& accent, int size, qreal dpr);
    void showingEnded();
    void forgetAll();

private:
    struct EntryIcon
    {
        QDateTime modified;
        QPixmap pixmap;
    };

    void followScale(int size, qreal dpr);

    ShellIntegration& m_shell;
    QHash<QString, EntryIcon> m_entries;
    QHash<Pid, QPixmap> m_windows;
    QHash<QString, QPixmap> m_tiles;
    QSet<QString> m_checked; // entry files looked at in this showing
    int m_size = 0;
    qreal m_dpr = 0;
};

} // namespace velkor
