// SPDX-License-Identifier: MIT
#include "app/LaunchAtLogin.h"
#include "app/PermissionsManager.h"
#include "fakes/FakePlatform.h"
#include "settings/PlatformTraits.h"

#include <QSignalSpy>
#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {
QStringList logged;
void collect(QtMsgType, const QMessageLogContext&, const QString& text)
{
    logged << text;
}
} // namespace

class ShellLogicTest : public QObject
{
    Q_OBJECT

private slots:
    void pollingReportsTheGrantExactlyOnce()
    {
        FakePlatform p;
        int granted = 0;
        int dropped = 0;
        {
            PermissionsManager perms(*p.trust, *p.clock);
            QSignalSpy spy(&perms, &PermissionsManager::trustedChanged);
            perms.requestAccess([&] { ++granted; });
            perms.startPolling([&] { ++dropped; }); // a second click starts nothing
            QCOMPARE(p.trust->requestCount, 1);
            QCOMPARE(p.trust->openSettingsCount, 1);
            p.clock->advance(3.0);
            QCOMPARE(granted, 0);
            p.trust->trusted = true;
            p.clock->advance(1.0);
            p.trust->trusted = false; // withdrawn later: nobody looks any more
            p.clock->advance(5.0);
            QCOMPARE(granted, 1);
            QCOMPARE(dropped, 0);
            QVERIFY(perms.isTrusted());
            QCOMPARE(spy.count(), 1);

            perms.startPolling([&] { ++dropped; });
        }
        QCOMPARE(p.clock->pendingCount(), 0); // the poll dies with its manager
    }

    void keyAccessCombinesTrustAndTheMonitorsReport()
    {
        FakePlatform p;
        PermissionsManager perms(*p.trust, *p.clock);
        QSignalSpy spy(&perms, &PermissionsManager::keyAccessChanged);
        // Not trusted outranks whatever the monitor says.
        perms.setMonitorAccess(KeyAccess::activationKeyTaken);
        QCOMPARE(perms.keyAccess(), KeyAccess::notTrusted);
        QCOMPARE(spy.count(), 0);
        p.trust->trusted = true;
        perms.refresh();
        perms.setMonitorAccess(KeyAccess::activationKeyTaken);
        perms.setMonitorAccess(KeyAccess::active);
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy.at(0).at(0).value<KeyAccess>(), KeyAccess::activationKeyTaken);
        QCOMPARE(perms.keyAccess(), KeyAccess::active);

        // macOS keeps its own log lines (LinuxWordingTest covers the others).
        QCOMPARE(keyAccessLogLine(KeyAccess::active, ModifierKey::rightCommand, KeyNaming::apple),
                 QStringLiteral("[Velkor] event tap installed"));
        QCOMPARE(
            keyAccessLogLine(KeyAccess::notTrusted, ModifierKey::rightCommand, KeyNaming::apple),
            QStringLiteral("[Velkor] failed to create event tap (Accessibility not granted?)"));
    }

    void launchAtLoginChangesOnlyWhatDiffersAndLogsFailures()
    {
        using Status = LoginItem::Status;
        FakeLoginItem item;
        for (Status s : {Status::NotRegistered, Status::RequiresApproval, Status::NotFound}) {
            item.state = s;
            LaunchAtLogin::set(item, false);
        }
        QCOMPARE(item.unregisterCalls, 0);
        LaunchAtLogin::set(item, true);
        LaunchAtLogin::set(item, true);
        QCOMPARE(item.registerCalls, 1);

        item.failWith = QStringLiteral("Operation not permitted");
        const QtMessageHandler previous = qInstallMessageHandler(collect);
        LaunchAtLogin::set(item, false);
        qInstallMessageHandler(previous);
        QCOMPARE(item.unregisterCalls, 1);
        QCOMPARE(logged, QStringList({"[Velkor] LaunchAtLogin error: Operation not permitted"}));
    }
};

QTEST_GUILESS_MAIN(ShellLogicTest)
#include "ShellLogicTest.moc"
