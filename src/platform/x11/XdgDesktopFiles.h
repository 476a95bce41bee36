// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
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
class XdgDesktopFiles final
{
public:
    // Every desktop file that is not hidden by an earlier one, earlier
    // folders first.
    static QList<XdgDesktopFile> all();

    // The file that answers for a desktop id, found by probing the few
    // places it can be rather than by listing every folder.
    static std::optional<QByteArray> find(const QString& id);

    // The desktop id (".desktop" dropped) for a desktop file name.
    static QString idFromFileName(const QString& fileName);

private:
    static QList<QByteArray> folders();
};

} // namespace velkor::x11
