// SPDX-License-Identifier: MIT
#pragma once

#include "platform/InstalledAppSource.h"

#include <memory>

namespace velkor::x11 {

class XdgDesktopEntryIndex;
class XdgDesktopFolderWatcher;

// Installed apps are the XDG desktop entries GIO would list (see
// XdgDesktopScan). The same reading of the folders gives the window classes
// that name running apps, handed to index on its thread; a change in the
// folders is told through watch().
class GioInstalledAppSource final : public InstalledAppSource
{
public:
    explicit GioInstalledAppSource(std::shared_ptr<XdgDesktopEntryIndex> index = nullptr);
    ~GioInstalledAppSource() override;

    QList<InstalledApp> scan() const override;
    void watch(QObject* context, std::function<void()> onChange) const override;

private:
    std::shared_ptr<XdgDesktopEntryIndex> m_index;
    // Made at the first watch(), on the thread that asks.
    mutable std::unique_ptr<XdgDesktopFolderWatcher> m_watcher;
};

} // namespace velkor::x11
