// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QProcess>
#include <QtTest>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xtest.h>

using namespace velkor;
using namespace velkor::e2e;

namespace {

// A program of the desktop's own, stopped with the test.
struct Helper
{
    QProcess process;
    Helper(XDesktop& desktop, const QString& program, const QStringList& arguments)
    {
        process.setProcessEnvironment(desktop.environment());
        process.start(program, arguments);
    }
    bool started() { return process.waitForStarted(5000); }
    void stop()
    {
        process.terminate();
        process.waitForFinished(3000);
    }
    ~Helper() { stop(); }
};

// What the screen shows in and around the overlay's pill.
struct AroundThePill
{
    int behind = -1;  // grey level beside the overlay window: the window behind
    int margin = -1;  // the window's clear margin, out of the shadow's reach
    int outside = -1; // just above the middle of the pill's top edge
    int inside = -1;  // just below that edge
    int below = -1;   // just below the pill, where its shadow falls

    QString describe() const
    {
        return QStringLiteral("behind %1 margin %2 outside %3 inside %4 below %5")
            .arg(behind)
            .arg(margin)
            .arg(outside)
            .arg(inside)
            .arg(below);
    }
};

// Reads the screen around the shown overlay; the pill, without rows and so
// without dots, sits in the middle of the window, 34 pixels below its top.
// The window may be wider than the pill: its width goes in steps.
std::optional<AroundThePill> lookAroundThePill(XDesktop& desktop)
{
    const QList<xcb_window_t> overlays =
        desktop.shownWindowsNamed(QStringLiteral("Velkor overlay"));
    if (overlays.isEmpty())
        return std::nullopt;
    const QRect window = desktop.frame(overlays.first());
    const int padding = 34;
    const int middle = window.center().y();
    AroundThePill seen;
    seen.behind = qGray(desktop.pixel({window.left() - 30, middle}));
    seen.margin = qGray(desktop.pixel(window.topLeft() + QPoint(4, 4)));
    seen.outside = qGray(desktop.pixel({window.center().x(), window.top() + padding - 2}));
    seen.inside = qGray(desktop.pixel({window.center().x(), window.top() + padding + 3}));
    seen.below = qGray(desktop.pixel({window.center().x(), window.bottom() - padding + 4}));
    return seen;
}

void click(XDesktop& desktop, QPoint where, uint8_t button)
{
    desktop.warpPointer(where);
    xcb_connection_t* c = desktop.connection();
    xcb_test_fake_input(c, XCB_BUTTON_PRESS, button, XCB_CURRENT_TIME, desktop.root(), 0, 0, 0);
    xcb_test_fake_input(c, XCB_BUTTON_RELEASE, button, XCB_CURRENT_TIME, desktop.root(), 0, 0, 0);
    xcb_flush(c);
}

// A session bus of the test's own for the programs it starts, optionally one
// that gives no name under org.velkor to anyone.
class PrivateSessionBus
{
public:
    ~PrivateSessionBus()
    {
        if (m_daemon.state() == QProcess::NotRunning)
            return;
        if (m_savedAddress)
            qputenv("DBUS_SESSION_BUS_ADDRESS", *m_savedAddress);
        else
            qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        m_daemon.terminate();
        m_daemon.waitForFinished(3000);
    }

    // False when there is no dbus-daemon to start.
    bool start(const char* config = "session-bus.conf")
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--config-file=" VELKOR_FIXTURES "/dbus/") + config,
                        "--nofork", "--nopidfile", "--print-address=1"});
        if (!m_daemon.waitForStarted(5000) || !m_daemon.waitForReadyRead(5000))
            return false;
        const QByteArray address = m_daemon.readLine().trimmed();
        if (address.isEmpty())
            return false;
        if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"))
            m_savedAddress = qgetenv("DBUS_SESSION_BUS_ADDRESS");
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        return true;
    }

private:
    QProcess m_daemon;
    std::optional<QByteArray> m_savedAddress;
};

} // namespace

// The faces of Velkor on a real X desktop: the overlay panel, the tray item
// and its menu, and the settings window a second start brings up.
class ShellTest : public DesktopTestCase
{
    Q_OBJECT

private slots:
    // Each hold schedules the overlay; a switch that ends before the delay
    // must not show it. The delay is far longer than any hold on a loaded
    // machine, so a showing is a fault whatever the timing. That the release
    // cancels the pending show is the overlay controller's unit test. Held
    // past a short delay, it shows in its corner, and the focus stays put.
    void overlayShowsOnlyAfterTheDelayInTheCornerWithoutTakingFocus()
    {
        QVERIFY(desktop().launchTerminal(QStringLiteral("Alpha")));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        QVERIFY(beta);
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        VelkorInstance velkor(desktop());
        velkor.preferences()->setOverlayDelay(3600);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        const auto overlayShown = [&] {
            return !desktop().shownWindowsNamed(QStringLiteral("Velkor overlay")).isEmpty();
        };

        bool seen = false;
        for (int round = 0; round < 3; ++round) {
            desktop().holding(key::SuperR, [&] {
                desktop().type(QStringLiteral("a"));
                seen = seen || overlayShown();
            });
            QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));
            seen = seen || overlayShown();
            desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("b")); });
            QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        }
        QVERIFY(!seen);
        QVERIFY(!overlayShown());
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        {
            auto prefs = velkor.preferences();
            prefs->setOverlayPosition(OverlayPosition::topLeft);
            prefs->setOverlayDelay(0.3);
        }
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QElapsedTimer held;
        desktop().press(key::SuperR);
        held.start();
        QVERIFY(desktop().waitFor(overlayShown, 3000));
        // Not before the delay.
        QVERIFY2(held.elapsed() >= 250, qPrintable(QString::number(held.elapsed())));
        const xcb_window_t overlay =
            desktop().shownWindowsNamed(QStringLiteral("Velkor overlay")).first();
        const QRect rect = desktop().frame(overlay); // unmanaged: no frame extents
        QCOMPARE(rect.topLeft(), QPoint(24, 24));
        QVERIFY(rect.width() >= 180 && rect.height() >= 60);
        // The terminal keeps the keyboard while the overlay shows.
        QCOMPARE(desktop().activeWindow(), beta);

        desktop().release(key::SuperR);
        QVERIFY(desktop().waitFor([&] { return !overlayShown(); }, 2000));
        QCOMPARE(desktop().activeWindow(), beta);
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    // Around the pill the screen shows the window behind, never black: the
    // window is cut to the pill without a compositor and see-through, with
    // its soft shadow, under one; it switches as the compositor starts and
    // stops.
    void overlayShowsTheWindowBehindWithOrWithoutACompositor()
    {
        QVERIFY(desktop().launch(
            QStringLiteral("xterm"),
            {"-class", "Backdrop", "-bg", "white", "-fg", "white", "-geometry", "200x70+0+0"},
            QStringLiteral("Backdrop")));
        QVERIFY(desktop().waitForActive(QStringLiteral("Backdrop")));
        VelkorInstance velkor(desktop());
        {
            auto prefs = velkor.preferences();
            prefs->setOverlayPosition(OverlayPosition::center);
            prefs->setOverlayDelay(0);
            prefs->setTheme(AppTheme::light);
        }
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));

        AroundThePill last;
        // Holds the activation key until the screen shows what accept wants.
        auto holdUntil = [&](const std::function<bool(const AroundThePill&)>& accept) {
            desktop().press(key::SuperR);
            const bool seen = desktop().waitFor(
                [&] {
                    const auto around = lookAroundThePill(desktop());
                    if (around)
                        last = *around;
                    return around && accept(*around);
                },
                8000);
            desktop().release(key::SuperR);
            desktop().waitFor([&] {
                return desktop().shownWindowsNamed(QStringLiteral("Velkor overlay")).isEmpty();
            });
            return seen;
        };
        // Cut to the pill: the window behind shows right up to its edge.
        const auto cut = [](const AroundThePill& a) {
            return a.behind > 240 && a.margin == a.behind && a.outside == a.behind &&
                   a.below == a.behind && a.inside > 200 && a.inside < a.behind;
        };
        // See-through: the margin shows the window behind, the shadow darkens
        // it a little under the pill.
        const auto seeThrough = [](const AroundThePill& a) {
            return a.behind > 240 && a.margin == a.behind && a.outside > 160 &&
                   a.below < a.behind - 8 && a.below > 128 && a.inside > 200;
        };

        QCOMPARE(desktop().selectionOwner("_NET_WM_CM_S0"), xcb_window_t(0));
        QVERIFY2(holdUntil(cut), qPrintable(last.describe()));

        Helper compositor(desktop(), QStringLiteral("xcompmgr"), {});
        if (!compositor.started())
            QSKIP("xcompmgr is not installed");
        QVERIFY(desktop().waitFor([&] { return desktop().selectionOwner("_NET_WM_CM_S0") != 0; },
                                  5000));
        QVERIFY2(holdUntil(seeThrough), qPrintable(last.describe()));

        compositor.stop();
        QVERIFY(desktop().waitFor([&] { return desktop().selectionOwner("_NET_WM_CM_S0") == 0; },
                                  5000));
        QVERIFY2(holdUntil(cut), qPrintable(last.describe()));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    // Without a tray (stock GNOME) the first start opens the settings, which
    // say how to come back to them; a tray host that starts later gets the
    // icon, and its menu opens.
    void withoutATrayTheSettingsOpenAndALaterTrayGetsTheIcon()
    {
        VelkorInstance velkor(desktop());
        velkor.preferences()->store().remove(QStringLiteral("firstStartNoticeShown"));
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY2(desktop().waitForShown(QStringLiteral("Velkor Settings")),
                 qPrintable(velkor.log()));

        if (!desktop().startTrayHost())
            QSKIP(qPrintable(desktop().error()));
        // The icon's window is reparented into the tray host's window.
        xcb_window_t icon = 0;
        QVERIFY2(desktop().waitFor(
                     [&] {
                         for (const xcb_window_t w : desktop().allWindows()) {
                             const bool embedded =
                                 desktop().parentOf(w) != desktop().root() &&
                                 desktop().wmClass(w) == QLatin1String("Velkor") &&
                                 desktop().isViewable(w);
                             if (embedded && desktop().frame(w).top() < 30) {
                                 icon = w;
                                 return true;
                             }
                         }
                         return false;
                     },
                     5000),
                 "the tray icon was not embedded");

        const QRect iconRect = desktop().frame(icon);
        QVERIFY(iconRect.width() > 0 && iconRect.width() <= 64);
        const QList<xcb_window_t> existing = desktop().allWindows();
        const QSet<xcb_window_t> before(existing.cbegin(), existing.cend());
        click(desktop(), iconRect.center(), 3);
        // The menu: a new shown window of ours, tall enough for its entries.
        QVERIFY2(desktop().waitFor(
                     [&] {
                         for (const xcb_window_t w : desktop().allWindows())
                             if (!before.contains(w) && desktop().isViewable(w) &&
                                 desktop().frame(w).height() > 100)
                                 return true;
                         return false;
                     },
                     3000),
                 qPrintable(velkor.log()));
        desktop().tap(key::Escape);
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        // With the tray there, a first start's notice comes up instead, and
        // the focus stays where the user types.
        const xcb_window_t recorder = desktop().launchRecorder(QStringLiteral("Recorder"));
        QVERIFY(recorder);
        desktop().activate(recorder);
        QVERIFY(desktop().waitForActive(recorder));
        velkor.preferences()->store().remove(QStringLiteral("firstStartNoticeShown"));
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY2(desktop().waitForShown(QStringLiteral("Velkor is running")),
                 qPrintable(velkor.log()));
        QCOMPARE(desktop().activeWindow(), recorder);
        desktop().type(QStringLiteral("s"));
        QVERIFY(desktop().waitFor(
            [&] { return desktop().recorded(QStringLiteral("Recorder")) == QLatin1String("s"); }));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    // In a Wayland session Velkor would run on Xwayland and see keys only
    // while one of its own windows has the focus: it says so, in the log and
    // in its welcome window, and takes no key. A bus that will not give
    // Velkor its name stops nothing; with a bus that does, a second start
    // shows the first one's settings window.
    void waylandSessionsRefusingBusesAndSecondStarts()
    {
        {
            VelkorInstance velkor(desktop(), desktop().scratchPath() + QLatin1String("/wayland"));
            velkor.setEnvironment(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
            QVERIFY(velkor.launch());
            QVERIFY2(velkor.waitForLog(QStringLiteral("[Velkor] this is a Wayland session")),
                     qPrintable(velkor.log()));
            QVERIFY2(desktop().waitForShown(QStringLiteral("Welcome to Velkor")),
                     qPrintable(velkor.log()));
            QVERIFY(velkor.isRunning());
            QVERIFY2(!velkor.logSaysKeyGrabbed(), qPrintable(velkor.log()));
            QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
        }
        {
            PrivateSessionBus refusing;
            if (!refusing.start("session-bus-refusing-velkor.conf"))
                QSKIP("dbus-daemon is not installed");
            VelkorInstance velkor(desktop());
            QVERIFY2(velkor.start(), qPrintable(velkor.log()));
            QVERIFY2(velkor.log().contains(QStringLiteral("session bus refused the name")),
                     qPrintable(velkor.log()));
            QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
        }
        PrivateSessionBus bus;
        QVERIFY(bus.start());

        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY(desktop().shownWindowsNamed(QStringLiteral("Velkor Settings")).isEmpty());

        // The same X display, spelt another way.
        QProcessEnvironment environment = velkor.environment();
        const QString display = environment.value(QStringLiteral("DISPLAY"));
        QVERIFY(display.startsWith(QLatin1Char(':')));
        environment.insert(QStringLiteral("DISPLAY"), QStringLiteral("unix") + display + ".0");
        QProcess second;
        second.setProcessEnvironment(environment);
        second.setProcessChannelMode(QProcess::MergedChannels);
        second.start(VelkorInstance::binary(), {});
        QVERIFY(second.waitForFinished(10000));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QVERIFY(!second.readAll().contains("[Velkor] activation key"));

        QVERIFY2(desktop().waitForShown(QStringLiteral("Velkor Settings")),
                 qPrintable(velkor.log()));
        QVERIFY(velkor.isRunning());
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }
};

QTEST_GUILESS_MAIN(ShellTest)
#include "ShellTest.moc"
