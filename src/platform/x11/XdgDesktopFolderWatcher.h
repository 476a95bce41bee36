// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QSet>
#include <QTimer>

namespace velkor::x11 {

// Tells when desktop entries may have come, gone or been renamed in the
// applications folders. inotify, through QFileSystemWatcher on the thread
// the watcher lives on, costs no thread of its own. Sub-folders are watched
// as deep as they are read; a folder that does not exist yet is watched for
// from the nearest folder above it that does. A burst of changes (an
// installer writing many files) is told once, a moment after it began.
class XdgDesktopFolderWatcher final : public QObject
{
    Q_OBJECT
public:
    explicit XdgDesktopFolderWatcher(QObject* parent = nullptr);

signals:
    void changed();

private:
    void watchFolders();
    void onDirectoryChanged(const QString& path);

    QFileSystemWatcher m_watcher;
    QTimer m_settle;
    // Watched only for an applications folder to appear below them.
    QSet<QString> m_ancestors;
};

} // namespace velkor::x11
