// SPDX-License-Identifier: MIT
#include "overlay/OverlayIcons.h"

#include "overlay/OverlayFonts.h"
#include "platform/ShellIntegration.h"

#include <QFileInfo>
#include <QIcon>
#include <QPainter>

namespace velkor {

namespace {

constexpr int TilePixels = 20;
constexpr double TileRadius = 10;
// More than a desk has apps; past it everything kept is dropped and looked
// up again as it is needed.
constexpr qsizetype MaxKept = 256;

template <typename Hash> void makeRoom(Hash& hash)
{
    if (hash.size() >= MaxKept)
        hash.clear();
}

QDateTime modifiedTime(const QString& path)
{
    return QFileInfo(path).lastModified();
}

} // namespace

OverlayIcons::OverlayIcons(ShellIntegration& shell) : m_shell(shell) {}

QPixmap OverlayIcons::icon(const std::optional<QString>& entryPath, std::optional<Pid> pid,
                           int size, qreal dpr)
{
    followScale(size, dpr);
    if (entryPath) {
        auto entry = m_entries.find(*entryPath);
        // Each file is looked at once a showing, not on every paint of it.
        const bool firstThisShowing = !m_checked.contains(*entryPath);
        const QDateTime modified = firstThisShowing
                                       ? modifiedTime(*entryPath)
                                       : (entry == m_entries.end() ? QDateTime() : entry->modified);
        m_checked.insert(*entryPath);
        if (entry == m_entries.end() || entry->modified != modified) {
            makeRoom(m_entries);
            entry = m_entries.insert(
                *entryPath,
                {modified, m_shell.iconForFile(*entryPath).pixmap(QSize(size, size), dpr)});
        }
        if (!entry->pixmap.isNull())
            return entry->pixmap;
    }
    if (pid) {
        auto window = m_windows.find(*pid);
        if (window == m_windows.end())
            window =
                m_windows.insert(*pid, m_shell.iconForProcess(*pid).pixmap(QSize(size, size), dpr));
        return *window;
    }
    return QPixmap();
}

QPixmap OverlayIcons::tile(const QString& text, const QColor& accent, int size, qreal dpr)
{
    followScale(size, dpr);
    const QString key = accent.name(QColor::HexArgb) + text;
    auto tile = m_tiles.constFind(key);
    if (tile != m_tiles.constEnd())
        return *tile;

    QPixmap pixmap(QSize(size, size) * dpr);
    pixmap.setDevicePixelRatio(dpr);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = accent;
    fill.setAlphaF(0.18f);
    const QRectF frame(0, 0, size, size);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(frame, TileRadius, TileRadius);
    painter.setPen(accent);
    painter.setFont(OverlayFonts::system(TilePixels, QFont::Medium));
    painter.drawText(frame, Qt::AlignCenter, text);
    painter.end();
    makeRoom(m_tiles);
    return *m_tiles.insert(key, pixmap);
}

void OverlayIcons::showingEnded()
{
    m_windows.clear();
    m_checked.clear();
}

void OverlayIcons::forgetAll()
{
    m_entries.clear();
    m_windows.clear();
    m_tiles.clear();
    m_checked.clear();
}

void OverlayIcons::followScale(int size, qreal dpr)
{
    // A screen of another scale, or another size: nothing kept fits.
    if (size == m_size && dpr == m_dpr)
        return;
    forgetAll();
    m_size = size;
    m_dpr = dpr;
}

} // namespace velkor
