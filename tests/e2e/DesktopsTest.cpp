// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QtTest>

using namespace velkor;
using namespace velkor::e2e;

// openbox's desktops as Spaces: digits, [ and ], sending the focused
// window, and what an activation does to an app on another desktop.
class DesktopsTest : public DesktopTestCase
{
    Q_OBJECT

    void superAnd(int keycode)
    {
        desktop().holding(key::SuperR, [&] { desktop().tap(keycode); });
    }

private slots:
    void digitsBracketsSendingAndAppsOnOtherDesktops()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(alpha && beta);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        if (desktop().desktopOf(alpha) == std::nullopt)
            QSKIP("the window manager offers no desktops");
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));

        desktop().underActivationKey(QStringLiteral("3"));
        QVERIFY(desktop().waitForDesktop(2));
        superAnd(key::RightBracket);
        QVERIFY(desktop().waitForDesktop(3));
        // openbox's four desktops end here: no wrap-around to the first.
        superAnd(key::RightBracket);
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(3));
        superAnd(key::LeftBracket);
        QVERIFY(desktop().waitForDesktop(2));

        desktop().underActivationKey(QStringLiteral("1"));
        QVERIFY(desktop().waitForDesktop(0));
        superAnd(key::LeftBracket);
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));

        // A desktop the window manager does not have: nothing happens.
        desktop().underActivationKey(QStringLiteral("9"));
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));
        QVERIFY(velkor.isRunning());

        // Right Alt with a digit sends the focused window there and follows it.
        desktop().activate(alpha);
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));
        desktop().holding(key::SuperR, [&] {
            desktop().holding(key::AltR, [&] { desktop().tap(key::of(QLatin1Char('2'))); });
        });
        QVERIFY(desktop().waitForDesktop(1));
        QCOMPARE(desktop().desktopOf(alpha), std::optional<quint32>(1));
        QCOMPARE(desktop().desktopOf(beta), std::optional<quint32>(0));
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));

        // A letter for an app on another desktop follows the app there...
        desktop().underActivationKey(QStringLiteral("b"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        QVERIFY(desktop().waitForDesktop(0));
        QCOMPARE(desktop().desktopOf(beta), std::optional<quint32>(0));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        // ... or, when asked to, gathers its windows here.
        velkor.preferences()->setSpaceMode(SpaceMode::gatherWindows);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().underActivationKey(QStringLiteral("a"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));
        QVERIFY(desktop().waitFor([&] { return desktop().desktopOf(alpha) == 0u; }));
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));
    }
};

QTEST_GUILESS_MAIN(DesktopsTest)
#include "DesktopsTest.moc"
