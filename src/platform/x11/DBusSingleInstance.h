// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SingleInstance.h"

namespace velkor::x11 {

// One instance per X display, arbitrated on the D-Bus session bus: the first
// start owns a well-known name and serves ShowSettings on it; a later start
// finds the name taken, calls ShowSettings and gives up. Without a session
// bus every start runs on its own.
class DBusSingleInstance final : public SingleInstance
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.velkor.Velkor")
public:
    static constexpr auto ObjectPath = "/org/velkor/Velkor";

    // serviceName defaults to serviceNameFor() of $DISPLAY.
    explicit DBusSingleInstance(QString serviceName = QString(), QObject* parent = nullptr);
    ~DBusSingleInstance() override;

    bool claim() override;

    const QString& serviceName() const { return m_serviceName; }

    // "org.velkor.Velkor.display_1_0" for ":1.0": each X display has its own
    // Velkor, even when sessions share a bus (nested or test servers).
    static QString serviceNameFor(const QString& display);

public slots:
    Q_SCRIPTABLE void ShowSettings();

private:
    QString m_serviceName;
    bool m_registered = false;
};

} // namespace velkor::x11
