// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QtTest>
#include <memory>

using namespace velkor;
using namespace velkor::e2e;

// The keyboard side of velkor on a real desktop: what the grabs keep from
// the focused window and what they give back, the Super shortcuts, the
// double tap, and a keymap changed under a running program.
class KeyGrabTest : public DesktopTestCase
{
    Q_OBJECT

    inline static const QString Recorder = QStringLiteral("Recorder");

    bool activeBecomes(xcb_window_t window, int timeoutMs = 3000)
    {
        return desktop().waitFor([&] { return desktop().activeWindow() == window; }, timeoutMs);
    }

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
    void typedUnderTheKeyStaysOutOfTheFocusedTerminalWhilePassedKeysReachIt()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t recorder = desktop().launchRecorder(Recorder);
        QVERIFY(alpha && recorder);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(recorder);
        QVERIFY(activeBecomes(recorder));

        // q has no app (a search, swallowed); 0 and the comma mean nothing
        // to velkor and go on to the terminal.
        const int comma = 59;
        desktop().holding(key::SuperR, [&] {
            desktop().type(QStringLiteral("q0"));
            desktop().tap(comma);
        });
        desktop().type(QStringLiteral("s"));
        QVERIFY2(holdsExactly(QStringLiteral("0,s")), qPrintable(desktop().recorded(Recorder)));
        QCOMPARE(desktop().activeWindow(), recorder);

        // A letter that switches is kept too, and the next keys go where
        // the focus went.
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("a")); });
        QVERIFY(activeBecomes(alpha));
        desktop().activate(recorder);
        QVERIFY(activeBecomes(recorder));
        desktop().type(QStringLiteral("e"));
        QVERIFY2(holdsExactly(QStringLiteral("0,se")), qPrintable(desktop().recorded(Recorder)));

        // Shift already down when the key goes down changes nothing: the
        // letter still switches and stays out of the recorder.
        desktop().holding(key::ShiftL, [&] {
            desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("a")); });
        });
        QVERIFY(activeBecomes(alpha));
        desktop().activate(recorder);
        QVERIFY(activeBecomes(recorder));
        desktop().type(QStringLiteral("f"));
        QVERIFY2(holdsExactly(QStringLiteral("0,sef")), qPrintable(desktop().recorded(Recorder)));
    }

    void superTabOpensTheWindowSwitcherOnlyWhenAsked()
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
            QVERIFY(activeBecomes(recorder));
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
        QVERIFY2(activeBecomes(beta), qPrintable(velkor.log()));
        superTabs(2);
        QVERIFY2(activeBecomes(recorder), qPrintable(velkor.log()));
        desktop().type(QStringLiteral("e"));
        QVERIFY2(holdsExactly(QStringLiteral("\tse")), qPrintable(desktop().recorded(Recorder)));
    }

    void superGraveWalksEveryWindowOfTheFrontAppInABurst()
    {
        const xcb_window_t recorder = desktop().launchRecorder(Recorder);
        const xcb_window_t last =
            desktop().launch(QStringLiteral(VELKOR_MULTI_WINDOW_CLIENT),
                             {QStringLiteral("Burst"), QStringLiteral("name=one"),
                              QStringLiteral("name=two"), QStringLiteral("name=three")},
                             QStringLiteral("Burst"));
        QVERIFY(recorder && last);
        QList<xcb_window_t> burst; // front first
        QVERIFY(desktop().waitFor([&] {
            burst.clear();
            for (const xcb_window_t w : desktop().stackingFrontFirst()) {
                if (desktop().wmClass(w) == QLatin1String("Burst"))
                    burst << w;
            }
            return burst.size() == 3;
        }));
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(burst.at(0));
        QVERIFY(activeBecomes(burst.at(0)));

        // Each press within the burst raises a window not seen yet, in the
        // order the first press found them, and the fourth comes round.
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
        QVERIFY(activeBecomes(recorder));
        desktop().holding(key::SuperL, [&] { desktop().tap(key::Grave); });
        desktop().type(QStringLiteral("s"));
        QVERIFY2(holdsExactly(QStringLiteral("`s")), qPrintable(desktop().recorded(Recorder)));
    }

    void doubleTapOpensTheWindowSwitcherAndTypingFiltersIt()
    {
        const xcb_window_t groceries =
            desktop().launchTerminal(QStringLiteral("Notes"), QStringLiteral("groceries"));
        const xcb_window_t taxes =
            desktop().launchTerminal(QStringLiteral("Notes"), QStringLiteral("taxes"));
        const xcb_window_t build =
            desktop().launchTerminal(QStringLiteral("Build"), QStringLiteral("compiler"));
        QVERIFY(groceries && taxes && build);
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(build);
        QVERIFY(activeBecomes(build));

        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("tax")); });
        QVERIFY2(activeBecomes(taxes), qPrintable(velkor.log()));

        XDesktop::settle(500); // apart from the last press, so not a triple tap
        desktop().tap(key::SuperR);
        desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("gro")); });
        QVERIFY(activeBecomes(groceries));
    }

    void aNewKeymapMidRunKeepsTheActivationKeyWorking()
    {
        const xcb_window_t alpha = desktop().launchTerminal(QStringLiteral("Alpha"));
        const xcb_window_t zeta = desktop().launchTerminal(QStringLiteral("Zeta"));
        const xcb_window_t yankee = desktop().launchTerminal(QStringLiteral("Yankee"));
        QVERIFY(alpha && zeta && yankee);
        VelkorInstance velkor(desktop());
        // Right Alt, which the German layout turns into AltGr.
        velkor.preferences()->setModifierKey(ModifierKey::rightOption);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        desktop().activate(alpha);
        QVERIFY(activeBecomes(alpha));
        auto underRightAlt = [&](int keycode) {
            desktop().holding(key::AltR, [&] { desktop().tap(keycode); });
        };

        // The German layout types z on the key where us has y.
        QCOMPARE(setLayout(QStringLiteral("de")), 0);
        underRightAlt(key::of('y'));
        QVERIFY2(activeBecomes(zeta), qPrintable(velkor.log()));
        underRightAlt(key::of('a'));
        QVERIFY(activeBecomes(alpha));

        QCOMPARE(setLayout(QStringLiteral("us")), 0);
        underRightAlt(key::of('y'));
        QVERIFY2(activeBecomes(yankee), qPrintable(velkor.log()));
    }
};

QTEST_GUILESS_MAIN(KeyGrabTest)
#include "KeyGrabTest.moc"
