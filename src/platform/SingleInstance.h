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
    using QObject::QObject;
    ~SingleInstance() override = default;

    // True when this process is now the one instance. False when another
    // already runs; it has been asked to show its settings window.
    virtual bool claim() = 0;

signals:
    // A later start asked this instance to show its settings window.
    void showSettingsRequested();
};

} // namespace velkor
