// SPDX-License-Identifier: MIT
#include "platform/x11/X11EventTime.h"

#include <QTest>

using namespace velkor;

class X11EventTimeTest : public QObject
{
    Q_OBJECT

private slots:
    void keysKeepTheSpacingTheyWereTypedWith()
    {
        X11EventTime time;
        // Handled on time: the Clock's own time.
        QCOMPARE(time.toClock(10'000, 500.0), 500.0);
        // Two taps 0.4 s apart, queued behind a 2 s stall and handled in the
        // same instant, stay 0.4 s apart: no double tap.
        const double first = time.toClock(11'000, 503.0);
        const double second = time.toClock(11'400, 503.0);
        QCOMPARE(first, 501.0);
        QCOMPARE(second - first, 0.4);
        // A late first event sets nothing wrong for good: the first one
        // handled on time corrects the line.
        X11EventTime late;
        QCOMPARE(late.toClock(5'000, 10.0), 10.0);
        QCOMPARE(late.toClock(6'000, 10.5), 10.5);
        QCOMPARE(late.toClock(6'100, 10.6), 10.6);
    }

    void theServersClockWrapsAfter49Days()
    {
        X11EventTime time;
        const double before = time.toClock(0xFFFF'FF00u, 100.0);
        // 256 ms up to the wrap, 256 ms after it.
        // (Milliseconds of 49 days leave about a nanosecond of precision.)
        QVERIFY(qAbs(time.toClock(0x0000'0100u, 100.6) - before - 0.512) < 1e-6);
        // An event a little older than the last one steps back, not ahead.
        QVERIFY(qAbs(time.toClock(0xFFFF'FFF0u, 100.6) - before - 0.240) < 1e-6);
    }
};

QTEST_GUILESS_MAIN(X11EventTimeTest)
#include "X11EventTimeTest.moc"
