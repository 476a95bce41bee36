// SPDX-License-Identifier: MIT
#pragma once

#include "platform/InstalledAppSource.h"

namespace velkor::x11 {

// Installed apps are the XDG desktop entries GIO knows ($XDG_DATA_HOME and
// $XDG_DATA_DIRS applications/), with NoDisplay, Hidden, OnlyShowIn and
// NotShowIn honoured. GIO guards its desktop-file cache with its own lock,
// so scan() may run on a worker thread.
class GioInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override;
};

} // namespace velkor::x11
