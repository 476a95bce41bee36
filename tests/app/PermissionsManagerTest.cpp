// SPDX-License-Identifier: MIT
#include "app/PermissionsManager.h"

#include "fakes/FakePlatform.h"

#include <QSignalSpy>
#include <QTest>

using namespace velkor;
using namespace velkor::fake;

class PermissionsManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void pollingReportsTheGrantExactlyOnce()
    {
        FakePlatform p;
        PermissionsManager perms(*p.trust, *p.clock);
        QVERIFY(!perms.isTrusted());
        QSignalSpy trustSpy(&perms, &PermissionsManager::trustedChanged);
        int granted = 0;
        int dropped = 0;
        perms.startPolling([&] { ++granted; });
        perms.startPolling([&] { ++dropped; }); // a second click starts nothing
        QCOMPARE(p.clock->pendingCount(), 1);

        p.clock->advance(3.0);
        QCOMPARE(granted, 0);
        p.trust->trusted = true;
        p.clock->advance(1.0);
        QCOMPARE(granted, 1);
        QVERIFY(perms.isTrusted());
        QCOMPARE(trustSpy.count(), 1);
        QCOMPARE(p.clock->pendingCount(), 0);

        // Access withdrawn later is not noticed: nothing polls any more.
        p.trust->trusted = false;
        p.clock->advance(5.0);
        QCOMPARE(granted, 1);
        QCOMPARE(dropped, 0);
        QVERIFY(perms.isTrusted());
    }

    void requestAccessPromptsOpensSettingsAndPolls()
    {
        FakePlatform p;
        PermissionsManager perms(*p.trust, *p.clock);
        int granted = 0;
        perms.requestAccess([&] { ++granted; });
        perms.requestAccess([&] { ++granted; });
        QCOMPARE(p.trust->requestCount, 2);
        QCOMPARE(p.trust->openSettingsCount, 2);
        QVERIFY(perms.isPolling());
        QCOMPARE(p.clock->pendingCount(), 1);
        p.trust->trusted = true;
        p.clock->advance(1.0);
        QCOMPARE(granted, 1);
    }

    void trustIsReadAtCreationAndOnRefresh()
    {
        FakePlatform p;
        p.trust->trusted = true;
        PermissionsManager perms(*p.trust, *p.clock);
        QVERIFY(perms.isTrusted());
        p.trust->trusted = false;
        QVERIFY(perms.isTrusted());
        perms.refresh();
        QVERIFY(!perms.isTrusted());
    }

    void destroyingTheManagerStopsThePoll()
    {
        FakePlatform p;
        int granted = 0;
        {
            PermissionsManager perms(*p.trust, *p.clock);
            perms.startPolling([&] { ++granted; });
        }
        QCOMPARE(p.clock->pendingCount(), 0);
        p.trust->trusted = true;
        p.clock->advance(2.0);
        QCOMPARE(granted, 0);
    }
};

QTEST_GUILESS_MAIN(PermissionsManagerTest)
#include "PermissionsManagerTest.moc"
