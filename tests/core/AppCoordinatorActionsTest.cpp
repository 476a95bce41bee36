// SPDX-License-Identifier: MIT
// Search, the window switcher, Command-Tab, same-app cycling, digits, Spaces
// and window actions, driven through the key monitor.
#include "CoordinatorHarness.h"
#include "platform/KeyCodes.h"

#include <QTest>

using namespace velkor;
using velkor::test::CoordinatorHarness;

namespace {

// The focus sequence of one window: raise, make its app frontmost, activate.
QStringList focused(const QString& windowKey, Pid pid)
{
    return {QStringLiteral("raise:%1").arg(windowKey), QStringLiteral("frontmost:%1").arg(pid),
            QStringLiteral("activate:%1").arg(pid)};
}

} // namespace

class AppCoordinatorActionsTest : public QObject
{
    Q_OBJECT

private slots:
    void searchOffersRunningThenInstalledApps();
    void searchRowsAreCappedAndPickedByDigit();
    void windowSwitcherListsFiltersAndCommits();
    void commandTabPreselectsTheSecondWindow();
    void commandGraveWalksABurstOfTheFrontApp();
    void digitsAndBracketsMeanSpaces();
    void windowActionsKeepTheSessionOpen();
};

void AppCoordinatorActionsTest::searchOffersRunningThenInstalledApps()
{
    CoordinatorHarness h;
    h.addApp(10, "Terminal", "com.apple.Terminal");
    h.addInstalled("Terminal", "com.apple.Terminal"); // running: offered once
    h.addInstalled("TextEdit", "com.apple.TextEdit");
    h.addInstalled("Tetris", "org.example.tetris"); // excluded
    h.addInstalled("Tex Tool", std::nullopt);       // no bundle id: kept
    h.prefs->setExcludedBundleIds({"org.example.tetris"});
    h.boot();

    h.pressActivation();
    h.type("te");
    QCOMPARE(h.model().mode(), ModeSearch);
    QCOMPARE(h.model().query(), QStringLiteral("te"));
    QStringList titles = h.titles();
    titles.sort();
    QCOMPARE(titles, QStringList({"Terminal", "Tex Tool", "TextEdit"}));
    for (qsizetype i = 0; i < h.model().items().size(); ++i) {
        const OverlayItem& item = h.model().items()[i];
        QCOMPARE(item.number, std::optional<qint64>(i + 1));
        QCOMPARE(item.subtitle.has_value(), item.pid.has_value());
        if (item.pid)
            QCOMPARE(*item.subtitle, QStringLiteral("Running"));
        else
            QCOMPARE(item.iconPath, std::optional(QStringLiteral("/apps/") + item.title));
    }

    // Committing a not-running row opens it by bundle id; one without a
    // bundle id is opened at its path.
    const auto rowOf = [&](const QString& title) { return int(h.titles().indexOf(title)); };
    h.model().onActivate(rowOf("TextEdit"));
    h.advance(1);
    h.pressActivation();
    h.type("te");
    h.model().onActivate(rowOf("Tex Tool"));
    QCOMPARE(h.logged("open:"), QStringList({"open:/apps/TextEdit", "open:/apps/Tex Tool"}));

    // Installed apps left out of search: running ones only.
    h.prefs->setSearchIncludesApps(false);
    h.advance(1);
    h.pressActivation();
    h.type("te");
    QCOMPARE(h.titles(), QStringList("Terminal"));
    // Return commits the selected row of a search (the "t" before it had
    // already switched to Terminal, the letter's only app).
    h.clearLog();
    QCOMPARE(h.key(keys::Return, "\r"), KeyDecision::Swallow);
    QCOMPARE(h.activations(), QStringList("activate:10"));
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::hint);
}

void AppCoordinatorActionsTest::searchRowsAreCappedAndPickedByDigit()
{
    CoordinatorHarness h;
    for (int i = 0; i < 12; ++i)
        h.addApp(100 + i, QStringLiteral("Zed %1").arg(QChar('a' + i)),
                 QStringLiteral("org.zed.%1").arg(i));
    h.fake.spaces->setSpaces(6, 0);
    h.boot();

    // "z" has apps, so the second letter makes it a search.
    h.pressActivation();
    h.type('z');
    h.clearLog();
    h.type('e');
    QCOMPARE(h.model().items().size(), 9);
    QCOMPARE(h.model().items().last().number, std::optional<qint64>(9));
    const OverlayItem third = h.model().items()[2];
    QCOMPARE(h.type('3'), KeyDecision::Swallow);
    QCOMPARE(h.activations(), QStringList(QStringLiteral("activate:%1").arg(*third.pid)));
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::hint);
    h.releaseActivation();

    // Digit 5 with three rows: the digit is not lost, it switches Space.
    h.advance(1);
    h.pressActivation();
    h.type("zeda");
    const qsizetype rows = h.model().items().size();
    QVERIFY(rows >= 1 && rows < 5);
    h.clearLog();
    h.type('5');
    QVERIFY(h.activations().isEmpty());
    QCOMPARE(h.logged("setSpace:"), QStringList("setSpace:Main:105"));
}

void AppCoordinatorActionsTest::windowSwitcherListsFiltersAndCommits()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addWindows(10, {"Inbox", "Docs", "Hidden"}, {false, false, true});
    h.addApp(20, "Notes", "com.apple.Notes");
    h.addWindows(20, {"", "Groceries"});
    h.boot();

    QCOMPARE(h.doubleTap(), KeyDecision::Pass);
    QVERIFY(h.coordinator->windowMode());
    QVERIFY(!h.coordinator->isCommandTab());
    QCOMPARE(h.model().mode(), ModeWindows);
    QVERIFY(h.panel && h.panel->visible);
    // Minimised windows are left out; an empty title shows the app's name.
    QCOMPARE(h.titles(), QStringList({"Inbox", "Docs", "Notes", "Groceries"}));
    const OverlayItem docs = h.model().items()[1];
    QCOMPARE(docs.subtitle, std::optional<QString>("Safari"));
    QCOMPARE(docs.iconPath, std::optional<QString>("/apps/Safari"));
    QCOMPARE(docs.number, std::optional<qint64>(2));

    // Tab and grave move the selection, wrapping at both ends.
    h.key(keys::Grave, "`");
    QCOMPARE(h.model().selection(), 3);
    h.key(keys::Tab, "\t");
    h.key(keys::Tab, "\t");
    QCOMPARE(h.model().selection(), 1);

    // Release commits the selected window.
    h.clearLog();
    h.releaseActivation();
    QCOMPARE(h.fake.log, focused("10w1", 10));
    QVERIFY(h.coordinator->currentWindows().isEmpty());

    // Typing filters by title and app name together: "notes" finds the
    // untitled Notes window and Groceries, which says "Notes" only in its app.
    h.advance(1);
    h.doubleTap();
    h.type("notes");
    QCOMPARE(h.model().query(), QStringLiteral("notes"));
    QCOMPARE(h.coordinator->currentWindows().size(), 2);
    for (const WindowEntry& w : h.coordinator->currentWindows())
        QCOMPARE(w.pid, 20);
    // A digit picks a listed window.
    const WindowEntry second = h.coordinator->currentWindows()[1];
    h.clearLog();
    h.type('2');
    QCOMPARE(h.fake.log, focused(fake::FakeWindowSystem::keyOf(second.element), 20));
    QVERIFY(!h.coordinator->windowMode());
}

void AppCoordinatorActionsTest::commandTabPreselectsTheSecondWindow()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addApp(20, "Notes", "com.apple.Notes");
    h.prefs->setReplaceCommandTab(true);
    h.boot();

    h.leftCommand(true);
    QCOMPARE(h.commandTab(), KeyDecision::Swallow);
    QVERIFY(h.coordinator->windowMode() && h.coordinator->isCommandTab());
    QCOMPARE(h.model().selection(), 1);
    h.commandTab();
    QCOMPARE(h.model().selection(), 0);
    h.commandTab();
    h.clearLog();
    h.leftCommand(false);
    QCOMPARE(h.fake.log, focused("20w0", 20));
    QVERIFY(!h.coordinator->windowMode());

    // With Shift it starts at the last window and walks back, wrapping.
    h.addApp(30, "Mail", "com.apple.Mail");
    h.leftShift(true);
    h.leftCommand(true);
    h.commandTab();
    QCOMPARE(h.model().items().size(), 3);
    QCOMPARE(h.model().selection(), 2);
    h.commandTab();
    h.commandTab();
    h.commandTab();
    QCOMPARE(h.model().selection(), 2);
    h.leftShift(false);
    h.commandTab();
    QCOMPARE(h.model().selection(), 0);
    h.leftCommand(false);
    h.fake.workspace->removeApp(30);

    // One window: nothing to pre-select, and the next press wraps to it.
    h.fake.workspace->removeApp(20);
    h.leftCommand(true);
    h.commandTab();
    QCOMPARE(h.model().items().size(), 1);
    QCOMPARE(h.model().selection(), 0);
    h.commandTab();
    QCOMPARE(h.model().selection(), 0);
    h.clearLog();
    h.leftCommand(false);
    QCOMPARE(h.fake.log, focused("10w0", 10));
}

void AppCoordinatorActionsTest::commandGraveWalksABurstOfTheFrontApp()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addWindows(10, {"A", "B", "C", "D"}, {false, false, false, true});
    h.fake.workspace->frontmost = 10;
    h.boot();

    h.leftCommand(true);
    QCOMPARE(h.commandGrave(), KeyDecision::Swallow);
    // The app reorders its windows as they come up; the burst keeps the
    // first listing's order, so every window is reached.
    h.addWindows(10, {"B", "A", "C"});
    h.advance(1.0);
    h.commandGrave();
    h.advance(1.0);
    h.commandGrave();
    QCOMPARE(h.logged("raise:"), QStringList({"raise:10w1", "raise:10w2", "raise:10w0"}));
    QCOMPARE(h.logged("activate:").size(), 3);
    QCOMPARE(h.coordinator->sameAppIdx(), 0);

    // 1.3 s of quiet ends the burst: the new order is listed and its second
    // window raised.
    h.clearLog();
    h.advance(1.3);
    h.commandGrave();
    QCOMPARE(h.logged("raise:"), QStringList("raise:10w1"));
    QCOMPARE(h.coordinator->sameAppWindows().first().title, QStringLiteral("B"));

    // Shift walks the burst back.
    h.leftShift(true);
    h.commandGrave();
    h.leftShift(false);
    QCOMPARE(h.logged("raise:"), QStringList({"raise:10w1", "raise:10w0"}));

    // Another app in front invalidates the cache at once.
    h.addApp(20, "Notes", "com.apple.Notes");
    h.addWindows(20, {"N1", "N2"});
    h.fake.workspace->frontmost = 20;
    h.clearLog();
    h.commandGrave();
    QCOMPARE(h.logged("raise:"), QStringList("raise:20w1"));

    // A single window: nothing to cycle, the key goes to the app, cache cleared.
    h.addWindows(20, {"N1"});
    h.advance(2);
    QCOMPARE(h.commandGrave(), KeyDecision::Pass);
    QVERIFY(h.coordinator->sameAppWindows().isEmpty());
}

void AppCoordinatorActionsTest::digitsAndBracketsMeanSpaces()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.fake.workspace->frontmost = 10;
    h.fake.spaces->setSpaces(4, 3);
    h.fake.spaces->onScreenWindows = {{700, 10, 25}, {701, 10, 0}};
    h.boot();

    // ] on the last Space: nothing switches, and the session ends.
    h.pressActivation();
    h.type('s');
    QCOMPARE(h.key(keys::RightBracket, "]"), KeyDecision::Swallow);
    QVERIFY(h.logged("setSpace:").isEmpty() && h.logged("controlKey:").isEmpty());
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::hint);
    QVERIFY(h.coordinator->cycleLetter() == std::nullopt);
    h.releaseActivation();

    h.advance(1);
    h.pressActivation();
    h.key(keys::LeftBracket, "[");
    QCOMPARE(h.logged("setSpace:"), QStringList("setSpace:Main:103"));
    h.releaseActivation();

    // In letter mode a digit always means a Space; with Right Option the
    // frontmost window goes there too.
    h.clearLog();
    h.fake.spaces->setSpaces(4, 0);
    h.advance(1);
    h.pressActivation();
    h.type('s');
    h.type('2');
    QCOMPARE(h.logged("setSpace:"), QStringList("setSpace:Main:102"));
    h.rightOption(true);
    h.type('4');
    QCOMPARE(h.logged("moveWindows:"), QStringList("moveWindows:701:104"));
    QVERIFY(h.coordinator->secondaryDown());
    h.releaseActivation();
    h.rightOption(false);
    QVERIFY(!h.coordinator->secondaryDown());

    // Without any Spaces information the brackets end the session quietly.
    h.clearLog();
    h.fake.spaces->layout.reset();
    h.advance(1);
    h.pressActivation();
    h.key(keys::RightBracket, "]");
    h.key(keys::LeftBracket, "[");
    QVERIFY(h.logged("setSpace:").isEmpty() && h.logged("controlKey:").isEmpty());
}

void AppCoordinatorActionsTest::windowActionsKeepTheSessionOpen()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addWindows(10, {"Min", "Inbox", "Docs"}, {true, false, false});
    h.addApp(20, "Notes", "com.apple.Notes");
    h.addInstalled("Sketch", "com.bohemian.sketch");
    h.fake.workspace->frontmost = 20;
    h.boot();
    // W, Q or H typed with Left Command held as well.
    const auto withCommand = [&](qint64 code, const char* characters) {
        h.flags |= keys::LeftCommandBit;
        const KeyDecision decision = h.key(code, QString::fromLatin1(characters));
        h.flags &= ~keys::LeftCommandBit;
        return decision;
    };

    // In the window switcher the selected row's app is the target; the
    // first window that is not minimised closes.
    h.doubleTap();
    QCOMPARE(h.model().items()[0].pid, std::optional<Pid>(10));
    QCOMPARE(withCommand(keys::W, "w"), KeyDecision::Swallow);
    QCOMPARE(h.logged("close:"), QStringList("close:10w1"));
    QCOMPARE(h.model().mode(), ModeWindows);
    withCommand(keys::Q, "q");
    QCOMPARE(h.logged("terminate:"), QStringList("terminate:10"));
    h.releaseActivation();

    // No rows: the frontmost app is the target.
    h.clearLog();
    h.fake.workspace->frontmost = 20;
    h.advance(1);
    h.pressActivation();
    withCommand(keys::H, "h");
    QCOMPARE(h.logged("hide:"), QStringList("hide:20"));
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::hint);

    // The selected row is an app that is not running: nothing to act on.
    h.type("sk");
    QCOMPARE(h.titles(), QStringList("Sketch"));
    h.clearLog();
    withCommand(keys::Q, "q");
    withCommand(keys::W, "w");
    QVERIFY(h.fake.log.isEmpty());
    QCOMPARE(h.coordinator->query(), QStringLiteral("sk"));

    // No rows and no frontmost app: nothing either.
    h.releaseActivation();
    h.fake.workspace->frontmost.reset();
    h.advance(1);
    h.pressActivation();
    withCommand(keys::Q, "q");
    QVERIFY(h.logged("terminate:").isEmpty());
}

QTEST_GUILESS_MAIN(AppCoordinatorActionsTest)
#include "AppCoordinatorActionsTest.moc"
