// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SingleInstance.h"

#include <QDBusConnection>

namespace velkor::x11 {

// One instance per X display, arbitrated on the D-Bus session bus: the first
// start owns a well-known name and serves ShowSettings on it; a later start
// finds the name taken, calls ShowSettings and gives up. Without a session
// bus, or when the bus will not give out the name, every start runs on its
// own and says so in the log.
class DBusSingleInstance final : public SingleInstance
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.velkor.Velkor")
public:
    static constexpr auto ObjectPath = "/org/velkor/Velkor";

    // The instance of the X display named display ($DISPLAY by default) on
    // bus (the session bus by default).
    explicit DBusSingleInstance(QDBusConnection bus = QDBusConnection::sessionBus(),
                                const QString& display = qEnvironmentVariable("DISPLAY"),
                                QObject* parent = nullptr);
    ~DBusSingleInstance() override;

    Claim claim() override;

    const QString& serviceName() const { return m_serviceName; }

    // "org.velkor.Velkor.display_1" for ":1", ":1.0" and "unix:1": each X
    // display has its own Velkor, even when sessions share a bus (nested or
    // test servers), however its name is spelled.
    static QString serviceNameFor(const QString& display);

public slots:
    Q_SCRIPTABLE void ShowSettings();

private:
    // Asks the owner of the name to show its settings; false when nobody owns
    // it any more.
    bool handOver();

    QDBusConnection m_bus;
    QString m_serviceName;
    bool m_registered = false;
};

} // namespace velkor::x11
