// SPDX-License-Identifier: MIT
#pragma once

#include "platform/InstalledAppSource.h"

namespace velkor::x11 {

// Installed apps are the XDG desktop entries GIO would list ($XDG_DATA_HOME
// before $XDG_DATA_DIRS applications/, earlier folders shadowing later ones
// by desktop id), with NoDisplay, Hidden, OnlyShowIn, NotShowIn, TryExec and
// a missing Exec program honoured as GIO does. Files are read with GLib's
// key-file parser, keeping only the keys a menu needs; scan() touches no
// shared state and may run on a worker thread.
class GioInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override;
};

} // namespace velkor::x11
