// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QFile>
#include <QtTest>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// Letter switching and search against real X clients: which window the
// window manager made active is read back from the server after each key.
class SwitchingTest : public DesktopTestCase
{
    Q_OBJECT

    // Three apps under "m" plus one elsewhere, which starts in front.
    void launchFruit()
    {
        for (const char* name : {"Mango", "Melon", "Mint", "Other"})
            QVERIFY2(desktop().launchTerminal(QString::fromLatin1(name)), name);
    }

    void bringOtherToFront()
    {
        for (xcb_window_t w : desktop().clients())
            if (desktop().wmClass(w) == QLatin1String("Other"))
                desktop().activate(w);
        QVERIFY(desktop().waitForActive(QStringLiteral("Other")));
    }

private slots:
    void letterBringsThatAppToTheFront()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        // Named by its desktop entry, found through StartupWMClass.
        const xcb_window_t gamma = desktop().launchTerminal(QStringLiteral("Gx"));
        // xlogo sets no _NET_WM_PID: its pid comes from the X-Resource extension.
        const xcb_window_t logo =
            desktop().launch(QStringLiteral("xlogo"), {}, QStringLiteral("XLogo"));
        QVERIFY(alpha && beta && gamma && logo);
        VelkorInstance velkor(desktop());
        velkor.writeDesktopEntry(QStringLiteral("org.example.Grapefruit"),
                                 QStringLiteral("Grapefruit"), QStringLiteral("xterm"),
                                 QStringLiteral("Gx"));
        velkor.writeDesktopEntry(QStringLiteral("org.example.Zebra"), QStringLiteral("Zebra Notes"),
                                 QStringLiteral("xterm -class Zebra -title Zebra"),
                                 QStringLiteral("Zebra"));
        // An entry that asks not to be shown is never offered.
        velkor.writeDesktopEntry(QStringLiteral("org.example.Zeal"), QStringLiteral("Zeal"),
                                 QStringLiteral("xterm -class Zeal"));
        QFile hidden(velkor.dataHome() + QLatin1String("/applications/org.example.Zeal.desktop"));
        QVERIFY(hidden.open(QIODevice::Append));
        hidden.write("NoDisplay=true\n");
        hidden.close();
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(beta);
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));

        desktop().underActivationKey(QStringLiteral("a"));
        QVERIFY2(desktop().waitForActive(QStringLiteral("Alpha")), qPrintable(velkor.log()));
        QCOMPARE(desktop().stackingFrontFirst().first(), alpha);

        desktop().underActivationKey(QStringLiteral("g"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Gx")));

        desktop().underActivationKey(QStringLiteral("x"));
        QVERIFY(desktop().waitForActive(QStringLiteral("XLogo")));
        QCOMPARE(desktop().stackingFrontFirst().first(), logo);

        // A search launches an installed app that is not running; once it
        // runs, its letter switches to it like any other app.
        desktop().underActivationKey(QStringLiteral("ze"));
        QVERIFY2(desktop().waitForActive(QStringLiteral("Zebra"), 8000), qPrintable(velkor.log()));
        desktop().activate(beta);
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        desktop().underActivationKey(QStringLiteral("z"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Zebra")));
    }

    void sameLetterCyclesAndTheLearntOrderOutlivesTheProgram()
    {
        launchFruit();
        {
            VelkorInstance velkor(desktop());
            QVERIFY2(velkor.start(), qPrintable(velkor.log()));
            bringOtherToFront();
            desktop().holding(key::SuperR, [&] {
                for (const char* name : {"Mango", "Melon", "Mint"}) {
                    desktop().tap(key::of(QLatin1Char('m')));
                    QVERIFY2(desktop().waitForActive(QString::fromLatin1(name)),
                             qPrintable(velkor.log()));
                }
            });
            QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
        }
        VelkorInstance again(desktop());
        QCOMPARE(again.preferences()->letterUsage().value(QStringLiteral("m")).value(0),
                 QStringLiteral("Mint"));
        QVERIFY2(again.start(), qPrintable(again.log()));
        bringOtherToFront();
        desktop().underActivationKey(QStringLiteral("m"));
        QVERIFY(desktop().waitForActive(QStringLiteral("Mint")));
        // Mint leads the letter; being in front, the press goes past it.
        desktop().underActivationKey(QStringLiteral("m"));
        QVERIFY2(desktop().waitForActive(QStringLiteral("Melon")), qPrintable(again.log()));
    }

    void switchOnReleaseWaitsAndWrapsAndAnExcludedAppIsNeverChosen()
    {
        launchFruit();
        {
            VelkorInstance velkor(desktop());
            velkor.preferences()->setSwitchOnRelease(true);
            QVERIFY2(velkor.start(), qPrintable(velkor.log()));
            bringOtherToFront();

            // Four presses over three apps: past the end, back to the first.
            desktop().press(key::SuperR);
            desktop().type(QStringLiteral("mmmm"));
            XDesktop::settle(300);
            QCOMPARE(desktop().activeClass(), QStringLiteral("Other"));
            desktop().release(key::SuperR);
            QVERIFY(desktop().waitForActive(QStringLiteral("Mango")));

            bringOtherToFront();
            desktop().underActivationKey(QStringLiteral("mm"));
            QVERIFY(desktop().waitForActive(QStringLiteral("Melon")));
            QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
        }

        // Settings of its own: switching at once, no order learnt.
        VelkorInstance velkor(desktop(), desktop().scratchPath() + QLatin1String("/excluding"));
        velkor.preferences()->setExcludedBundleIds({QStringLiteral("Mango")});
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        bringOtherToFront();

        QStringList seen;
        desktop().holding(key::SuperR, [&] {
            for (int i = 0; i < 2; ++i) {
                desktop().tap(key::of(QLatin1Char('m')));
                XDesktop::settle(150);
                seen.append(desktop().activeClass());
            }
        });
        QCOMPARE(seen, (QStringList{QStringLiteral("Melon"), QStringLiteral("Mint")}));
        desktop().underActivationKey(QStringLiteral("ma"));
        XDesktop::settle(200);
        QVERIFY(desktop().activeClass() != QLatin1String("Mango"));
    }
};

QTEST_GUILESS_MAIN(SwitchingTest)
#include "SwitchingTest.moc"
