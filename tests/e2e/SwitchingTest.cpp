// SPDX-License-Identifier: MIT
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QtTest>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// Letter switching against real X clients: which window the window manager
// makes active is read back from the server after each gesture.
class SwitchingTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<XDesktop> m_desktop;

    XDesktop& desktop() { return *m_desktop; }

    // Holds the activation key and types letters under it.
    void gesture(const QString& letters)
    {
        desktop().holding(key::SuperR, [&] { desktop().type(letters); });
    }

    bool activeBecomes(const QString& wmClass, int timeoutMs = 3000)
    {
        return desktop().waitFor([&] { return desktop().activeClass() == wmClass; }, timeoutMs);
    }

private slots:
    void init()
    {
        m_desktop = std::make_unique<XDesktop>();
        QVERIFY2(m_desktop->start(), qPrintable(m_desktop->error()));
    }

    void cleanup() { m_desktop.reset(); }

    void letterBringsThatAppToTheFront()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(alpha && beta);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(beta);
        QVERIFY(activeBecomes(QStringLiteral("Beta")));

        gesture(QStringLiteral("a"));
        QVERIFY2(activeBecomes(QStringLiteral("Alpha")), qPrintable(velkor.log()));
        QCOMPARE(desktop().stackingFrontFirst().first(), alpha);

        gesture(QStringLiteral("b"));
        QVERIFY(activeBecomes(QStringLiteral("Beta")));
        QCOMPARE(desktop().stackingFrontFirst().first(), beta);
    }
};

QTEST_GUILESS_MAIN(SwitchingTest)
#include "SwitchingTest.moc"
