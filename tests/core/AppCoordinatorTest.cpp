// SPDX-License-Identifier: MIT
// Letter sessions driven end to end: key events into the monitor, requests
// out of the fake platform, choices into the usage history.
#include "CoordinatorHarness.h"
#include "platform/KeyCodes.h"

#include <QTest>

using namespace velkor;
using velkor::test::CoordinatorHarness;

namespace {

QString activated(Pid pid)
{
    return QStringLiteral("activate:%1").arg(pid);
}

QList<Pid> pidsOf(const QList<AppEntry>& apps)
{
    QList<Pid> pids;
    for (const AppEntry& app : apps)
        pids << app.pid.value_or(-1);
    return pids;
}

} // namespace

class AppCoordinatorTest : public QObject
{
    Q_OBJECT

private slots:
    void letterPressesSwitchAtOnceAndCycle();
    void switchOnReleaseCommitsTheLastChoiceOnce();
    void releaseCommitLooksTheLetterUpAgain();
    void sessionsWithoutALetterSwitch();
    void afterActivationSpacesAndPointer();
    void rowClicksAndHovers();
};

void AppCoordinatorTest::letterPressesSwitchAtOnceAndCycle()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addApp(11, "Slack", "com.tinyspeck.slackmacgap");
    h.addApp(12, "Spotify", "com.spotify.client");
    h.addApp(20, "Mail", "com.apple.mail");
    h.fake.workspace->frontmost = 10;
    h.boot();

    QCOMPARE(h.pressActivation(), KeyDecision::Pass);
    const QList<AppEntry> s = h.registry->letterMap().value("s");
    QCOMPARE(s.size(), 3);
    const QList<Pid> order = pidsOf(s);
    const int front = int(order.indexOf(10));

    // The first press skips the app already in front, later presses wrap.
    QList<Pid> chosen;
    for (int press = 1; press <= 4; ++press) {
        QCOMPARE(h.type('s'), KeyDecision::Swallow);
        chosen << order[(front + press) % 3];
        QCOMPARE(h.coordinator->cycleIndex(), (front + press) % 3);
    }
    QStringList expected;
    for (Pid pid : chosen)
        expected << activated(pid);
    QCOMPARE(h.activations(), expected);
    // Each press is recorded; the latest choice leads the letter's history.
    QCOMPARE(h.usage("s").first(), s[(front + 4) % 3].bundleId.value());
    QCOMPARE(h.usage("s").size(), 3);

    // The overlay rows are the letter's apps, badged, the choice selected.
    QCOMPARE(h.model().mode(), ModeSwitch);
    QCOMPARE(h.model().items().size(), 3);
    QCOMPARE(h.model().items()[0].badge, std::optional<QString>("s"));
    QCOMPARE(h.model().selection(), (front + 4) % 3);

    // Tab steps through the letter like the letter itself.
    h.clearLog();
    QCOMPARE(h.key(keys::Tab, "\t"), KeyDecision::Swallow);
    QCOMPARE(h.activations(), QStringList(activated(order[(front + 5) % 3])));

    // A quick release: nothing more is activated and the overlay never showed.
    h.clearLog();
    h.releaseActivation();
    QVERIFY(h.activations().isEmpty());
    QVERIFY(h.panel == nullptr || h.panel->fadeIns == 0);
    QVERIFY(!h.coordinator->overlay().hasPendingShow());

    // A letter with one app that is already in front activates it again.
    h.fake.workspace->frontmost = 20;
    h.advance(1);
    h.pressActivation();
    h.type('m');
    h.type('m');
    h.releaseActivation();
    QCOMPARE(h.activations(), QStringList({activated(20), activated(20)}));
    QCOMPARE(h.usage("m"), QStringList("com.apple.mail"));
}

void AppCoordinatorTest::switchOnReleaseCommitsTheLastChoiceOnce()
{
    CoordinatorHarness h;
    h.addApp(30, "Arc", "company.thebrowser.Browser");
    h.addApp(31, "Atom", "com.github.atom");
    h.addApp(32, "Anki", "net.ankiweb.dtop");
    h.addApp(40, "Xcode", "com.apple.dt.Xcode");
    h.fake.workspace->frontmost = 40;
    h.prefs->setSwitchOnRelease(true);
    h.boot();

    h.pressActivation();
    const QList<Pid> order = pidsOf(h.registry->letterMap().value("a"));
    h.type("aaa");
    QVERIFY(h.activations().isEmpty());
    QVERIFY(h.usage("a").isEmpty());
    QVERIFY(h.coordinator->pendingLetterCommit());
    // The panel shows at once so the user sees what release will choose.
    QVERIFY(h.panel && h.panel->visible);
    QCOMPARE(h.model().selection(), 2);
    h.releaseActivation();
    QCOMPARE(h.activations(), QStringList(activated(order[2])));
    QCOMPARE(h.usage("a").size(), 1);
    QVERIFY(!h.panel->visible);

    // A second, different letter turns the gesture into a search: the pending
    // choice is dropped, and release commits only a selected search row.
    h.clearLog();
    h.advance(1);
    h.pressActivation();
    h.type("ax");
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::search);
    QCOMPARE(h.coordinator->query(), QStringLiteral("ax"));
    QVERIFY(!h.coordinator->pendingLetterCommit());
    QVERIFY(h.model().items().isEmpty());
    h.releaseActivation();
    QVERIFY(h.activations().isEmpty());

    h.advance(1);
    h.pressActivation();
    h.type("ar");
    QCOMPARE(h.titles(), QStringList("Arc"));
    h.releaseActivation();
    QCOMPARE(h.activations(), QStringList(activated(30)));
}

void AppCoordinatorTest::releaseCommitLooksTheLetterUpAgain()
{
    CoordinatorHarness h;
    h.addApp(30, "Arc", "company.thebrowser.Browser");
    h.addApp(31, "Atom", "com.github.atom");
    h.addApp(32, "Anki", "net.ankiweb.dtop");
    h.prefs->setSwitchOnRelease(true);
    h.boot();

    // The app at the chosen position quits before release: whatever is now
    // at that position is chosen, not the remembered app.
    h.pressActivation();
    const QList<AppEntry> before = h.registry->letterMap().value("a");
    h.type("aa");
    QCOMPARE(h.coordinator->cycleIndex(), 1);
    h.fake.workspace->removeApp(*before[0].pid);
    h.registry->refreshRunning();
    const QList<AppEntry> after = h.registry->letterMap().value("a");
    QCOMPARE(after.size(), 2);
    h.releaseActivation();
    QCOMPARE(h.activations(), QStringList(activated(*after[1].pid)));

    // The list shrank below the chosen position: nothing, and the session ends.
    h.clearLog();
    h.fake.workspace->frontmost.reset();
    h.advance(1);
    h.pressActivation();
    h.type("aa");
    QCOMPARE(h.coordinator->cycleIndex(), 1);
    h.fake.workspace->removeApp(*after[0].pid);
    h.registry->refreshRunning();
    h.releaseActivation();
    QVERIFY(h.activations().isEmpty());
    QCOMPARE(h.coordinator->cycleLetter(), std::nullopt);
    QVERIFY(!h.coordinator->pendingLetterCommit());
}

void AppCoordinatorTest::sessionsWithoutALetterSwitch()
{
    CoordinatorHarness h;
    h.prefs->setOverlayDelay(0.25);
    h.boot();

    // An empty letter map: the first character starts a search, shown at once.
    h.pressActivation();
    QCOMPARE(h.type('q'), KeyDecision::Swallow);
    QCOMPARE(h.coordinator->mode(), AppCoordinator::Mode::search);
    QCOMPARE(h.model().mode(), ModeSearch);
    QCOMPARE(h.model().query(), QStringLiteral("q"));
    QVERIFY(h.panel && h.panel->visible);
    h.releaseActivation();
    QVERIFY(!h.panel->visible);

    // Holding without typing shows the panel after the delay; releasing
    // activates nothing and hides it.
    h.addApp(10, "Safari", "com.apple.Safari");
    h.advance(1);
    h.pressActivation();
    QCOMPARE(h.model().mode(), ModeSwitch);
    QVERIFY(h.model().items().isEmpty());
    h.advance(0.2);
    QVERIFY(!h.panel->visible);
    h.advance(0.1);
    QVERIFY(h.panel->visible);
    h.releaseActivation();
    QVERIFY(!h.panel->visible);
    QVERIFY(h.activations().isEmpty());

    // Escape cancels a pending choice; a press released before the delay
    // never shows the panel.
    h.prefs->setSwitchOnRelease(true);
    h.panel->fadeIns = 0;
    h.advance(1);
    h.pressActivation();
    h.type('s');
    QVERIFY(h.coordinator->pendingLetterCommit());
    h.key(keys::Escape, QStringLiteral("\x1b"));
    QVERIFY(!h.coordinator->pendingLetterCommit());
    h.releaseActivation();
    h.advance(1);
    QVERIFY(h.activations().isEmpty());
    QCOMPARE(h.panel->fadeIns, 1); // the pending choice's own show only
    QVERIFY(!h.panel->visible);
}

void AppCoordinatorTest::afterActivationSpacesAndPointer()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.fake.spaces->setSpaces(3, 1);
    h.fake.spaces->allWindows = {{501, 10, 0}, {502, 11, 0}, {503, 10, 3}};
    h.prefs->setSpaceMode(SpaceMode::gatherWindows);
    h.prefs->setMouseFollowsFocus(true);
    h.boot();

    h.pressActivation();
    h.type('s');
    // Every window of the app, on any layer, comes to the current Space.
    QCOMPARE(h.logged("moveWindows:"), QStringList("moveWindows:501,503:102"));
    // The pointer follows once the raise has taken effect, not before.
    h.advance(0.11);
    QVERIFY(h.logged("warp:").isEmpty());
    h.advance(0.02);
    QCOMPARE(h.logged("warp:"), QStringList("warp:1100,50"));
    h.releaseActivation();

    // The default Space mode leaves the platform to follow the app.
    h.clearLog();
    h.prefs->setSpaceMode(SpaceMode::followApp);
    h.pressActivation();
    h.type('s');
    QVERIFY(h.logged("moveWindows:").isEmpty());

    // A pointer move scheduled just before the coordinator goes away is
    // dropped, not run against freed memory.
    h.coordinator.reset();
    h.advance(1);
    QVERIFY(h.logged("warp:").isEmpty());
}

void AppCoordinatorTest::rowClicksAndHovers()
{
    CoordinatorHarness h;
    h.addApp(10, "Safari", "com.apple.Safari");
    h.addApp(11, "Slack", "com.tinyspeck.slackmacgap");
    h.fake.workspace->frontmost = 99;
    h.prefs->setSwitchOnRelease(true);
    h.boot();

    h.pressActivation();
    h.type('s');
    OverlayModel& model = h.model();
    QCOMPARE(model.items().size(), 2);

    // Rows that are not there: nothing happens and the session goes on.
    model.onActivate(2);
    model.onActivate(-1);
    model.onHover(7);
    QCOMPARE(model.selection(), 0);
    QVERIFY(h.coordinator->pendingLetterCommit());
    QVERIFY(h.activations().isEmpty());

    model.onHover(1);
    QCOMPARE(model.selection(), 1);
    model.onActivate(1);
    QCOMPARE(h.activations(), QStringList(activated(*model.items()[1].pid)));
    QVERIFY(!h.coordinator->pendingLetterCommit());
    QVERIFY(!h.panel->visible);
    // The key's release afterwards finds the session over.
    h.releaseActivation();
    QCOMPARE(h.activations().size(), 1);
}

QTEST_GUILESS_MAIN(AppCoordinatorTest)
#include "AppCoordinatorTest.moc"
