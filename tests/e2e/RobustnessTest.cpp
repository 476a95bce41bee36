// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QFile>
#include <QtTest>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace velkor;
using namespace velkor::e2e;

// Things that go away under the program's feet: apps, windows, the window
// manager itself. The program must stay up and keep switching; only the X
// server going away ends it.
class RobustnessTest : public DesktopTestCase
{
    Q_OBJECT

    // The program still works: a fresh gesture switches.
    void stillSwitches(VelkorInstance& velkor, xcb_window_t away, const QString& letter,
                       const QString& wmClass)
    {
        QVERIFY2(velkor.isRunning(), qPrintable(velkor.log()));
        desktop().activate(away);
        QVERIFY(desktop().waitForActive(away));
        desktop().underActivationKey(letter);
        QVERIFY2(desktop().waitForActive(wmClass), qPrintable(velkor.log()));
    }

    // Tries the gesture from the window away until it switches to wmClass:
    // the folders are read in the background, and the names they give may
    // come after the first tries.
    bool switchesEventually(xcb_window_t away, const QString& letter, const QString& wmClass)
    {
        return desktop().waitFor(
            [&] {
                desktop().activate(away);
                desktop().waitForActive(away);
                desktop().underActivationKey(letter);
                return desktop().waitForActive(wmClass, 1000);
            },
            20000);
    }

private slots:
    void hostileApplicationFoldersHoldNothingUp()
    {
        const xcb_window_t kiwi = desktop().launchTerminal(QStringLiteral("Kiwi"));
        const xcb_window_t other = desktop().launchTerminal(QStringLiteral("Other"));
        QVERIFY(kiwi && other);
        VelkorInstance velkor(desktop());
        // A FIFO and a device where entries should be, a link loop, a link
        // to "/" and a 4 GiB file: opening or reading any of them would hold
        // the program at start, or at quit, for good.
        const QByteArray apps = (velkor.dataHome() + QLatin1String("/applications")).toLocal8Bit();
        QCOMPARE(::mkfifo(apps + "/fifo.desktop", 0600), 0);
        QCOMPARE(::symlink("/dev/zero", apps + "/zero.desktop"), 0);
        QCOMPARE(::symlink(".", apps + "/loop"), 0);
        QCOMPARE(::symlink("/", apps + "/root"), 0);
        QFile huge(QString::fromLocal8Bit(apps + "/huge.desktop"));
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(4) << 30));
        huge.close();
        velkor.writeDesktopEntry(QStringLiteral("mango"), QStringLiteral("Mango Tool"),
                                 QStringLiteral("true"), QStringLiteral("Other"));
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));

        // The entries around them are read: Other is named by its entry.
        QVERIFY2(switchesEventually(kiwi, QStringLiteral("m"), QStringLiteral("Other")),
                 qPrintable(velkor.log()));
        // An entry written while the program runs names its app too.
        velkor.writeDesktopEntry(QStringLiteral("zebra"), QStringLiteral("Zebra Tool"),
                                 QStringLiteral("true"), QStringLiteral("Kiwi"));
        QVERIFY2(switchesEventually(other, QStringLiteral("z"), QStringLiteral("Kiwi")),
                 qPrintable(velkor.log()));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    void appsAndWindowsThatVanishInMidSession()
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

    void windowManagerDiesComesBackIsReplacedAndTheXServerGoes()
    {
        // Alpha records every byte typed into it: nothing may leak there.
        const xcb_window_t alpha = desktop().launchRecorder(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(alpha && beta);
        VelkorInstance velkor(desktop());
        velkor.preferences()->setOverlayDelay(0.4);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        stillSwitches(velkor, beta, QStringLiteral("a"), QStringLiteral("Alpha"));

        // Killed, it leaves its lists, desktops and active window behind on
        // the root, all stale; the windows are mapped at the top level.
        desktop().killWindowManager();
        QVERIFY(desktop().waitFor([&] {
            return desktop().clients().contains(alpha) && desktop().clients().contains(beta);
        }));
        const auto focusedInFront = [&](xcb_window_t window) {
            return desktop().waitFor([&] {
                return desktop().inputFocus() == window &&
                       desktop().topLevelsFrontFirst().value(0) == window;
            });
        };
        // Switching raises and focuses the windows itself.
        desktop().underActivationKey(QStringLiteral("b"));
        QVERIFY2(focusedInFront(beta), qPrintable(velkor.log()));
        desktop().underActivationKey(QStringLiteral("a"));
        QVERIFY2(focusedInFront(alpha), qPrintable(velkor.log()));
        // No desktops to jump to, and no window manager to take the
        // Control+digit fallback: nothing reaches the focused window.
        desktop().underActivationKey(QStringLiteral("2"));
        // A window mapped while there is none is an app like any other.
        const xcb_window_t gamma = desktop().launchTerminal(QStringLiteral("Gamma"));
        QVERIFY(gamma);
        desktop().underActivationKey(QStringLiteral("g"));
        QVERIFY2(focusedInFront(gamma), qPrintable(velkor.log()));
        desktop().underActivationKey(QStringLiteral("a"));
        QVERIFY2(focusedInFront(alpha), qPrintable(velkor.log()));
        XDesktop::settle(200);
        QCOMPARE(desktop().recorded(QStringLiteral("Alpha")), QString());

        // A window manager again: it manages every window, and the EWMH
        // requests and desktops are used again.
        QVERIFY2(desktop().startWindowManager(), qPrintable(desktop().error()));
        QVERIFY(desktop().waitFor([&] {
            const auto managed = desktop().clients();
            return managed.contains(alpha) && managed.contains(beta) && managed.contains(gamma);
        }));
        stillSwitches(velkor, alpha, QStringLiteral("b"), QStringLiteral("Beta"));

        // Replaced by another: the same.
        QVERIFY2(desktop().replaceWindowManager(), qPrintable(desktop().error()));
        QVERIFY(desktop().waitFor([&] {
            const auto managed = desktop().clients();
            return managed.contains(alpha) && managed.contains(beta) && managed.contains(gamma);
        }));
        stillSwitches(velkor, beta, QStringLiteral("g"), QStringLiteral("Gamma"));
        desktop().underActivationKey(QStringLiteral("3"));
        QVERIFY(desktop().waitForDesktop(2));
        QCOMPARE(desktop().recorded(QStringLiteral("Alpha")), QString());

        // Only the X server going away ends the program, with one line. A
        // setting changes (a new letter's learnt order) right before it goes.
        QVERIFY(desktop().launchTerminal(QStringLiteral("Kiwi")));
        desktop().holding(key::SuperR, [&] {
            desktop().tap(key::of(QLatin1Char('k')));
            QVERIFY(desktop().waitForActive(QStringLiteral("Kiwi")));
            const qsizetype before = velkor.log().size();
            desktop().killServer();
            QVERIFY(desktop().waitFor([&] { return !velkor.isRunning(); }, 10000));
            const QString said = velkor.log().mid(before).trimmed();
            QVERIFY2(said.count(QLatin1Char('\n')) == 0 && said.contains(QLatin1String("X11")),
                     qPrintable(said));
        });
        QCOMPARE(velkor.exitCode(), std::optional<int>(1));
        const auto prefs = velkor.preferences();
        QCOMPARE(prefs->letterUsage().value(QStringLiteral("k")), QStringList{"Kiwi"});
        QCOMPARE(prefs->overlayDelay(), 0.4);
    }
};

QTEST_GUILESS_MAIN(RobustnessTest)
#include "RobustnessTest.moc"
