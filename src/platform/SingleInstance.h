// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

namespace velkor {

// Keeps Velkor to one running copy per session: a second start hands over to
// the first (which shows its settings window) and then exits.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    enum class Claim
    {
        claimed,     // this process is now the one instance
        anotherRuns, // another copy runs; it has been asked to show its settings window
        unchecked    // there was no telling (no session bus, or the bus refused): run alone
    };

    using QObject::QObject;
    ~SingleInstance() override = default;

    // Tries to become the one instance. What went wrong when it could not
    // tell has been written to the log.
    virtual Claim claim() = 0;

signals:
    // A later start asked this instance to show its settings window.
    void showSettingsRequested();
};

} // namespace velkor
