// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QtTest>
#include <csignal>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// What a session does besides switching: closing, quitting and hiding the
// chosen app with Left Super + W, Q, H, and moving the pointer after it.
class SessionActionsTest : public DesktopTestCase
{
    Q_OBJECT

    // Under the activation key: the letter, then Left Super + action key.
    void letterThenAction(QChar letter, QChar action)
    {
        desktop().holding(key::SuperR, [&] {
            desktop().tap(key::of(letter));
            desktop().holding(key::SuperL, [&] { desktop().tap(key::of(action)); });
        });
    }

private slots:
    void closeQuitAndHideTheChosenAppAndThePointerFollowsOnlyWhenAsked()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        const xcb_window_t gamma = desktop().launchTerminal(QStringLiteral("Gamma"));
        const xcb_window_t delta = desktop().launchTerminal(QStringLiteral("Delta"));
        QVERIFY(alpha && beta && gamma && delta);
        const qint64 betaPid = desktop().pidOf(beta);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(delta);
        QVERIFY(desktop().waitForActive(QStringLiteral("Delta")));
        const QPoint corner(1270, 790);
        desktop().warpPointer(corner);

        letterThenAction(QLatin1Char('a'), QLatin1Char('w'));
        QVERIFY2(desktop().waitFor([&] { return !desktop().exists(alpha); }),
                 qPrintable(velkor.log()));

        letterThenAction(QLatin1Char('b'), QLatin1Char('q'));
        QVERIFY(desktop().waitFor([&] { return !desktop().exists(beta); }));
        QVERIFY(desktop().waitFor([&] { return ::kill(pid_t(betaPid), 0) != 0; }));

        letterThenAction(QLatin1Char('g'), QLatin1Char('h'));
        QVERIFY(desktop().waitFor([&] { return desktop().isHidden(gamma); }));
        QVERIFY(desktop().exists(gamma));
        QVERIFY(!desktop().isHidden(delta));

        // Choosing a hidden app shows it again; the pointer stays put.
        desktop().underActivationKey(QStringLiteral("g"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Gamma")));
        QVERIFY(!desktop().isHidden(gamma));
        XDesktop::settle(300);
        QCOMPARE(desktop().pointer(), corner);
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        // Asked to, the pointer goes to the middle of the chosen window.
        velkor.preferences()->setMouseFollowsFocus(true);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().underActivationKey(QStringLiteral("d"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Delta")));
        const QRect frame = desktop().frame(delta);
        QVERIFY(!frame.isEmpty());
        QVERIFY2(desktop().waitFor(
                     [&] { return (desktop().pointer() - frame.center()).manhattanLength() <= 2; }),
                 qPrintable(QStringLiteral("pointer at %1,%2, frame centre %3,%4")
                                .arg(desktop().pointer().x())
                                .arg(desktop().pointer().y())
                                .arg(frame.center().x())
                                .arg(frame.center().y())));
    }
};

QTEST_GUILESS_MAIN(SessionActionsTest)
#include "SessionActionsTest.moc"
