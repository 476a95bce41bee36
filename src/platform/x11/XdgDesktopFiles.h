// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <optional>

namespace velkor::x11 {

// A desktop file and the desktop id its place gives it.
struct XdgDesktopFile
{
    QString id; // without ".desktop"; vendor/tool.desktop is "vendor-tool"
    QByteArray path;
};

// Where this session's desktop entries live: the "applications" folder of
// $XDG_DATA_HOME, then of each $XDG_DATA_DIRS entry. An id found in an
// earlier folder hides the same id in every later one, whether or not its
// own file turns out usable (that is how a user masks a system entry).
//
// The folders are anybody's to fill: only regular files are ever opened,
// never a FIFO, socket or device (so nothing here can block on one), files
// are read up to a size, sub-folders are followed to a depth, and a folder
// reached twice (a symbolic link loop, a link to "/") is walked once.
class XdgDesktopFiles final
{
public:
    // Larger files are not desktop entries.
    static constexpr qint64 MaxFileSize = 1 << 20;
    // Sub-folders below an applications folder (vendor/tool.desktop is one).
    static constexpr int MaxDepth = 3;

    // The applications folders, earlier ones first.
    static QList<QByteArray> folders();

    // Every desktop file that is not hidden by an earlier one, earlier
    // folders first. Stops early, with what it found, once cancelled says so.
    static QList<XdgDesktopFile> all(const std::function<bool()>& cancelled = {});

    // The file that answers for a desktop id, found by probing the few
    // places it can be rather than by listing every folder.
    static std::optional<QByteArray> find(const QString& id);

    // The contents of a desktop file: absent unless it is a regular file of
    // at most MaxFileSize bytes.
    static std::optional<QByteArray> read(const QByteArray& path);

    // The desktop id (".desktop" dropped) for a desktop file name.
    static QString idFromFileName(const QString& fileName);
};

} // namespace velkor::x11
