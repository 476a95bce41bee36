// SPDX-License-Identifier: MIT
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QtTest>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// openbox's desktops as Spaces: digits, [ and ], sending the focused
// window, and what an activation does to an app on another desktop.
class DesktopsTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<XDesktop> m_desktop;
    std::unique_ptr<VelkorInstance> m_velkor;
    xcb_window_t m_alpha = 0;
    xcb_window_t m_beta = 0;

    XDesktop& desktop() { return *m_desktop; }

    bool currentBecomes(quint32 desktopNumber)
    {
        return desktop().waitFor([&] { return desktop().currentDesktop() == desktopNumber; });
    }

    void startVelkor()
    {
        QVERIFY2(m_velkor->start(), qPrintable(m_velkor->log()));
        if (desktop().desktopOf(m_alpha) == std::nullopt)
            QSKIP("the window manager offers no desktops");
    }

private slots:
    void init()
    {
        m_desktop = std::make_unique<XDesktop>();
        QVERIFY2(m_desktop->start(), qPrintable(m_desktop->error()));
        m_alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        m_beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(m_alpha && m_beta);
        m_velkor = std::make_unique<VelkorInstance>(desktop());
    }

    void cleanup()
    {
        m_velkor.reset();
        m_desktop.reset();
    }

    void digitsAndBracketsMoveBetweenDesktops()
    {
        startVelkor();
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));

        desktop().underActivationKey(QStringLiteral("3"));
        QVERIFY(currentBecomes(2));
        desktop().holding(key::SuperR, [&] { desktop().tap(key::RightBracket); });
        QVERIFY(currentBecomes(3));
        // openbox's four desktops end here: no wrap-around to the first.
        desktop().holding(key::SuperR, [&] { desktop().tap(key::RightBracket); });
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(3));
        desktop().holding(key::SuperR, [&] { desktop().tap(key::LeftBracket); });
        QVERIFY(currentBecomes(2));

        desktop().underActivationKey(QStringLiteral("1"));
        QVERIFY(currentBecomes(0));
        desktop().holding(key::SuperR, [&] { desktop().tap(key::LeftBracket); });
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));

        // A desktop the window manager does not have: nothing happens.
        desktop().underActivationKey(QStringLiteral("9"));
        XDesktop::settle(200);
        QCOMPARE(desktop().currentDesktop(), std::optional<quint32>(0));
        QVERIFY(m_velkor->isRunning());
    }

    void rightAltDigitSendsTheFocusedWindowAndFollowsIt()
    {
        startVelkor();
        desktop().activate(m_alpha);
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));

        desktop().holding(key::SuperR, [&] {
            desktop().holding(key::AltR, [&] { desktop().tap(key::of(QLatin1Char('2'))); });
        });
        QVERIFY(currentBecomes(1));
        QCOMPARE(desktop().desktopOf(m_alpha), std::optional<quint32>(1));
        QCOMPARE(desktop().desktopOf(m_beta), std::optional<quint32>(0));
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));
    }

    void letterReachesAnAppOnAnotherDesktop_data()
    {
        QTest::addColumn<bool>("gather");
        QTest::newRow("follows the app") << false;
        QTest::newRow("gathers its windows here") << true;
    }

    void letterReachesAnAppOnAnotherDesktop()
    {
        QFETCH(bool, gather);
        if (gather)
            m_velkor->preferences()->setSpaceMode(SpaceMode::gatherWindows);
        startVelkor();
        desktop().moveToDesktop(m_beta, 2);
        QVERIFY(desktop().waitFor([&] { return desktop().desktopOf(m_beta) == 2u; }));
        desktop().activate(m_alpha);
        QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));

        desktop().underActivationKey(QStringLiteral("b"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        const quint32 expected = gather ? 0 : 2;
        QVERIFY(desktop().waitFor([&] { return desktop().desktopOf(m_beta) == expected; }));
        QVERIFY(currentBecomes(expected));
    }
};

QTEST_GUILESS_MAIN(DesktopsTest)
#include "DesktopsTest.moc"
