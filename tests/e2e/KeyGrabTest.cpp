// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "XGrabber.h"
#include "settings/Preferences.h"

#include <QtTest>
#include <csignal>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

namespace {

// The keypad's 3, by X keycode (evdev + 8).
constexpr int Keypad3 = 89;

// Counts the windows without a window manager (the overlay is one) that one
// process maps, on a connection of its own, so every showing is seen in the
// server's order, however short it was.
class OverlayShowings
{
public:
    OverlayShowings(const XDesktop& desktop, qint64 pid)
        : m_desktop(desktop), m_c(xcb_connect(desktop.display().toLatin1().constData(), nullptr)),
          m_pid(quint32(pid))
    {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_c, root, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_c);
    }
    ~OverlayShowings() { xcb_disconnect(m_c); }

    int count()
    {
        while (xcb_generic_event_t* event = xcb_poll_for_event(m_c)) {
            const auto* map = reinterpret_cast<const xcb_map_notify_event_t*>(event);
            if ((event->response_type & 0x7f) == XCB_MAP_NOTIFY && map->override_redirect) {
                const QByteArray pid = m_desktop.property(
                    map->window, m_desktop.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
                if (pid.size() == 4 && *reinterpret_cast<const quint32*>(pid.constData()) == m_pid)
                    ++m_count;
            }
            std::free(event);
        }
        return m_count;
    }

private:
    const XDesktop& m_desktop;
    xcb_connection_t* m_c;
    quint32 m_pid;
    int m_count = 0;
};

} // namespace

// The keyboard side of velkor on a real desktop: what the grabs keep from
// the focused window and what they give back, the Super shortcuts, the
// double tap, keys by position under other layouts, and the other programs
// that hold keys on users' desktops.
class KeyGrabTest : public DesktopTestCase
{
    Q_OBJECT

    inline static const QString Recorder = QStringLiteral("Recorder");

    // Waits for text to be exactly what the recorder got; a key typed last
    // proves the keys before it have all been delivered or kept.
    bool holdsExactly(const QString& text)
    {
        return desktop().waitFor([&] { return desktop().recorded(Recorder) == text; });
    }

    int setLayout(const QString& layout)
    {
        QProcess setxkbmap;
        setxkbmap.setProcessEnvironment(desktop().environment());
        setxkbmap.start(QStringLiteral("setxkbmap"), {layout});
        setxkbmap.waitForFinished();
        XDesktop::settle(300); // velkor reloads once the notifications settle
        return setxkbmap.exitStatus() == QProcess::NormalExit ? setxkbmap.exitCode() : -1;
    }

private slots:
    void typedUnderTheKeyStaysOutWhilePassedKeysAndOtherProgramsKeysGetThrough()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t recorder = desktop().launchRecorder(Recorder);
        QVERIFY(alpha && recorder);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(recorder);
        QVERIFY(desktop().waitForActive(recorder));

        // q has no app (a search, swallowed); 0 and the comma mean nothing
        // to velkor and go on to the terminal.
        const int comma = 59;
        desktop().holding(key::SuperR, [&] {
            desktop().type(QStringLiteral("q0"));
            desktop().tap(comma);
        });
        // Passed keys are typed again once Velkor has handled them; a key
        // typed after the release goes straight to the terminal, and on a
        // loaded machine may overtake them.
        QVERIFY2(holdsExactly(QStringLiteral("0,")), qPrintable(desktop().recorded(Recorder)));
        desktop().type(QStringLiteral("s"));
        QVERIFY2(holdsExactly(QStringLiteral("0,s")), qPrintable(desktop().recorded(Recorder)));
        QCOMPARE(desktop().activeWindow(), recorder);

        // A letter that switches is kept too, and the next keys go where
        // the focus went.
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("a")); });
        QVERIFY(desktop().waitForActive(alpha));
        desktop().activate(recorder);
        QVERIFY(desktop().waitForActive(recorder));
        desktop().type(QStringLiteral("e"));
        QVERIFY2(holdsExactly(QStringLiteral("0,se")), qPrintable(desktop().recorded(Recorder)));

        // Shift already down when the key goes down changes nothing: the
        // letter still switches and stays out of the recorder.
        desktop().holding(key::ShiftL, [&] {
            desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("a")); });
        });
        QVERIFY(desktop().waitForActive(alpha));
        desktop().activate(recorder);
        QVERIFY(desktop().waitForActive(recorder));
        desktop().type(QStringLiteral("f"));
        QVERIFY2(holdsExactly(QStringLiteral("0,sef")), qPrintable(desktop().recorded(Recorder)));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        // A hotkey daemon holds Right Super as Velkor starts: Velkor says so
        // once, keeps trying, and takes the key as soon as it is free.
        XGrabber daemon(desktop().display());
        daemon.grabKey(key::SuperR, XCB_MOD_MASK_ANY);
        QVERIFY(!velkor.start());
        QVERIFY2(velkor.isRunning(), qPrintable(velkor.log()));
        const QString taken = QStringLiteral("[Velkor] cannot grab the activation key Right Super: "
                                             "another program holds it");
        QVERIFY2(velkor.log().contains(taken), qPrintable(velkor.log()));
        OverlayShowings overlays(desktop(), velkor.pid());
        desktop().underActivationKey(QStringLiteral("a"));
        XDesktop::settle(3500); // a watchdog tick or so
        daemon.ungrabKey(key::SuperR, XCB_MOD_MASK_ANY);
        QVERIFY2(velkor.waitForLog(QStringLiteral("[Velkor] activation key Right Super grabbed")),
                 qPrintable(velkor.log()));
        // One line for the key, none for its variants with Shift and the
        // like, which come back with it: a hand on Shift still switches.
        QCOMPARE(velkor.log().count(taken), 1);
        QVERIFY2(!velkor.log().contains(QStringLiteral("with Shift")), qPrintable(velkor.log()));
        QCOMPARE(desktop().activeWindow(), recorder);
        desktop().holding(key::ShiftL, [&] { desktop().underActivationKey(QStringLiteral("a")); });
        QVERIFY(desktop().waitForActive(alpha));

        // A screen locker holds the whole keyboard: a double tap held with a
        // letter typed under it is the locker's, and Velkor shows nothing
        // over it.
        XGrabber locker(desktop().display());
        QVERIFY(locker.grabKeyboard());
        XDesktop::settle(500);
        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] {
            desktop().type(QStringLiteral("r"));
            XDesktop::settle(400);
        });
        locker.ungrabKeyboard();
        QCOMPARE(desktop().activeWindow(), alpha);

        // Free again, the same double tap shows the window switcher at once:
        // the only showing since this start.
        XDesktop::settle(500);
        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] {
            QVERIFY2(desktop().waitFor([&] { return overlays.count() > 0; }),
                     qPrintable(velkor.log()));
        });
        QCOMPARE(overlays.count(), 1);
    }

    void windowSwitchersSuperTabOnlyWhenAskedSuperGraveAndTheDoubleTap()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        const xcb_window_t recorder = desktop().launchRecorder(Recorder);
        QVERIFY(alpha && beta && recorder);
        auto superTabs = [&](int tabs) {
            desktop().holding(key::SuperL, [&] {
                for (int i = 0; i < tabs; ++i)
                    desktop().tap(key::Tab);
            });
        };

        {
            VelkorInstance velkor(desktop());
            velkor.preferences()->setReplaceCommandTab(false);
            QVERIFY2(velkor.start(), qPrintable(velkor.log()));
            desktop().activate(recorder);
            QVERIFY(desktop().waitForActive(recorder));
            superTabs(1);
            desktop().type(QStringLiteral("s"));
            QVERIFY2(holdsExactly(QStringLiteral("\ts")), qPrintable(desktop().recorded(Recorder)));
            QCOMPARE(desktop().activeWindow(), recorder);
            QVERIFY(velkor.stop());
        }

        VelkorInstance velkor(desktop());
        velkor.preferences()->setReplaceCommandTab(true);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        // The switcher lists the windows app by app in the order the window
        // manager lists the clients, preselects the second row, moves on with
        // each further Tab and commits when Super goes up.
        const QList<xcb_window_t> rows = desktop().clients();
        QCOMPARE(rows, (QList<xcb_window_t>{alpha, beta, recorder}));
        superTabs(1);
        QVERIFY2(desktop().waitForActive(beta), qPrintable(velkor.log()));
        superTabs(2);
        QVERIFY2(desktop().waitForActive(recorder), qPrintable(velkor.log()));
        desktop().type(QStringLiteral("e"));
        QVERIFY2(holdsExactly(QStringLiteral("\tse")), qPrintable(desktop().recorded(Recorder)));

        // With Shift it walks back from the last row: twice is the second.
        desktop().holding(key::ShiftL, [&] { superTabs(2); });
        QVERIFY2(desktop().waitForActive(beta), qPrintable(velkor.log()));

        // Super + grave: each press within a burst raises a window of the
        // front app not seen yet, in the order the first press found them,
        // and the fourth comes round.
        QVERIFY(desktop().launch(QStringLiteral(VELKOR_MULTI_WINDOW_CLIENT),
                                 {QStringLiteral("Burst"), QStringLiteral("name=one"),
                                  QStringLiteral("name=two"), QStringLiteral("name=three")},
                                 QStringLiteral("Burst")));
        QList<xcb_window_t> burst; // front first
        QVERIFY(desktop().waitFor([&] {
            burst.clear();
            for (const xcb_window_t w : desktop().stackingFrontFirst()) {
                if (desktop().wmClass(w) == QLatin1String("Burst"))
                    burst << w;
            }
            return burst.size() == 3;
        }));
        desktop().activate(burst.at(0));
        QVERIFY(desktop().waitForActive(burst.at(0)));
        QList<xcb_window_t> visited;
        desktop().holding(key::SuperL, [&] {
            for (int press = 0; press < 4; ++press) {
                const xcb_window_t before = desktop().activeWindow();
                desktop().tap(key::Grave);
                QVERIFY2(desktop().waitFor([&] { return desktop().activeWindow() != before; }),
                         qPrintable(velkor.log()));
                visited << desktop().activeWindow();
            }
        });
        QCOMPARE(visited,
                 (QList<xcb_window_t>{burst.at(1), burst.at(2), burst.at(0), burst.at(1)}));

        // An app with one window gets the key itself.
        desktop().activate(recorder);
        QVERIFY(desktop().waitForActive(recorder));
        desktop().holding(key::SuperL, [&] { desktop().tap(key::Grave); });
        desktop().type(QStringLiteral("s"));
        QVERIFY2(holdsExactly(QStringLiteral("\tse`s")), qPrintable(desktop().recorded(Recorder)));

        // A double tap opens the window switcher; typing filters it by title.
        const xcb_window_t groceries =
            desktop().launchTerminal(QStringLiteral("Notes"), QStringLiteral("groceries"));
        const xcb_window_t taxes =
            desktop().launchTerminal(QStringLiteral("Notes"), QStringLiteral("taxes"));
        QVERIFY(groceries && taxes);
        desktop().activate(alpha);
        QVERIFY(desktop().waitForActive(alpha));
        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("tax")); });
        QVERIFY2(desktop().waitForActive(taxes), qPrintable(velkor.log()));
        XDesktop::settle(500); // apart from the last press, so not a triple tap
        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("gro")); });
        QVERIFY(desktop().waitForActive(groceries));
    }

    void keysCountByPositionThroughAStallAndNewKeymaps()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t beta = desktop().launchTerminal(QStringLiteral("Beta"));
        const xcb_window_t zeta = desktop().launchTerminal(QStringLiteral("Zeta"));
        const xcb_window_t yankee = desktop().launchTerminal(QStringLiteral("Yankee"));
        QVERIFY(alpha && beta && zeta && yankee);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        if (!desktop().desktopOf(alpha))
            QSKIP("the window manager offers no desktops");
        const auto superAnd = [&](int keycode) {
            desktop().holding(key::SuperR, [&] { desktop().tap(keycode); });
        };

        // Velkor stands still while two taps 0.6 s apart wait in its queue,
        // a digit under the second. Handled in one go, they are still two
        // taps: the digit is a desktop, not the second row of a window list.
        ::kill(pid_t(velkor.pid()), SIGSTOP);
        desktop().tap(key::SuperR);
        XDesktop::settle(600);
        superAnd(key::of(QLatin1Char('2')));
        ::kill(pid_t(velkor.pid()), SIGCONT);
        QVERIFY2(desktop().waitForDesktop(1), qPrintable(velkor.log()));

        // AZERTY types & on the key of 1, é on the key of 2, and AltGr is
        // Right Alt.
        QCOMPARE(setLayout(QStringLiteral("fr")), 0);
        superAnd(key::of(QLatin1Char('1')));
        QVERIFY2(desktop().waitForDesktop(0), qPrintable(velkor.log()));
        superAnd(key::of(QLatin1Char('2')));
        QVERIFY(desktop().waitForDesktop(1));
        superAnd(Keypad3);
        QVERIFY(desktop().waitForDesktop(2));

        superAnd(key::of(QLatin1Char('1')));
        QVERIFY(desktop().waitForDesktop(0));
        desktop().activate(alpha);
        QVERIFY(desktop().waitForActive(alpha));
        desktop().holding(key::SuperR, [&] {
            desktop().holding(key::AltR, [&] { desktop().tap(key::of(QLatin1Char('4'))); });
        });
        QVERIFY(desktop().waitFor([&] { return desktop().desktopOf(alpha) == 3u; }));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));

        // Right Alt as the activation key, which the German layout turns
        // into AltGr; that layout types z on the key where us has y.
        velkor.preferences()->setModifierKey(ModifierKey::rightOption);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        const auto underRightAlt = [&](int keycode) {
            desktop().holding(key::AltR, [&] { desktop().tap(keycode); });
        };
        QCOMPARE(setLayout(QStringLiteral("de")), 0);
        underRightAlt(key::of('y'));
        QVERIFY2(desktop().waitForActive(zeta), qPrintable(velkor.log()));
        underRightAlt(key::of('b'));
        QVERIFY(desktop().waitForActive(beta));
        QCOMPARE(setLayout(QStringLiteral("us")), 0);
        underRightAlt(key::of('y'));
        QVERIFY2(desktop().waitForActive(yankee), qPrintable(velkor.log()));
    }
};

QTEST_GUILESS_MAIN(KeyGrabTest)
#include "KeyGrabTest.moc"
