// SPDX-License-Identifier: MIT
// The X11 key source on a private desktop with a focused xterm: keys are
// typed through XTEST by keycode, as a user would type them, and what the
// xterm received is read back.
#include "platform/x11/X11KeySource.h"

#include "XDesktop.h"
#include "platform/KeyCodes.h"

#include <QGuiApplication>
#include <QTest>

using namespace velkor;
using namespace velkor::e2e;

namespace {

// Time stands still; the source only stamps events with it.
class StillClock final : public Clock
{
public:
    double now() const override { return 1.0; }
    TaskId callAfter(double, std::function<void()>) override { return 0; }
    TaskId callEvery(double, std::function<void()>) override { return 0; }
    void cancel(TaskId) override {}
};

XDesktop* g_desktop = nullptr;

struct Seen
{
    KeyEventType type;
    qint64 keyCode;
    quint64 flags;
    QString characters;
};

QString describe(const QList<Seen>& events)
{
    QStringList lines;
    for (const Seen& e : events)
        lines << QStringLiteral("%1:%2:%3:%4")
                     .arg(int(e.type))
                     .arg(e.keyCode)
                     .arg(e.flags, 0, 16)
                     .arg(e.characters);
    return lines.join(' ');
}

} // namespace

class X11KeySourceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(g_desktop->launchRecorder(QStringLiteral("Typed")));
        // The xterm has focus once a probe key arrives in it.
        QTRY_VERIFY_WITH_TIMEOUT((g_desktop->tap(key::of('a')), typed().contains('a')), 10000);
    }

    void init()
    {
        m_seen.clear();
        m_typedBefore = typed().size();
    }

    void modifiersAreFollowedWithAndWithoutAGrab()
    {
        X11KeySource source(m_clock);
        QVERIFY(installSwallowingHeldKeys(source));
        using namespace keys;

        // No grab of ours is active here: raw events still tell.
        g_desktop->tap(key::AltR);
        // Under the activation key we hold the keyboard, and Right Alt
        // changes the digit's flags.
        g_desktop->holding(key::SuperR, [] {
            g_desktop->holding(key::AltR, [] { g_desktop->tap(key::of('3')); });
        });
        const quint64 super = RightCommandBit | CommandMask;
        const quint64 alt = RightOptionBit | OptionMask;
        const QList<Seen> expected{
            {KeyEventType::FlagsChanged, RightOption, alt, {}},
            {KeyEventType::FlagsChanged, RightOption, 0, {}},
            {KeyEventType::FlagsChanged, RightCommand, super, {}},
            {KeyEventType::FlagsChanged, RightOption, super | alt, {}},
            {KeyEventType::KeyDown, 20, super | alt, QStringLiteral("3")},
            {KeyEventType::KeyUp, 20, super | alt, QStringLiteral("3")},
            {KeyEventType::FlagsChanged, RightOption, super, {}},
            {KeyEventType::FlagsChanged, RightCommand, 0, {}},
        };
        QTRY_COMPARE(describe(m_seen), describe(expected));
    }

    void aHeldKeyRepeatsAsPressesOnly()
    {
        X11KeySource source(m_clock);
        QVERIFY(installSwallowingHeldKeys(source));
        g_desktop->holding(key::SuperR, [] {
            g_desktop->press(key::of('s'));
            QTest::qWait(1000); // Xvfb starts repeating after 660 ms
            g_desktop->release(key::of('s'));
        });
        QTRY_VERIFY(!m_seen.isEmpty() && m_seen.last().keyCode == keys::RightCommand);
        const auto count = [&](KeyEventType type) {
            return std::count_if(m_seen.cbegin(), m_seen.cend(),
                                 [&](const Seen& e) { return e.type == type; });
        };
        QVERIFY2(count(KeyEventType::KeyDown) >= 3, qPrintable(describe(m_seen)));
        QCOMPARE(count(KeyEventType::KeyUp), 1);
        QCOMPARE(m_seen.at(m_seen.size() - 2).type, KeyEventType::KeyUp);
        QCOMPARE(typedSinceStart(), QString());
    }

    void aKeyHeldByAnotherClientIsRefusedUntilItIsFree()
    {
        // The desktop's own connection plays the other client.
        xcb_connection_t* other = g_desktop->connection();
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
        xcb_grab_key(other, 0, root, 0, key::SuperR, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        xcb_flush(other);
        g_desktop->activeWindow(); // a round trip: the grab is in place

        X11KeySource source(m_clock);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression("cannot grab activation key Super_R.*134"));
        QVERIFY(!installSwallowingHeldKeys(source));
        QVERIFY(!source.isInstalled());
        QVERIFY(!source.isEnabled());
        // The watchdog's retry is refused again, without a new line each time.
        QTest::failOnWarning(QRegularExpression("cannot grab"));
        source.enable();
        QVERIFY(!source.isEnabled());

        xcb_ungrab_key(other, key::SuperR, root, 0);
        xcb_flush(other);
        g_desktop->activeWindow();
        source.enable();
        QVERIFY(source.isInstalled());
        QVERIFY(source.isEnabled());
        g_desktop->holding(key::SuperR, [] { g_desktop->tap(key::of('s')); });
        g_desktop->tap(key::of('d'));
        QTRY_COMPARE(typedSinceStart(), QStringLiteral("d"));
        QVERIFY(!m_seen.isEmpty());
    }

private:
    // Swallows what is typed under Right Super or Right Alt.
    bool installSwallowingHeldKeys(X11KeySource& source)
    {
        return source.install([this](const KeyEvent& event) {
            m_seen.append({event.type, event.keyCode, event.flags, event.characters});
            const bool held = event.flags & (keys::RightCommandBit | keys::RightOptionBit);
            return event.type == KeyEventType::KeyDown && held ? KeyDecision::Swallow
                                                               : KeyDecision::Pass;
        });
    }

    QString typed() const { return g_desktop->recorded(QStringLiteral("Typed")); }
    QString typedSinceStart() const { return typed().mid(m_typedBefore); }

    StillClock m_clock;
    qsizetype m_typedBefore = 0;
    QList<Seen> m_seen;
};

int main(int argc, char** argv)
{
    // The desktop comes first: the application connects to it.
    XDesktop desktop;
    if (!desktop.start()) {
        qWarning("%s", qPrintable(desktop.error()));
        return 1;
    }
    g_desktop = &desktop;
    qputenv("DISPLAY", desktop.display().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    X11KeySourceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "X11KeySourceTest.moc"
