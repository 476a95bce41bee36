// SPDX-License-Identifier: MIT
#pragma once

#include "platform/InstalledAppSource.h"

namespace velkor {

// Walks /Applications, /System/Applications and ~/Applications for .app
// bundles, without entering packages or the bundles themselves. Touches only
// its own file manager and bundle reads, so it runs on any thread.
class MacInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override;
};

} // namespace velkor
