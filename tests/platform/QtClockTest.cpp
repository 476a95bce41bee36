// SPDX-License-Identifier: MIT
#include "platform/QtClock.h"

#include <QElapsedTimer>
#include <QtTest>
#include <memory>

using namespace velkor;

class QtClockTest : public QObject
{
    Q_OBJECT

private slots:
    void nowFollowsRealTime()
    {
        QtClock clock;
        QElapsedTimer timer;
        timer.start();
        const double start = clock.now();
        QTest::qWait(60);
        const double elapsed = clock.now() - start;
        QVERIFY(elapsed >= 0.055);
        QVERIFY(elapsed <= timer.elapsed() / 1000.0 + 0.005);
    }

    void oneShotTasksRunOnceInDueOrder()
    {
        QtClock clock;
        QList<int> ran;
        const double start = clock.now();
        double lateRanAt = 0;
        clock.callAfter(0.08, [&] {
            ran.append(2);
            lateRanAt = clock.now();
        });
        clock.callAfter(0.02, [&] { ran.append(1); });
        QVERIFY(ran.isEmpty()); // nothing runs before the event loop does
        QCOMPARE(clock.pendingCount(), 2);
        QTRY_COMPARE(ran, (QList<int>{1, 2}));
        QVERIFY(lateRanAt - start >= 0.075);
        QTest::qWait(100);
        QCOMPARE(ran, (QList<int>{1, 2}));
        QCOMPARE(clock.pendingCount(), 0);
    }

    void cancelledAndSelfCancellingTasks()
    {
        QtClock clock;
        int cancelledRuns = 0;
        const auto doomed = clock.callAfter(0.01, [&] { ++cancelledRuns; });
        clock.cancel(doomed);
        clock.cancel(doomed);    // twice: ignored
        clock.cancel(123456789); // unknown: ignored

        int ticks = 0;
        Clock::TaskId repeating = 0;
        repeating = clock.callEvery(0.01, [&] {
            if (++ticks == 3)
                clock.cancel(repeating);
        });
        // A one-shot task may schedule the next one.
        bool chained = false;
        clock.callAfter(0.01, [&] { clock.callAfter(0.01, [&] { chained = true; }); });

        QTRY_VERIFY(chained);
        QTRY_COMPARE(ticks, 3);
        QTest::qWait(60);
        QCOMPARE(ticks, 3);
        QCOMPARE(cancelledRuns, 0);
        QCOMPARE(clock.pendingCount(), 0);
    }

    void destroyingTheClockDropsPendingTasks()
    {
        bool ran = false;
        {
            QtClock clock;
            clock.callAfter(0.01, [&] { ran = true; });
            clock.callEvery(0.01, [&] { ran = true; });
        }
        QTest::qWait(40);
        QVERIFY(!ran);
    }
};

QTEST_GUILESS_MAIN(QtClockTest)
#include "QtClockTest.moc"
