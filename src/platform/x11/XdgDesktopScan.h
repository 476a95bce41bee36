// SPDX-License-Identifier: MIT
#pragma once

#include "platform/InstalledAppSource.h"
#include "platform/x11/XdgDesktopEntry.h"

#include <QHash>
#include <QList>
#include <functional>

namespace velkor::x11 {

// One reading of the desktop entries in the applications folders, for both
// of its uses: the apps a menu would offer ($XDG_DATA_HOME before
// $XDG_DATA_DIRS, earlier folders shadowing later ones by desktop id;
// NoDisplay, Hidden, OnlyShowIn, NotShowIn, TryExec and a missing Exec
// program honoured as GIO does), and the window classes that name running
// apps. Each file is read once, with GLib's key-file parser. Touches no
// shared state, so it runs on a worker thread.
struct XdgDesktopScan
{
    QList<InstalledApp> apps;
    // StartupWMClass → the first usable entry that names it, entries kept
    // out of menus included.
    QHash<QString, DesktopEntry> windowClasses;

    // Returns early, with part of the answer, once cancelled says so.
    static XdgDesktopScan run(const std::function<bool()>& cancelled = {});
};

} // namespace velkor::x11
