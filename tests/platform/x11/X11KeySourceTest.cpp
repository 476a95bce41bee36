// SPDX-License-Identifier: MIT
// The X11 key source against a private Xvfb with openbox and a focused
// xterm: keys are typed through XTEST by keycode from a connection of their
// own, as a user would type them, and what the xterm received is read back.
#include "platform/x11/X11KeySource.h"

#include "platform/KeyCodes.h"

#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace velkor;

namespace {

// Keycodes of an evdev server (X keycode = evdev code + 8).
constexpr xcb_keycode_t SuperL = 133, SuperR = 134, AltR = 108, TabKey = 23, GraveKey = 49;
constexpr xcb_keycode_t KeyA = 38, KeyS = 39, KeyD = 40, Key3 = 12;

// Time stands still; the source only stamps events with it.
class StillClock final : public Clock
{
public:
    double now() const override { return 1.0; }
    TaskId callAfter(double, std::function<void()>) override { return 0; }
    TaskId callEvery(double, std::function<void()>) override { return 0; }
    void cancel(TaskId) override {}
};

pid_t g_xvfb = 0;
QByteArray g_display;

// Xvfb on the first free display, which it reports through -displayfd.
bool startXvfb()
{
    int fds[2];
    if (pipe(fds) != 0)
        return false;
    g_xvfb = fork();
    if (g_xvfb == 0) {
        close(fds[0]);
        const QByteArray fd = QByteArray::number(fds[1]);
        execlp("Xvfb", "Xvfb", "-displayfd", fd.constData(), "-screen", "0", "1024x768x24",
               "-nolisten", "tcp", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    // The number and its newline may come in separate writes; the server
    // dies if the pipe is closed between them.
    QByteArray number;
    char c = 0;
    while (read(fds[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(fds[0]);
    if (number.isEmpty())
        return false;
    g_display = ":" + number;
    return true;
}

void stopXvfb()
{
    if (g_xvfb > 0) {
        kill(g_xvfb, SIGTERM);
        waitpid(g_xvfb, nullptr, 0);
    }
}

// A second client that types like a keyboard would.
class Typist
{
public:
    Typist() : m_connection(xcb_connect(g_display.constData(), nullptr)) {}
    ~Typist() { xcb_disconnect(m_connection); }
    void press(xcb_keycode_t key) { fake(XCB_KEY_PRESS, key); }
    void release(xcb_keycode_t key) { fake(XCB_KEY_RELEASE, key); }
    void tap(xcb_keycode_t key)
    {
        press(key);
        release(key);
    }
    xcb_connection_t* connection() const { return m_connection; }
    // Waits until the server has handled everything sent so far.
    void sync()
    {
        free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

private:
    void fake(uint8_t type, xcb_keycode_t key)
    {
        xcb_test_fake_input(m_connection, type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        sync();
        // Lets the server deliver before the next key, as a hand would.
        QTest::qWait(15);
    }
    xcb_connection_t* m_connection;
};

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
        QVERIFY2(m_dir.isValid(), "no temporary folder");
        m_openbox.start(QStringLiteral("openbox"), {});
        QVERIFY2(m_openbox.waitForStarted(), "openbox is not installed");
        // A window mapped before the window manager runs is never focused.
        QTRY_VERIFY_WITH_TIMEOUT(rootHas("_NET_SUPPORTING_WM_CHECK"), 10000);
        m_typed = m_dir.filePath(QStringLiteral("typed"));
        // Raw mode hands every byte to cat at once, Tab and grave included.
        m_xterm.start(QStringLiteral("xterm"),
                      {QStringLiteral("-e"), QStringLiteral("sh"), QStringLiteral("-c"),
                       QStringLiteral("stty raw -echo; exec cat > '%1'").arg(m_typed)});
        QVERIFY2(m_xterm.waitForStarted(), "xterm is not installed");
        // The xterm has focus once a probe key arrives in it.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_typed), 10000);
        QTRY_VERIFY_WITH_TIMEOUT((m_typist.tap(KeyA), typed().contains('a')), 10000);
    }

    void cleanupTestCase()
    {
        m_xterm.kill();
        m_xterm.waitForFinished();
        m_openbox.kill();
        m_openbox.waitForFinished();
    }

    void init()
    {
        m_seen.clear();
        m_typedBefore = typed().size();
    }

    void superShortcutsAreTakenOnlyWhileWatched()
    {
        X11KeySource source(m_clock);
        source.watch({keys::RightCommand, false, false});
        QVERIFY(installSwallowingHeldKeys(source));

        m_typist.press(SuperL);
        m_typist.tap(TabKey);
        m_typist.tap(GraveKey);
        m_typist.release(SuperL);
        QTRY_COMPARE(typedSinceStart(), QStringLiteral("\t`"));
        for (const Seen& e : std::as_const(m_seen))
            QVERIFY2(e.type == KeyEventType::FlagsChanged, qPrintable(describe(m_seen)));

        source.watch({keys::RightCommand, true, true});
        m_seen.clear();
        m_typist.press(SuperL);
        m_typist.tap(TabKey);
        m_typist.tap(TabKey);
        m_typist.tap(GraveKey);
        m_typist.release(SuperL);
        m_typist.tap(KeyS);
        QTRY_COMPARE(typedSinceStart(), QStringLiteral("\t`s"));
        using namespace keys;
        const quint64 left = LeftCommandBit | CommandMask;
        const QList<Seen> expected{
            {KeyEventType::FlagsChanged, LeftCommand, left, {}},
            {KeyEventType::KeyDown, Tab, left, {}},
            {KeyEventType::KeyUp, Tab, left, {}},
            {KeyEventType::KeyDown, Tab, left, {}},
            {KeyEventType::KeyUp, Tab, left, {}},
            {KeyEventType::KeyDown, Grave, left, QStringLiteral("`")},
            {KeyEventType::KeyUp, Grave, left, QStringLiteral("`")},
            {KeyEventType::FlagsChanged, LeftCommand, 0, {}},
        };
        QCOMPARE(describe(m_seen), describe(expected));

        // Passed back, the shortcut reaches the xterm without coming round again.
        m_decide = [](const KeyEvent&) { return KeyDecision::Pass; };
        m_seen.clear();
        m_typist.press(SuperL);
        m_typist.tap(TabKey);
        m_typist.release(SuperL);
        QTRY_COMPARE(typedSinceStart(), QStringLiteral("\t`s\t"));
        const auto tabDowns = std::count_if(m_seen.cbegin(), m_seen.cend(), [](const Seen& e) {
            return e.type == KeyEventType::KeyDown && e.keyCode == keys::Tab;
        });
        QCOMPARE(tabDowns, 1);
    }

    void modifiersAreFollowedWithAndWithoutAGrab()
    {
        X11KeySource source(m_clock);
        QVERIFY(installSwallowingHeldKeys(source));
        using namespace keys;

        // No grab of ours is active here: raw events still tell.
        m_typist.press(AltR);
        m_typist.release(AltR);
        // Under the activation key we hold the keyboard, and Right Alt
        // changes the digit's flags.
        m_typist.press(SuperR);
        m_typist.press(AltR);
        m_typist.tap(Key3);
        m_typist.release(AltR);
        m_typist.release(SuperR);
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
        m_typist.press(SuperR);
        m_typist.press(KeyS);
        QTest::qWait(1000); // Xvfb starts repeating after 660 ms
        m_typist.release(KeyS);
        m_typist.release(SuperR);
        QTRY_VERIFY(!m_seen.isEmpty() && m_seen.last().keyCode == keys::RightCommand);
        qsizetype downs = 0;
        qsizetype ups = 0;
        for (const Seen& e : std::as_const(m_seen)) {
            downs += e.type == KeyEventType::KeyDown;
            ups += e.type == KeyEventType::KeyUp;
        }
        QVERIFY2(downs >= 3, qPrintable(describe(m_seen)));
        QCOMPARE(ups, 1);
        QCOMPARE(m_seen.at(m_seen.size() - 2).type, KeyEventType::KeyUp);
        QCOMPARE(typedSinceStart(), QString());
    }

    void aNewLayoutLeavesTheGrabsEnabled()
    {
        X11KeySource source(m_clock);
        QVERIFY(installSwallowingHeldKeys(source));
        // German names the grave key dead_circumflex; the grabs are the same.
        for (const char* layout : {"de", "us"}) {
            QCOMPARE(QProcess::execute(QStringLiteral("setxkbmap"), {QString::fromLatin1(layout)}),
                     0);
            QTest::qWait(300); // the source reloads once the notifications settle
            QVERIFY2(source.isEnabled(), layout);
            m_seen.clear();
            m_typist.press(SuperR);
            m_typist.tap(KeyS);
            m_typist.release(SuperR);
            QTRY_COMPARE(m_seen.size(), 4);
            QCOMPARE(m_seen.at(1).characters, QStringLiteral("s"));
        }
    }

    void aKeyHeldByAnotherClientIsRefusedUntilItIsFree()
    {
        Typist other;
        xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other.connection())).data->root;
        xcb_grab_key(other.connection(), 0, root, 0, SuperR, XCB_GRAB_MODE_ASYNC,
                     XCB_GRAB_MODE_ASYNC);
        other.sync();

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

        xcb_ungrab_key(other.connection(), SuperR, root, 0);
        other.sync();
        source.enable();
        QVERIFY(source.isInstalled());
        QVERIFY(source.isEnabled());
        m_typist.press(SuperR);
        m_typist.tap(KeyS);
        m_typist.release(SuperR);
        m_typist.tap(KeyD);
        QTRY_COMPARE(typedSinceStart(), QStringLiteral("d"));
        QVERIFY(!m_seen.isEmpty());
    }

private:
    // Swallows what is typed under Right Super or Right Alt, and the Super
    // shortcuts; m_decide can be replaced afterwards.
    bool installSwallowingHeldKeys(X11KeySource& source)
    {
        m_decide = [](const KeyEvent& event) {
            const bool held = event.flags & (keys::RightCommandBit | keys::RightOptionBit);
            const bool shortcut = event.keyCode == keys::Tab || event.keyCode == keys::Grave;
            return event.type == KeyEventType::KeyDown && (held || shortcut) ? KeyDecision::Swallow
                                                                             : KeyDecision::Pass;
        };
        return source.install([this](const KeyEvent& event) {
            m_seen.append({event.type, event.keyCode, event.flags, event.characters});
            return m_decide(event);
        });
    }

    QString typed() const
    {
        QFile file(m_typed);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    QString typedSinceStart() const { return typed().mid(m_typedBefore); }

    bool rootHas(const char* property) { return rootWindowProperty(property) != XCB_NONE; }

    xcb_window_t rootWindowProperty(const char* property)
    {
        xcb_connection_t* c = m_typist.connection();
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
        const QByteArray name(property);
        auto* atom = xcb_intern_atom_reply(
            c, xcb_intern_atom(c, 1, uint16_t(name.size()), name.constData()), nullptr);
        if (!atom)
            return XCB_NONE;
        auto* reply = xcb_get_property_reply(
            c, xcb_get_property(c, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1), nullptr);
        free(atom);
        xcb_window_t window = XCB_NONE;
        if (reply && xcb_get_property_value_length(reply) == 4)
            window = *static_cast<xcb_window_t*>(xcb_get_property_value(reply));
        free(reply);
        return window;
    }

    StillClock m_clock;
    QTemporaryDir m_dir;
    QProcess m_openbox;
    QProcess m_xterm;
    QString m_typed;
    qsizetype m_typedBefore = 0;
    Typist m_typist;
    QList<Seen> m_seen;
    std::function<KeyDecision(const KeyEvent&)> m_decide;
};

int main(int argc, char** argv)
{
    if (!startXvfb()) {
        fprintf(stderr, "Xvfb could not be started\n");
        return 1;
    }
    qputenv("DISPLAY", g_display);
    qputenv("QT_QPA_PLATFORM", "xcb");
    int status = 0;
    {
        QGuiApplication app(argc, argv);
        X11KeySourceTest test;
        status = QTest::qExec(&test, argc, argv);
    }
    stopXvfb();
    return status;
}

#include "X11KeySourceTest.moc"
