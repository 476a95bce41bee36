// SPDX-License-Identifier: MIT
// Random key streams through monitor and coordinator while apps and windows
// come and go and the overlay is clicked, checking what must always hold.
// Reproduce a failure with VELKOR_FUZZ_SEED=<printed seed>.
#include "CoordinatorHarness.h"
#include "platform/KeyCodes.h"

#include <QRandomGenerator>
#include <QTest>
#include <random>

using namespace velkor;
using velkor::test::CoordinatorHarness;

namespace {

constexpr int MinKeyEvents = 100000;

const QList<qint64> ModifierCodes = {54, 55, 56, 58, 59, 60, 61, 62};
const QList<qint64> ActionCodes = {53, 36, 48, 50, 13, 12, 4, 33, 30};
const QList<quint64> FlagBits = {0x1,  0x2,    0x4,     0x8,     0x10,    0x20,
                                 0x40, 0x2000, 0x20000, 0x40000, 0x80000, 0x100000};
const QStringList Characters = {"a", "s", "S",  "t", "m", "x", "z",  "1", "2",   "5", "9",
                                "0", ",", "\t", "`", "[", "]", "",   "É", "é",   "٥", "ß",
                                "𐐀", "w", "q",  "h", "e", "o", "ar", " ", "\x1b"};
const QStringList AppNames = {"Safari", "Slack", "Spotify",  "Arc",    "Atom",
                              "Mail",   "Xcode", "Zed",      "Études", "Terminal",
                              "Tetris", "Notes", "1Password"};

// The device-independent mask of a modifier's key code.
quint64 maskOf(qint64 code)
{
    switch (code) {
    case 54:
    case 55:
        return keys::CommandMask;
    case 58:
    case 61:
        return keys::OptionMask;
    case 59:
    case 62:
        return keys::ControlMask;
    default:
        return keys::ShiftMask;
    }
}

quint64 bitOf(qint64 code)
{
    switch (code) {
    case 54:
        return keys::RightCommandBit;
    case 55:
        return keys::LeftCommandBit;
    case 56:
        return keys::LeftShiftBit;
    case 58:
        return keys::LeftOptionBit;
    case 59:
        return keys::LeftControlBit;
    case 60:
        return keys::RightShiftBit;
    case 61:
        return keys::RightOptionBit;
    default:
        return keys::RightControlBit;
    }
}

// What an out-of-range click must leave exactly as it was.
struct Snapshot
{
    AppCoordinator::Mode mode;
    QString query;
    std::optional<QString> cycleLetter;
    int cycleIndex;
    bool pending;
    bool windowMode;
    bool isCommandTab;
    qsizetype windows;
    int selection;
    qsizetype items;
    qsizetype logSize;
    bool pendingShow;

    bool operator==(const Snapshot&) const = default;
};

Snapshot snapshot(CoordinatorHarness& h)
{
    const AppCoordinator& c = *h.coordinator;
    return {c.mode(),
            c.query(),
            c.cycleLetter(),
            c.cycleIndex(),
            c.pendingLetterCommit(),
            c.windowMode(),
            c.isCommandTab(),
            c.currentWindows().size(),
            h.model().selection(),
            h.model().items().size(),
            h.fake.log.size(),
            c.overlay().hasPendingShow()};
}

} // namespace

class CoordinatorFuzzTest : public QObject
{
    Q_OBJECT

private slots:
    void randomStreamsKeepTheInvariants();

private:
    void step();
    void sendKeyEvent();
    void changeTheWorld();
    void clickTheOverlay();
    void changeASetting();
    void checkInvariants();

    std::mt19937_64 m_rng;
    std::unique_ptr<CoordinatorHarness> m_h;
    quint64 m_held = 0; // modifier bits the simulated keyboard holds
    int m_keyEvents = 0;
    int m_clicks = 0;
    int m_sessions = 0;
    Pid m_nextPid = 100;

    quint64 pick(quint64 n) { return n == 0 ? 0 : m_rng() % n; }
    bool chance(int percent) { return int(pick(100)) < percent; }
};

void CoordinatorFuzzTest::randomStreamsKeepTheInvariants()
{
    quint64 seed = QRandomGenerator::system()->generate64();
    bool fromEnv = false;
    const quint64 envSeed = qEnvironmentVariable("VELKOR_FUZZ_SEED").toULongLong(&fromEnv);
    if (fromEnv)
        seed = envSeed;
    qInfo("fuzz seed %llu (set VELKOR_FUZZ_SEED=%llu to replay)", seed, seed);
    m_rng.seed(seed);

    m_h = std::make_unique<CoordinatorHarness>();
    for (int i = 0; i < 8; ++i) {
        const QString name = AppNames[int(pick(AppNames.size()))];
        m_h->addApp(m_nextPid++, name, "org.fuzz." + name.toLower() + QString::number(i));
    }
    m_h->addInstalled("Tetris", "org.fuzz.installed.tetris");
    m_h->addInstalled("Studio", std::nullopt);
    m_h->addInstalled("Mail", "org.fuzz.mail0");
    m_h->fake.spaces->setSpaces(4, 1);
    m_h->boot();

    while (m_keyEvents < MinKeyEvents) {
        step();
        checkInvariants();
        if (QTest::currentTestFailed()) {
            qWarning("failed after %d key events with seed %llu", m_keyEvents, seed);
            return;
        }
        if (m_h->fake.log.size() > 10000)
            m_h->clearLog();
    }
    qInfo("%d key events, %d overlay clicks, %d sessions", m_keyEvents, m_clicks, m_sessions);
    QVERIFY(m_sessions > 100);
    m_h.reset();
}

void CoordinatorFuzzTest::step()
{
    const int roll = int(pick(100));
    if (roll < 80)
        sendKeyEvent();
    else if (roll < 88)
        changeTheWorld();
    else if (roll < 96)
        clickTheOverlay();
    else if (roll < 98)
        changeASetting();
    else
        m_h->advance(double(pick(2000)) / 1000.0); // a pause, running due tasks
}

void CoordinatorFuzzTest::sendKeyEvent()
{
    KeyEvent event;
    event.timestamp = m_h->fake.clock->now();
    const int kind = int(pick(100));
    if (kind < 2) {
        event.type =
            kind == 0 ? KeyEventType::TapDisabledByTimeout : KeyEventType::TapDisabledByUserInput;
    } else if (kind < 35) {
        // A modifier goes down or up; mostly the activation key and Command.
        event.type = KeyEventType::FlagsChanged;
        event.keyCode = chance(50) ? KeyMonitor::activationKeyCode(m_h->prefs->modifierKey())
                                   : ModifierCodes[int(pick(ModifierCodes.size()))];
        m_held ^= bitOf(event.keyCode);
        quint64 masks = 0;
        for (qint64 code : ModifierCodes) {
            if (m_held & bitOf(code))
                masks |= maskOf(code);
        }
        event.flags = m_held | masks;
    } else {
        event.type = chance(60) ? KeyEventType::KeyDown : KeyEventType::KeyUp;
        const int which = int(pick(100));
        if (which < 45) {
            event.characters = QString(QChar('a' + int(pick(26))));
            event.keyCode = test::usKeyCode(event.characters.at(0));
        } else if (which < 60) {
            event.characters = QString::number(pick(10));
            event.keyCode = test::usKeyCode(event.characters.at(0));
        } else if (which < 85) {
            event.keyCode = ActionCodes[int(pick(ActionCodes.size()))];
            event.characters = Characters[int(pick(Characters.size()))];
        } else {
            event.keyCode = qint64(pick(128));
            event.characters = Characters[int(pick(Characters.size()))];
        }
        event.flags = m_held;
        for (qint64 code : ModifierCodes) {
            if (m_held & bitOf(code))
                event.flags |= maskOf(code);
        }
        // Now and then a flag word that disagrees with what was seen: a
        // release the platform never reported.
        if (chance(4))
            event.flags = FlagBits[int(pick(FlagBits.size()))] | (chance(50) ? 0x100000 : 0);
    }
    if (chance(10))
        m_h->advance(double(pick(400)) / 1000.0);
    event.timestamp = chance(97) ? m_h->fake.clock->now() : double(pick(3000));

    const bool wasHeld = m_h->coordinator->keyMonitor().primaryHeld();
    const KeyDecision decision = m_h->fake.keys->send(event);
    ++m_keyEvents;
    if (!wasHeld && m_h->coordinator->keyMonitor().primaryHeld())
        ++m_sessions;
    // Modifier changes and key ups are never swallowed.
    if (event.type != KeyEventType::KeyDown)
        QCOMPARE(decision, KeyDecision::Pass);
}

void CoordinatorFuzzTest::changeTheWorld()
{
    fake::FakeWorkspace& ws = *m_h->fake.workspace;
    const int what = int(pick(6));
    if (what == 0 && ws.apps.size() < 14) {
        const QString name = AppNames[int(pick(AppNames.size()))];
        const Pid pid = m_nextPid++;
        if (chance(80))
            m_h->addApp(pid, name, "org.fuzz." + name.toLower());
        else
            ws.addApp(pid, name, std::nullopt).regular = chance(50);
        emit ws.applicationLaunched();
    } else if (what == 1 && !ws.apps.isEmpty()) {
        const Pid pid = ws.apps[int(pick(ws.apps.size()))].pid;
        ws.removeApp(pid);
        if (chance(50))
            m_h->fake.windows->windows.remove(pid);
        emit ws.applicationTerminated();
    } else if (what == 2 && !ws.apps.isEmpty()) {
        const Pid pid = ws.apps[int(pick(ws.apps.size()))].pid;
        QStringList titles;
        QList<bool> minimized;
        for (quint64 i = 0, n = pick(5); i < n; ++i) {
            titles << (chance(20) ? QString() : QStringLiteral("Window %1").arg(i));
            minimized << chance(25);
        }
        m_h->addWindows(pid, titles, minimized);
    } else if (what == 3) {
        const int choice = int(pick(ws.apps.size() + 2));
        if (choice < ws.apps.size())
            ws.frontmost = ws.apps[choice].pid;
        else if (choice == ws.apps.size())
            ws.frontmost.reset();
        else
            ws.frontmost = 99999; // a process that is not an app
    } else if (what == 4) {
        if (chance(20))
            m_h->fake.spaces->layout.reset();
        else
            m_h->fake.spaces->setSpaces(int(pick(7)), int(pick(7)));
        m_h->fake.spaces->onScreenWindows.clear();
        m_h->fake.spaces->allWindows.clear();
        for (const RunningApp& app : ws.apps) {
            m_h->fake.spaces->onScreenWindows.append({quint32(app.pid * 10), app.pid, 0});
            m_h->fake.spaces->allWindows.append({quint32(app.pid * 10 + 1), app.pid, 0});
        }
    } else {
        m_h->registry->refreshRunning();
    }
}

void CoordinatorFuzzTest::clickTheOverlay()
{
    OverlayModel& model = m_h->model();
    const int count = int(model.items().size());
    const int index = int(pick(count + 7)) - 3;
    const bool inRange = index >= 0 && index < count;
    const Snapshot before = snapshot(*m_h);
    ++m_clicks;
    if (chance(50))
        model.onHover(index);
    else
        model.onActivate(index);
    if (!inRange)
        QCOMPARE(snapshot(*m_h), before);
}

void CoordinatorFuzzTest::changeASetting()
{
    Preferences& p = *m_h->prefs;
    switch (pick(9)) {
    case 0:
        p.setSwitchOnRelease(!p.switchOnRelease());
        break;
    case 1:
        p.setReplaceCommandTab(!p.replaceCommandTab());
        break;
    case 2:
        p.setCmdBacktickCycle(!p.cmdBacktickCycle());
        break;
    case 3:
        p.setSearchIncludesApps(!p.searchIncludesApps());
        break;
    case 4:
        p.setSpaceMode(p.spaceMode() == SpaceMode::followApp ? SpaceMode::gatherWindows
                                                             : SpaceMode::followApp);
        break;
    case 5:
        p.setMouseFollowsFocus(!p.mouseFollowsFocus());
        break;
    case 6:
        p.setOverlayEnabled(!p.overlayEnabled());
        break;
    case 7:
        p.setExcludedBundleIds(chance(50) ? QStringList{"org.fuzz.safari", "org.fuzz.arc"}
                                          : QStringList{});
        break;
    default:
        // Rarely: a different activation key, even while the old one is down.
        if (chance(30))
            p.setModifierKey(allModifierKeys()[int(pick(6))]);
        break;
    }
}

void CoordinatorFuzzTest::checkInvariants()
{
    const AppCoordinator& c = *m_h->coordinator;
    const KeyMonitor& monitor = m_h->coordinator->keyMonitor();
    const OverlayModel& model = m_h->model();

    // The selection always points at a row, or is 0 with no rows.
    if (model.items().isEmpty())
        QCOMPARE(model.selection(), 0);
    else
        QVERIFY(model.selection() >= 0 && model.selection() < model.items().size());

    if (monitor.primaryHeld())
        return;
    // Outside a session (a Command-Tab switcher may still be open) nothing of
    // a session is left, and no delayed show is waiting to pop up.
    QCOMPARE(c.mode(), AppCoordinator::Mode::hint);
    QVERIFY(c.query().isEmpty());
    QCOMPARE(c.cycleLetter(), std::nullopt);
    QCOMPARE(c.cycleIndex(), 0);
    QVERIFY(!c.pendingLetterCommit());
    QVERIFY(!c.overlay().hasPendingShow());
    if (c.windowMode()) {
        QVERIFY(monitor.commandTabActive());
        QVERIFY(c.isCommandTab());
    } else {
        QVERIFY(!c.isCommandTab());
        QVERIFY(c.currentWindows().isEmpty());
    }
}

QTEST_GUILESS_MAIN(CoordinatorFuzzTest)
#include "CoordinatorFuzzTest.moc"
