// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <functional>
#include <optional>

class QObject;

namespace velkor {

// One installed application found on disk, in the walk's order.
struct InstalledApp
{
    QString path;                    // .app bundle or .desktop file
    std::optional<QString> name;     // CFBundleName / desktop entry Name, when present
    std::optional<QString> bundleId; // bundle id / desktop id, when present
};

// Walks the application folders.
class InstalledAppSource
{
public:
    virtual ~InstalledAppSource() = default;

    // Runs on a worker thread and must not touch anything owned by the main
    // thread. When that thread's interruption is requested
    // (QThread::isInterruptionRequested) the program is quitting: return
    // soon, with whatever was found.
    virtual QList<InstalledApp> scan() const = 0;

    // Calls onChange on context's thread, as long as context lives, whenever
    // the folders may hold other apps than a scan found. A source that
    // cannot tell never calls it.
    virtual void watch(QObject* /*context*/, std::function<void()> /*onChange*/) const {}
};

} // namespace velkor
