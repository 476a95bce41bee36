// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopFolderWatcher.h"

#include "platform/x11/XdgDesktopFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace velkor::x11 {

namespace {

// More folders than any set of applications folders holds; a link to "/"
// inside one must not have every folder of the disk watched.
constexpr qsizetype MaxWatched = 256;

// A moment for a burst of writes to end, and the least time between two
// readings of the folders.
constexpr int SettleMs = 1000;

// folder and its sub-folders as deep as they are read. Only sub-folders that
// really lie inside it: one reached through a link to "/" would have folders
// that change all the time watched, and the entries re-read each time.
void addTree(const QString& folder, const QString& root, int depth, QStringList& out)
{
    if (out.size() >= MaxWatched)
        return;
    out.append(folder);
    if (depth >= XdgDesktopFiles::MaxDepth)
        return;
    QDirIterator it(folder, QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    while (it.hasNext()) {
        const QString sub = it.next();
        if (QFileInfo(sub).canonicalFilePath().startsWith(root + QLatin1Char('/')))
            addTree(sub, root, depth + 1, out);
    }
}

} // namespace

XdgDesktopFolderWatcher::XdgDesktopFolderWatcher(QObject* parent) : QObject(parent)
{
    m_settle.setSingleShot(true);
    m_settle.setInterval(SettleMs);
    connect(&m_settle, &QTimer::timeout, this, [this] {
        watchFolders(); // sub-folders may have come or gone
        emit changed();
    });
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this,
            &XdgDesktopFolderWatcher::onDirectoryChanged);
    watchFolders();
}

void XdgDesktopFolderWatcher::watchFolders()
{
    QStringList folders;
    QSet<QString> ancestors;
    for (const QByteArray& path : XdgDesktopFiles::folders()) {
        const QString folder = QString::fromLocal8Bit(path);
        if (QFileInfo(folder).isDir()) {
            addTree(folder, QFileInfo(folder).canonicalFilePath(), 0, folders);
            continue;
        }
        QString above = QFileInfo(folder).absolutePath();
        while (!QFileInfo(above).isDir() && above != QDir::rootPath())
            above = QFileInfo(above).absolutePath();
        ancestors.insert(above);
    }
    for (const QString& ancestor : std::as_const(ancestors))
        if (!folders.contains(ancestor))
            folders.append(ancestor);
    const QStringList before = m_watcher.directories();
    if (!before.isEmpty())
        m_watcher.removePaths(before);
    m_watcher.addPaths(folders);
    m_ancestors = ancestors;
}

void XdgDesktopFolderWatcher::onDirectoryChanged(const QString& path)
{
    if (m_ancestors.contains(path)) {
        // Something else changed there, most likely; only an applications
        // folder appearing matters.
        const QSet<QString> waitingFor = m_ancestors;
        watchFolders();
        if (m_ancestors == waitingFor)
            return;
    }
    if (!m_settle.isActive())
        m_settle.start();
}

} // namespace velkor::x11
