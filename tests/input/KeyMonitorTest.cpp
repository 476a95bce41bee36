// SPDX-License-Identifier: MIT
#include "input/KeyMonitor.h"

#include "fakes/FakePlatform.h"
#include "platform/KeyCodes.h"
#include "settings/Preferences.h"

#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

using namespace velkor;
namespace keys = velkor::keys;

namespace {

// Records every handler call as one line and answers with a preset result.
class RecordingHandler final : public KeyMonitorHandler
{
public:
    void beginSession() override { calls << "begin"; }
    void commitAndEnd() override { calls << "commitAndEnd"; }
    void endSession() override { calls << "end"; }
    void enterWindowMode() override { calls << "windowMode"; }
    bool handleCharacter(const QString& ch) override { return record("char:" + ch); }
    bool handleDigit(int n) override { return record(QStringLiteral("digit:%1").arg(n)); }
    bool handleAction(KeyAction action) override { return record(actionCall(action)); }
    bool commandTabPressed(bool backwards) override
    {
        return record(backwards ? "commandTab:back" : "commandTab");
    }
    bool cycleSameAppWindows(bool backwards) override
    {
        return record(backwards ? "cycleSameApp:back" : "cycleSameApp");
    }
    void commandTabReleased() override { calls << "commandTabReleased"; }
    void setSecondaryDown(bool down) override { calls << QStringLiteral("secondary:%1").arg(down); }

    QStringList take() { return std::exchange(calls, {}); }
    static QString actionCall(KeyAction action)
    {
        return QStringLiteral("action:%1").arg(int(action));
    }

    QStringList calls;
    bool consume = true;

private:
    bool record(const QString& call)
    {
        calls << call;
        return consume;
    }
};

QString actionCall(KeyAction action)
{
    return RecordingHandler::actionCall(action);
}

KeyEvent flags(qint64 code, quint64 flagWord, double at)
{
    return KeyEvent{KeyEventType::FlagsChanged, code, flagWord, QString(), at};
}

KeyEvent down(qint64 code, const QString& chars, quint64 flagWord,
              KeyEventType type = KeyEventType::KeyDown)
{
    return KeyEvent{type, code, flagWord, chars, 0};
}

KeyEvent up(qint64 code, const QString& chars, quint64 flagWord)
{
    return down(code, chars, flagWord, KeyEventType::KeyUp);
}

constexpr quint64 RightCmd = keys::RightCommandBit | keys::CommandMask;
constexpr quint64 LeftCmd = keys::LeftCommandBit | keys::CommandMask;

} // namespace

class KeyMonitorTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Preferences> makePrefs()
    {
        return std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(QStringLiteral("prefs-%1.ini").arg(++m_stores)), QSettings::IniFormat));
    }

    QTemporaryDir m_dir;
    int m_stores = 0;
    // Fresh settings and a monitor without a key source, per test.
    std::unique_ptr<Preferences> prefs;
    std::unique_ptr<KeyMonitor> monitor;
    RecordingHandler handler;

private slots:
    void init()
    {
        prefs = makePrefs();
        monitor = std::make_unique<KeyMonitor>(*prefs, nullptr);
        handler.calls.clear();
        handler.consume = true;
        monitor->setHandler(&handler);
    }
    void cleanup()
    {
        monitor.reset();
        prefs.reset();
    }

    void activationKeyTableAndDoubleTap_data();
    void activationKeyTableAndDoubleTap();
    void keysWhileHeldAreClassified();
    void actionKeysFollowThePhysicalKey();
    void commandShortcutsOutsideSessions();
    void digitsByPositionAndShiftWalksBack();
    void secondaryModifierAndMissedRelease();
    void keysPostedBySelfPassUntouched();
    void sourceInstallWatchAndRecovery();
};

void KeyMonitorTest::activationKeyTableAndDoubleTap_data()
{
    QTest::addColumn<ModifierKey>("key");
    QTest::addColumn<qint64>("code");
    QTest::addColumn<quint64>("bit");
    QTest::newRow("rightCommand") << ModifierKey::rightCommand << qint64(54) << quint64(0x10);
    QTest::newRow("rightOption") << ModifierKey::rightOption << qint64(61) << quint64(0x40);
    QTest::newRow("rightControl") << ModifierKey::rightControl << qint64(62) << quint64(0x2000);
    QTest::newRow("leftCommand") << ModifierKey::leftCommand << qint64(55) << quint64(0x8);
    QTest::newRow("leftOption") << ModifierKey::leftOption << qint64(58) << quint64(0x20);
    QTest::newRow("leftControl") << ModifierKey::leftControl << qint64(59) << quint64(0x1);
}

void KeyMonitorTest::activationKeyTableAndDoubleTap()
{
    QFETCH(ModifierKey, key);
    QFETCH(qint64, code);
    QFETCH(quint64, bit);
    auto prefs = makePrefs();
    prefs->setModifierKey(key);
    monitor = std::make_unique<KeyMonitor>(*prefs, nullptr); // reads the key when made
    monitor->setHandler(&handler);

    // Another key's bit alone, or this key's code without its bit, is no press.
    const qint64 otherCode = code == 54 ? 55 : 54;
    QCOMPARE(monitor->handle(flags(otherCode, bit, 10.0)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(flags(code, 0x100000 | 0x80000 | 0x40000, 10.0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList());

    // The first press after launch is never a double tap; a repeated flag
    // change of the same state is ignored; release commits once.
    QCOMPARE(monitor->handle(flags(code, bit, 16.0)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(flags(code, bit, 16.0625)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"begin"}));
    monitor->handle(flags(code, 0, 16.125));
    monitor->handle(flags(code, 0, 16.1875));
    QCOMPARE(handler.take(), QStringList({"commitAndEnd"}));

    // Measured press to press: 0.25 s after the first press is a double tap.
    monitor->handle(flags(code, bit, 16.25));
    QCOMPARE(handler.take(), QStringList({"begin", "windowMode"}));
    monitor->handle(flags(code, 0, 16.5));
    // 0.5 s after the last press is a plain press, and so is 0.375 s.
    monitor->handle(flags(code, bit, 16.75));
    monitor->handle(flags(code, 0, 16.875));
    monitor->handle(flags(code, bit, 17.125));
    QCOMPARE(handler.take(), QStringList({"commitAndEnd", "begin", "commitAndEnd", "begin"}));
    QCOMPARE(monitor->lastPrimaryDownAt(), 17.125);
    QVERIFY(monitor->primaryHeld());
}

void KeyMonitorTest::keysWhileHeldAreClassified()
{

    // Nothing is classified before the activation key is down.
    QCOMPARE(monitor->handle(down(1, "s", 0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList());

    monitor->handle(flags(keys::RightCommand, RightCmd, 1.0));
    handler.take();

    QCOMPARE(monitor->handle(down(1, "S", RightCmd)), KeyDecision::Swallow);
    QCOMPARE(monitor->handle(up(1, "s", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(23, "5", RightCmd)), KeyDecision::Swallow);
    QCOMPARE(monitor->handle(down(29, "0", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(43, ",", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(96, QString(), RightCmd)), KeyDecision::Pass);
    // Other scripts: letters are lower-cased in full; their digits typed
    // away from the digit keys are not Spaces.
    QCOMPARE(monitor->handle(down(14, QStringLiteral("É"), RightCmd)), KeyDecision::Swallow);
    QCOMPARE(monitor->handle(down(10, QStringLiteral("٥"), RightCmd)), KeyDecision::Pass);
    // A letter outside the Basic Multilingual Plane is one character.
    QCOMPARE(monitor->handle(down(0, QStringLiteral("𐐀x"), RightCmd)), KeyDecision::Swallow);
    QCOMPARE(handler.take(), QStringList({"char:s", "digit:5", QStringLiteral("char:é"),
                                          QStringLiteral("char:𐐨")}));

    // A handler that does not consume lets the key through.
    handler.consume = false;
    QCOMPARE(monitor->handle(down(1, "s", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(18, "1", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(keys::Escape, QString(), RightCmd)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"char:s", "digit:1", actionCall(KeyAction::cancel)}));

    // Once the handler is gone every key passes untouched.
    handler.consume = true;
    monitor->setHandler(nullptr);
    QCOMPARE(monitor->handle(down(1, "s", RightCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(flags(keys::RightCommand, 0, 2.0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList());
}

void KeyMonitorTest::actionKeysFollowThePhysicalKey()
{
    monitor->handle(flags(keys::RightCommand, RightCmd, 1.0));
    handler.take();

    // Characters do not matter for action keys: a layout that types "ü" on
    // the [ key still steps to the previous Space.
    const QList<std::pair<qint64, KeyAction>> plain = {
        {53, KeyAction::cancel},   {36, KeyAction::commit},        {48, KeyAction::next},
        {50, KeyAction::previous}, {33, KeyAction::previousSpace}, {30, KeyAction::nextSpace},
    };
    for (const auto& [code, expected] : plain) {
        QCOMPARE(monitor->handle(down(code, QStringLiteral("ü"), RightCmd)), KeyDecision::Swallow);
        QCOMPARE(handler.take(), QStringList(actionCall(expected)));
    }

    // W, Q and H are window actions only with Left Command held as well
    // (the coordinator's tests press them so); alone they are letters.
    monitor->handle(down(keys::W, "w", RightCmd));
    monitor->handle(down(keys::Q, "q", RightCmd));
    QCOMPARE(handler.take(), QStringList({"char:w", "char:q"}));
}

void KeyMonitorTest::commandShortcutsOutsideSessions()
{

    // Off: Command-Tab belongs to the system.
    prefs->setReplaceCommandTab(false);
    QCOMPARE(monitor->handle(down(keys::Tab, "\t", LeftCmd)), KeyDecision::Pass);
    QVERIFY(!monitor->commandTabActive());
    QCOMPARE(handler.take(), QStringList());

    prefs->setReplaceCommandTab(true);
    QCOMPARE(monitor->handle(down(keys::Tab, "\t", LeftCmd)), KeyDecision::Swallow);
    // Tab without Command, and the key up, are ordinary keys.
    QCOMPARE(monitor->handle(up(keys::Tab, "\t", LeftCmd)), KeyDecision::Pass);
    QCOMPARE(monitor->handle(down(keys::Tab, "\t", 0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"commandTab"}));

    // Only Left Command's release ends it, and only once Command is fully up.
    monitor->handle(flags(keys::RightCommand, 0, 1.0));
    monitor->handle(flags(keys::LeftCommand, keys::RightCommandBit | keys::CommandMask, 1.0));
    QCOMPARE(handler.take(), QStringList());
    monitor->handle(flags(keys::LeftCommand, 0, 1.1));
    monitor->handle(flags(keys::LeftCommand, 0, 1.2));
    QCOMPARE(handler.take(), QStringList({"commandTabReleased"}));
    QVERIFY(!monitor->commandTabActive());

    // Command-grave: the setting gates it.
    QCOMPARE(monitor->handle(down(keys::Grave, "`", LeftCmd)), KeyDecision::Swallow);
    prefs->setCmdBacktickCycle(false);
    QCOMPARE(monitor->handle(down(keys::Grave, "`", LeftCmd)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"cycleSameApp"}));

    // With the activation key held, Command-Tab is the next action instead.
    monitor->handle(flags(keys::RightCommand, RightCmd, 2.0));
    handler.take();
    QCOMPARE(monitor->handle(down(keys::Tab, "\t", RightCmd)), KeyDecision::Swallow);
    QCOMPARE(handler.take(), QStringList(actionCall(KeyAction::next)));
    QVERIFY(!monitor->commandTabActive());
}

void KeyMonitorTest::digitsByPositionAndShiftWalksBack()
{
    monitor->handle(flags(keys::RightCommand, RightCmd, 1.0));
    handler.take();

    // AZERTY types "é", "\"" and "ç" on the digit row, the keypad types
    // nothing without Num Lock: the keys still mean 2, 3, 9 and 4. The key
    // of 0 and a letter elsewhere stay what they type.
    const quint64 shift = keys::LeftShiftBit | keys::ShiftMask;
    QCOMPARE(monitor->handle(down(19, QStringLiteral("é"), RightCmd)), KeyDecision::Swallow);
    monitor->handle(down(20, QStringLiteral("\""), RightCmd | shift));
    monitor->handle(down(25, QStringLiteral("ç"), RightCmd));
    QCOMPARE(monitor->handle(down(86, QString(), RightCmd)), KeyDecision::Swallow);
    monitor->handle(down(29, QStringLiteral("à"), RightCmd));
    QCOMPARE(handler.take(),
             QStringList({"digit:2", "digit:3", "digit:9", "digit:4", QStringLiteral("char:à")}));
    // Right Alt (AltGr there) with a digit key: the same digit, with the
    // secondary modifier down.
    monitor->handle(flags(keys::RightOption, RightCmd | keys::RightOptionBit, 1.5));
    monitor->handle(down(19, QStringLiteral("é"), RightCmd | keys::RightOptionBit));
    QCOMPARE(handler.take(), QStringList({"secondary:1", "digit:2"}));

    // Shift+Tab steps back within a session; grave stays "previous".
    monitor->handle(down(keys::Tab, "\t", RightCmd | keys::RightOptionBit | shift));
    monitor->handle(down(keys::Grave, "`", RightCmd | keys::RightOptionBit | shift));
    QCOMPARE(handler.take(),
             QStringList({actionCall(KeyAction::previous), actionCall(KeyAction::previous)}));

    // Outside a session, Super+Shift+Tab and Super+Shift+grave walk back.
    monitor->handle(flags(keys::RightCommand, 0, 2.0));
    monitor->handle(flags(keys::RightOption, 0, 2.0));
    prefs->setReplaceCommandTab(true);
    handler.take();
    monitor->handle(down(keys::Tab, "\t", LeftCmd | shift));
    monitor->handle(down(keys::Tab, "\t", LeftCmd));
    monitor->handle(down(keys::Grave, "`", LeftCmd | shift));
    QCOMPARE(handler.take(), QStringList({"commandTab:back", "commandTab", "cycleSameApp:back"}));
}

void KeyMonitorTest::secondaryModifierAndMissedRelease()
{

    monitor->handle(flags(keys::RightOption, keys::RightOptionBit, 1.0));
    monitor->handle(flags(keys::RightOption, keys::RightOptionBit, 1.1));
    monitor->handle(flags(keys::RightCommand, RightCmd | keys::RightOptionBit, 1.2));
    QCOMPARE(handler.take(), QStringList({"secondary:1", "begin"}));
    QCOMPARE(monitor->handle(down(19, "2", RightCmd | keys::RightOptionBit)), KeyDecision::Swallow);
    // A key that shows Right Option up while its release was missed.
    monitor->handle(down(20, "3", RightCmd));
    QCOMPARE(handler.take(), QStringList({"digit:2", "secondary:0", "digit:3"}));
    QVERIFY(!monitor->secondaryHeld());

    // A key without the activation key's bit: its release was missed. The
    // session ends without committing and the key itself passes.
    QCOMPARE(monitor->handle(down(1, "s", 0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"secondary:0", "end"}));
    QVERIFY(!monitor->primaryHeld());
    // The late release then finds nothing held.
    monitor->handle(flags(keys::RightCommand, 0, 1.5));
    QCOMPARE(handler.take(), QStringList());

    // Changing the activation key while it is down: the next key repairs it.
    monitor->handle(flags(keys::RightCommand, RightCmd, 3.0));
    prefs->setModifierKey(ModifierKey::leftOption);
    QCOMPARE(monitor->handle(up(1, "s", RightCmd)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"begin", "secondary:0", "end"}));

    // Right Option as the activation key is never the secondary modifier.
    prefs->setModifierKey(ModifierKey::rightOption);
    monitor->handle(flags(keys::RightOption, keys::RightOptionBit, 5.0));
    monitor->handle(flags(keys::RightOption, 0, 5.1));
    QCOMPARE(handler.take(), QStringList({"begin", "commitAndEnd"}));

    // The platform read the modifiers again and found releases it never
    // heard of: sessions end without committing, Command-Tab's too, and a
    // key still down is left alone.
    prefs->setModifierKey(ModifierKey::rightCommand);
    prefs->setReplaceCommandTab(true);
    const auto resynchronised = [](quint64 flagWord) {
        return KeyEvent{KeyEventType::FlagsResynchronised, 0, flagWord, QString(), 6.0};
    };
    monitor->handle(flags(keys::RightOption, keys::RightOptionBit, 5.5));
    monitor->handle(flags(keys::RightCommand, RightCmd | keys::RightOptionBit, 6.0));
    monitor->handle(resynchronised(RightCmd | keys::RightOptionBit));
    QCOMPARE(handler.take(), QStringList({"secondary:1", "begin"}));
    QCOMPARE(monitor->handle(resynchronised(0)), KeyDecision::Pass);
    QCOMPARE(handler.take(), QStringList({"secondary:0", "end", "secondary:0"}));
    QVERIFY(!monitor->primaryHeld() && !monitor->secondaryHeld());
    monitor->handle(down(keys::Tab, "\t", LeftCmd));
    monitor->handle(resynchronised(LeftCmd));
    monitor->handle(resynchronised(0));
    monitor->handle(flags(keys::LeftCommand, 0, 7.0));
    QCOMPARE(handler.take(), QStringList({"commandTab", "end"}));
    QVERIFY(!monitor->commandTabActive());
}

void KeyMonitorTest::keysPostedBySelfPassUntouched()
{
    monitor->handle(flags(keys::RightCommand, RightCmd, 1.0));
    monitor->handle(flags(keys::RightOption, RightCmd | keys::RightOptionBit, 1.1));
    QCOMPARE(handler.take(), QStringList({"begin", "secondary:1"}));

    // The Control + 2 that switches Spaces when the private calls are missing,
    // seen by Velkor's own tap: neither activation key nor Right Option in
    // its flags, and yet no missed release, and no digit.
    for (KeyEventType type : {KeyEventType::KeyDown, KeyEventType::KeyUp}) {
        KeyEvent posted = down(19, "2", keys::ControlMask, type);
        posted.postedBySelf = true;
        QCOMPARE(monitor->handle(posted), KeyDecision::Pass);
    }
    QCOMPARE(handler.take(), QStringList());
    QVERIFY(monitor->primaryHeld());
    QVERIFY(monitor->secondaryHeld());

    // The session goes on with the user's own keys.
    QCOMPARE(monitor->handle(down(1, "s", RightCmd | keys::RightOptionBit)), KeyDecision::Swallow);
    QCOMPARE(handler.take(), QStringList("char:s"));
}

void KeyMonitorTest::sourceInstallWatchAndRecovery()
{
    fake::FakeKeySource source;
    monitor = std::make_unique<KeyMonitor>(*prefs, &source);
    monitor->setHandler(&handler);
    QList<KeyAccess> reported;
    monitor->setAccessObserver([&](KeyAccess access) { reported << access; });
    int presses = 0;
    monitor->setActivationPressObserver([&] { ++presses; });

    // Refused at start: reported once, however often the watchdog retries,
    // and the settings are followed meanwhile, so the next try grabs the
    // key chosen since.
    source.refuseInstall = true;
    QVERIFY(!monitor->start());
    monitor->watchdogTick();
    QCOMPARE(source.installAttempts, 2);
    QCOMPARE(reported, QList<KeyAccess>{KeyAccess::notTrusted});
    QCOMPARE(source.send(flags(keys::RightCommand, RightCmd, 1.0)), KeyDecision::Pass);
    prefs->setModifierKey(ModifierKey::leftControl);
    prefs->setReplaceCommandTab(true);
    QCOMPARE(source.watched.activationKeyCode, keys::LeftControl);
    QVERIFY(source.watched.commandTab);
    QCOMPARE(handler.take(), QStringList());

    // Installed by a later tick, once; what the source says of the key is
    // reported at each change and only then.
    source.refuseInstall = false;
    source.keyAccess = KeyAccess::activationKeyTaken;
    monitor->watchdogTick();
    QVERIFY(monitor->start());
    monitor->watchdogTick();
    monitor->watchdogTick();
    QCOMPARE(source.installAttempts, 3);
    QCOMPARE(source.recoverCalls, 2);
    QCOMPARE(reported, (QList<KeyAccess>{KeyAccess::notTrusted, KeyAccess::activationKeyTaken}));
    // Another key chosen: the source is told at once, and what it says then
    // is reported without waiting for the watchdog.
    source.keyAccess = KeyAccess::active;
    prefs->setModifierKey(ModifierKey::rightControl);
    QCOMPARE(source.watched.activationKeyCode, keys::RightControl);
    QCOMPARE(reported.last(), KeyAccess::active);
    QCOMPARE(monitor->access(), KeyAccess::active);
    prefs->setCmdBacktickCycle(false);
    QVERIFY(!source.watched.commandGrave);
    QCOMPARE(reported.size(), 3);

    QCOMPARE(source.send(flags(keys::RightControl, keys::RightControlBit, 2.0)), KeyDecision::Pass);
    QCOMPARE(presses, 1);
    handler.take();

    // The platform switches the source off: the notice turns it back on, and
    // the watchdog lets the source recover. State is kept.
    source.enabled = false;
    QCOMPARE(source.send(KeyEvent{KeyEventType::TapDisabledByTimeout, 0, 0, {}, 3.0}),
             KeyDecision::Pass);
    QVERIFY(source.enabled);
    source.enabled = false;
    monitor->watchdogTick();
    QVERIFY(source.enabled);
    source.send(KeyEvent{KeyEventType::TapDisabledByUserInput, 0, 0, {}, 3.0});
    QCOMPARE(source.enableCalls, 3);
    QVERIFY(monitor->primaryHeld());
    QCOMPARE(handler.take(), QStringList());

    // The source outlives the monitor: later events pass and reach no one,
    // and later settings changes touch nothing.
    monitor.reset();
    QCOMPARE(source.send(down(1, "s", keys::RightControlBit)), KeyDecision::Pass);
    prefs->setModifierKey(ModifierKey::leftCommand);
    QCOMPARE(source.watched.activationKeyCode, keys::RightControl);
    QCOMPARE(handler.take(), QStringList());
}

QTEST_GUILESS_MAIN(KeyMonitorTest)
#include "KeyMonitorTest.moc"
