// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QtTest>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// Things that go away under the program's feet: apps, windows, the window
// manager itself. The program must stay up and keep switching.
class RobustnessTest : public DesktopTestCase
{
    Q_OBJECT

    // The program still works: a fresh gesture switches.
    void stillSwitches(VelkorInstance& velkor, xcb_window_t away, const QString& letter,
                       const QString& wmClass)
    {
        QVERIFY2(velkor.isRunning(), qPrintable(velkor.log()));
        desktop().activate(away);
        QVERIFY(desktop().waitFor([&] { return desktop().activeWindow() == away; }));
        desktop().underActivationKey(letter);
        QVERIFY2(desktop().waitForActive(wmClass), qPrintable(velkor.log()));
    }

private slots:
    void appKilledInMidSession()
    {
        const xcb_window_t mango = desktop().launchTerminal(QStringLiteral("Mango"));
        const xcb_window_t melon = desktop().launchTerminal(QStringLiteral("Melon"));
        const xcb_window_t other = desktop().launchTerminal(QStringLiteral("Other"));
        QVERIFY(mango && melon && other);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(other);
        QVERIFY(desktop().waitForActive(QStringLiteral("Other")));

        desktop().holding(key::SuperR, [&] {
            desktop().tap(key::of(QLatin1Char('m')));
            QVERIFY(desktop().waitForActive(QStringLiteral("Mango")));
            desktop().kill(melon);
            QVERIFY(desktop().waitFor([&] { return !desktop().exists(melon); }));
            // Melon is gone: the letter has one app left.
            desktop().tap(key::of(QLatin1Char('m')));
            XDesktop::settle(200);
            QCOMPARE(desktop().activeClass(), QStringLiteral("Mango"));
        });
        stillSwitches(velkor, mango, QStringLiteral("o"), QStringLiteral("Other"));
    }

    void windowThatVanishesAsItIsChosen()
    {
        const xcb_window_t other = desktop().launchTerminal(QStringLiteral("Other"));
        QVERIFY(other);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        // Short-lived windows, each killed right as its letter is pressed,
        // before the window manager has unlisted it.
        for (int round = 0; round < 5; ++round) {
            const xcb_window_t victim = desktop().launchTerminal(QStringLiteral("Victim"));
            QVERIFY(victim);
            desktop().activate(other);
            QVERIFY(desktop().waitForActive(QStringLiteral("Other")));
            desktop().holding(key::SuperR, [&] {
                desktop().kill(victim);
                desktop().tap(key::of(QLatin1Char('v')));
            });
            QVERIFY(desktop().waitFor([&] { return !desktop().exists(victim); }));
        }
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        QVERIFY(alpha);
        stillSwitches(velkor, other, QStringLiteral("a"), QStringLiteral("Alpha"));
    }

    void windowManagerRestartedMidRun()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(alpha && beta);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        stillSwitches(velkor, beta, QStringLiteral("a"), QStringLiteral("Alpha"));

        desktop().stopWindowManager();
        // No window manager for a moment: no desktops to jump to, and the
        // program must not trip over the missing EWMH properties.
        desktop().underActivationKey(QStringLiteral("2"));
        QVERIFY2(desktop().startWindowManager(), qPrintable(desktop().error()));
        QVERIFY(
            desktop().waitFor([&] { return desktop().exists(alpha) && desktop().exists(beta); }));

        stillSwitches(velkor, alpha, QStringLiteral("b"), QStringLiteral("Beta"));
        desktop().underActivationKey(QStringLiteral("3"));
        QVERIFY(desktop().waitFor([&] { return desktop().currentDesktop() == 2u; }));
    }
};

QTEST_GUILESS_MAIN(RobustnessTest)
#include "RobustnessTest.moc"
