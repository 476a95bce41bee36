// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace velkor {

// One installed application found on disk, in the walk's order.
struct InstalledApp
{
    QString path;                    // .app bundle or .desktop file
    std::optional<QString> name;     // CFBundleName / desktop entry Name, when present
    std::optional<QString> bundleId; // bundle id / desktop id, when present
};

// Walks the application folders. scan() runs on a worker thread and must not
// touch anything owned by the main thread.
class InstalledAppSource
{
public:
    virtual ~InstalledAppSource() = default;
    virtual QList<InstalledApp> scan() const = 0;
};

} // namespace velkor
