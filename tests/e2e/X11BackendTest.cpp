// SPDX-License-Identifier: MIT
#include "XDesktop.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11FocusedKeyboardState.h"
#include "platform/x11/X11ShellIntegration.h"
#include "platform/x11/X11SpaceSystem.h"
#include "platform/x11/X11WindowCache.h"
#include "platform/x11/X11WindowSystem.h"
#include "platform/x11/X11Workspace.h"
#include "platform/x11/XdgDesktopEntryIndex.h"

#include <QAbstractNativeEventFilter>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QWindow>
#include <QtTest>
#include <memory>
#include <sys/stat.h>

// xcb's XKB header names a field "explicit", which C++ reserves.
#define explicit xkb_explicit
#include <xcb/xkb.h>
#undef explicit

using namespace velkor;
using namespace velkor::e2e;
using namespace velkor::x11;

namespace {

XDesktop* g_desktop = nullptr;

// Counts the keyboard state events that reach Qt's connection.
class KeyboardStateEvents final : public QAbstractNativeEventFilter
{
public:
    KeyboardStateEvents()
    {
        const auto* xkb = xcb_get_extension_data(X11Connection::fromQt()->get(), &xcb_xkb_id);
        m_firstEvent = xkb ? xkb->first_event : 0;
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    ~KeyboardStateEvents() override { QCoreApplication::instance()->removeNativeEventFilter(this); }

    int count = 0;

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override
    {
        const auto* event = static_cast<const xcb_xkb_state_notify_event_t*>(message);
        if (m_firstEvent && (event->response_type & 0x7f) == m_firstEvent &&
            event->xkbType == XCB_XKB_STATE_NOTIFY)
            ++count;
        return false;
    }

private:
    uint8_t m_firstEvent = 0;
};

// A window of the app's own that keeps the text of the keys it gets.
class TypedInto final : public QWindow
{
public:
    QString text;

protected:
    void keyPressEvent(QKeyEvent* event) override { text += event->text(); }
};

} // namespace

// The X11 backend on Qt's own connection against a real openbox: what it
// reports, read through the seam, and what its requests do, read from the
// server.
class X11BackendTest : public QObject
{
    Q_OBJECT

    XDesktop& desktop() { return *g_desktop; }
    std::shared_ptr<X11WindowCache> m_cache;
    std::shared_ptr<XdgDesktopEntryIndex> m_entries;
    std::unique_ptr<X11Workspace> m_workspace;
    std::unique_ptr<X11WindowSystem> m_windows;
    std::unique_ptr<X11SpaceSystem> m_spaces;
    QList<xcb_window_t> m_started;

    xcb_window_t owner(const QString& cls, const QStringList& descriptions)
    {
        const xcb_window_t w = desktop().launch(QStringLiteral(VELKOR_MULTI_WINDOW_CLIENT),
                                                QStringList{cls} + descriptions, cls);
        m_started.append(w);
        return w;
    }

    std::optional<RunningApp> appOf(xcb_window_t window)
    {
        const Pid pid = Pid(desktop().pidOf(window));
        for (const RunningApp& app : m_workspace->runningApplications())
            if (app.pid == pid)
                return app;
        return std::nullopt;
    }

    // Lets the backend see the PropertyNotify events of what just happened.
    static bool eventually(const std::function<bool()>& condition)
    {
        return g_desktop->waitFor(condition, 3000);
    }

private slots:
    void init()
    {
        m_cache = std::make_shared<X11WindowCache>(X11Connection::fromQt());
        m_entries = std::make_shared<XdgDesktopEntryIndex>();
        m_workspace = std::make_unique<X11Workspace>(m_cache, m_entries,
                                                     Pid(QCoreApplication::applicationPid()));
        m_windows = std::make_unique<X11WindowSystem>(m_cache);
        m_spaces = std::make_unique<X11SpaceSystem>(m_cache);
    }

    void cleanup()
    {
        for (xcb_window_t w : std::as_const(m_started))
            desktop().kill(w);
        QVERIFY(eventually([&] { return desktop().clients().isEmpty(); }));
        m_started.clear();
        desktop().switchDesktop(0);
        m_spaces.reset();
        m_windows.reset();
        m_workspace.reset();
        m_entries.reset();
        m_cache.reset();
    }

    void appsAreProcessesOwningManagedWindows()
    {
        const xcb_window_t logo =
            desktop().launch(QStringLiteral("xlogo"), {}, QStringLiteral("XLogo"));
        m_started.append(logo);
        const xcb_window_t tools =
            owner(QStringLiteral("Tools"),
                  {QStringLiteral("name=Main"), QStringLiteral("name=Palette,type=utility")});
        const xcb_window_t tray = owner(QStringLiteral("Tray"), {QStringLiteral("skip")});
        const xcb_window_t gtk =
            owner(QStringLiteral("Whatever"), {QStringLiteral("gtk=org.example.Alpha")});
        QVERIFY(logo && tools && tray && gtk);
        QVERIFY(eventually([&] { return m_workspace->runningApplications().size() == 4; }));

        const auto xlogo = appOf(logo); // pid from the X-Resource extension
        QVERIFY(xlogo);
        QCOMPARE(xlogo->bundleId, std::optional<QString>(QStringLiteral("XLogo")));
        QCOMPARE(xlogo->name, std::optional<QString>(QStringLiteral("XLogo")));
        QVERIFY(xlogo->regular);
        QVERIFY(m_workspace->isRunning(xlogo->pid));

        const auto toolsApp = appOf(tools);
        QVERIFY(toolsApp && toolsApp->regular);
        // The client maps its windows one at a time.
        QVERIFY(eventually([&] { return m_windows->windowsOf(toolsApp->pid)->size() == 2; }));

        const auto trayApp = appOf(tray);
        QVERIFY(trayApp);
        QVERIFY(!trayApp->regular);

        const auto gtkApp = appOf(gtk);
        QVERIFY(gtkApp);
        QCOMPARE(gtkApp->name, std::optional<QString>(QStringLiteral("Alpha")));
        QCOMPARE(gtkApp->bundleId, std::optional<QString>(QStringLiteral("org.example.Alpha")));
        QVERIFY(gtkApp->bundlePath && gtkApp->bundlePath->endsWith(QLatin1String(".desktop")));

        // An app renamed by its window's class, then found by a scan's
        // window classes, is described anew each time.
        xcb_connection_t* c = desktop().connection();
        const QByteArray renamed("renamed\0Renamed\0", 16);
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, logo, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            uint32_t(renamed.size()), renamed.constData());
        xcb_flush(c);
        QVERIFY(eventually([&] {
            return appOf(logo)->bundleId == std::optional<QString>(QStringLiteral("Renamed"));
        }));
        m_entries->setWindowClasses(
            {{QStringLiteral("Renamed"),
              DesktopEntry{QStringLiteral("org.example.Renamed"), QStringLiteral("Renamed App"),
                           QStringLiteral("/nowhere/org.example.Renamed.desktop")}}});
        QCOMPARE(appOf(logo)->name, std::optional<QString>(QStringLiteral("Renamed App")));
    }

    void workspaceTellsOfLaunchesQuitsAndActivations()
    {
        QSignalSpy launched(m_workspace.get(), &Workspace::applicationLaunched);
        QSignalSpy terminated(m_workspace.get(), &Workspace::applicationTerminated);
        QSignalSpy activated(m_workspace.get(), &Workspace::applicationActivated);
        const xcb_window_t a = owner(QStringLiteral("One"), {QStringLiteral("name=a")});
        const xcb_window_t b = owner(QStringLiteral("Two"), {QStringLiteral("name=b")});
        QVERIFY(a && b);
        QTRY_VERIFY(launched.size() >= 2);

        desktop().activate(a);
        QTRY_COMPARE(m_workspace->frontmostPid(), std::optional<Pid>(Pid(desktop().pidOf(a))));
        const auto activations = activated.size();
        QVERIFY(activations >= 1);
        // The window manager may still be settling b's own start: count that
        // at least one more activation is told, and that b is in front.
        desktop().activate(b);
        QTRY_VERIFY(activated.size() > activations);
        QTRY_COMPARE(m_workspace->frontmostPid(), std::optional<Pid>(Pid(desktop().pidOf(b))));

        QCOMPARE(terminated.size(), 0);
        desktop().kill(b);
        QTRY_COMPARE(terminated.size(), 1);
        QVERIFY(!appOf(b));
    }

    void windowsComeFrontFirstWithTitlesAndMinimisedState()
    {
        const xcb_window_t first =
            owner(QStringLiteral("Multi"), {QStringLiteral("name=Über,wmname=old"),
                                            QStringLiteral("wmname=Plain"), QString()});
        QVERIFY(first);
        const Pid pid = Pid(desktop().pidOf(first));
        QVERIFY(eventually([&] { return m_windows->windowsOf(pid)->size() == 3; }));
        QList<RawWindow> windows = *m_windows->windowsOf(pid);
        // openbox stacks each newly mapped window on top; the title comes
        // from _NET_WM_NAME before WM_NAME.
        QCOMPARE(windows[0].title, std::nullopt);
        QCOMPARE(windows[1].title, std::optional<QString>(QStringLiteral("Plain")));
        QCOMPARE(windows[2].title, std::optional<QString>(QStringLiteral("Über")));
        const xcb_window_t oldest = X11WindowSystem::idOf(windows[2].element);

        m_windows->raise(windows[2].element);
        QVERIFY(eventually([&] {
            return X11WindowSystem::idOf(m_windows->windowsOf(pid)->first().element) == oldest;
        }));
        windows = *m_windows->windowsOf(pid);

        m_windows->setMinimized(windows[1].element, true);
        const xcb_window_t iconified = X11WindowSystem::idOf(windows[1].element);
        QVERIFY(eventually([&] {
            const auto now = *m_windows->windowsOf(pid);
            return std::all_of(now.cbegin(), now.cend(), [&](const RawWindow& w) {
                return w.minimized == (X11WindowSystem::idOf(w.element) == iconified);
            });
        }));
        QVERIFY(desktop().isHidden(X11WindowSystem::idOf(windows[1].element)));
        m_windows->setMinimized(windows[1].element, false);
        QVERIFY(eventually(
            [&] { return !desktop().isHidden(X11WindowSystem::idOf(windows[1].element)); }));

        // Windows of a desktop not shown are iconic for openbox, yet not
        // minimised; they are simply not on screen.
        desktop().moveToDesktop(oldest, 2);
        QVERIFY(eventually([&] {
            const auto all = m_spaces->windowList(false);
            const auto shown = m_spaces->windowList(true);
            auto has = [&](const QList<ServerWindow>& list) {
                return std::any_of(list.cbegin(), list.cend(),
                                   [&](const ServerWindow& w) { return w.number == oldest; });
            };
            return has(all) && !has(shown);
        }));
        const QList<RawWindow> afterMove = *m_windows->windowsOf(pid);
        for (const RawWindow& w : afterMove)
            QCOMPARE(w.minimized, std::optional<bool>(false));
    }

    void controlDigitFallbackPressesTheKeysAtTheDigitsPositions()
    {
        // A client of its own grabs Control + each digit on the root, as a
        // window manager with such shortcuts would, and reads what arrives.
        xcb_connection_t* c = xcb_connect(desktop().display().toLatin1().constData(), nullptr);
        QVERIFY(!xcb_connection_has_error(c));
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
        for (int keycode = 10; keycode <= 19; ++keycode)
            xcb_grab_key(c, 1, root, XCB_MOD_MASK_CONTROL, xcb_keycode_t(keycode),
                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));

        // The digit key codes the core uses for 1, 5, 6 and 9.
        for (int code : {18, 23, 22, 25})
            QVERIFY(m_spaces->postControlKey(code));
        QVERIFY(!m_spaces->postControlKey(0)); // the A key: not a digit
        QList<int> pressed;
        QVERIFY(eventually([&] {
            while (xcb_generic_event_t* e = xcb_poll_for_event(c)) {
                if ((e->response_type & 0x7f) == XCB_KEY_PRESS) {
                    auto* key = reinterpret_cast<xcb_key_press_event_t*>(e);
                    if (key->state & XCB_MOD_MASK_CONTROL)
                        pressed.append(key->detail);
                }
                std::free(e);
            }
            return pressed.size() >= 4;
        }));
        QCOMPARE(pressed, (QList<int>{key::of(QLatin1Char('1')), key::of(QLatin1Char('5')),
                                      key::of(QLatin1Char('6')), key::of(QLatin1Char('9'))}));
        xcb_disconnect(c);
    }

    void overlayWindowsStayOutOfTheWindowManagersWay()
    {
        X11ShellIntegration shell(X11Connection::fromQt(), nullptr);
        QWindow overlay;
        overlay.resize(200, 80);
        shell.prepareOverlayWindow(&overlay);
        overlay.show();
        const auto id = xcb_window_t(overlay.winId());
        xcb_connection_t* c = X11Connection::fromQt()->get();
        QVERIFY(eventually([&] {
            auto attributes = reply(
                xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id), nullptr));
            return attributes && attributes->override_redirect &&
                   attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        }));
        QVERIFY(!desktop().clients().contains(id));
        QVERIFY(!shell.canBlurBehind()); // openbox composites nothing
        // Shown, it still tells Qt of exposure and of its size, but not of
        // the properties Qt itself writes on it at each showing.
        auto mask =
            reply(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id), nullptr));
        QVERIFY(mask);
        QVERIFY(mask->your_event_mask & XCB_EVENT_MASK_EXPOSURE);
        QVERIFY(mask->your_event_mask & XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        QVERIFY(!(mask->your_event_mask & XCB_EVENT_MASK_PROPERTY_CHANGE));

        const QString icon = desktop().scratchPath() + QLatin1String("/icon.png");
        QImage image(16, 16, QImage::Format_ARGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(icon));
        const QString entry = desktop().scratchPath() + QLatin1String("/iconic.desktop");
        QFile file(entry);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\nName=Iconic\nExec=true\nIcon=" +
                   icon.toUtf8() + "\n");
        file.close();
        QVERIFY(!shell.iconForFile(entry).isNull());
        QVERIFY(
            shell.iconForFile(desktop().scratchPath() + QLatin1String("/none.desktop")).isNull());
        // A FIFO as the entry, or as its icon, is no icon, and is not waited on.
        const QByteArray fifo = (desktop().scratchPath() + QLatin1String("/fifo")).toLocal8Bit();
        QCOMPARE(::mkfifo(fifo.constData(), 0600), 0);
        QVERIFY(QFile::link(QString::fromLocal8Bit(fifo),
                            desktop().scratchPath() + QLatin1String("/fifo.desktop")));
        QVERIFY(
            shell.iconForFile(desktop().scratchPath() + QLatin1String("/fifo.desktop")).isNull());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("[Desktop Entry]\nType=Application\nName=Iconic\nExec=true\nIcon=" + fifo +
                   "\n");
        file.close();
        QVERIFY(shell.iconForFile(entry).isNull());
    }

    void qtHearsTheKeyboardStateOnlyWhileAWindowOfOursHasTheFocus()
    {
        X11FocusedKeyboardState followFocus(X11Connection::fromQt());
        KeyboardStateEvents events;
        xcb_connection_t* c = X11Connection::fromQt()->get();
        // Whatever the server sent before answering has been dispatched.
        auto heardAll = [c] {
            free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
            QCoreApplication::processEvents();
            XDesktop::settle(50);
            QCoreApplication::processEvents();
        };
        TypedInto window;
        window.resize(120, 40);
        auto focus = [&window](bool on) {
            window.setVisible(on);
            if (on)
                window.requestActivate();
            return eventually(
                [&] { return QGuiApplication::focusWindow() == (on ? &window : nullptr); });
        };
        desktop().tap(key::ShiftL);
        desktop().tap(key::SuperR);
        heardAll();
        QCOMPARE(events.count, 0);

        QVERIFY(focus(true));
        desktop().press(key::ShiftL);
        auto releaseShift = qScopeGuard([&] { desktop().release(key::ShiftL); });
        desktop().tap(key::of(QLatin1Char('a')));
        QVERIFY(eventually([&] { return window.text == QLatin1String("A"); }));
        QVERIFY(events.count > 0);
        // Shift let go while no window of ours had the focus: the window that
        // gets it again does not type capitals.
        QVERIFY(focus(false));
        releaseShift.dismiss();
        desktop().release(key::ShiftL);
        heardAll();
        events.count = 0;
        desktop().tap(key::ShiftL);
        heardAll();
        QCOMPARE(events.count, 0);
        QVERIFY(focus(true));
        desktop().tap(key::of(QLatin1Char('b')));
        QVERIFY(eventually([&] { return window.text.size() == 2; }));
        QCOMPARE(window.text, QLatin1String("Ab"));
    }

    void appsWithoutAnEntryShowTheirWindowsIcon()
    {
        // openbox writes its own generic icon into the windows that carry
        // none (here the dialog), so the app's own window comes first.
        const xcb_window_t iconic =
            owner(QStringLiteral("Iconic"),
                  {QStringLiteral("name=main,icon=00c800"), QStringLiteral("type=dialog")});
        QVERIFY(iconic);
        const Pid pid = Pid(desktop().pidOf(iconic));
        QVERIFY(eventually([&] {
            int owned = 0;
            for (const X11Client* client : m_cache->inClientOrder())
                owned += client->pid == pid;
            return owned == 2;
        }));

        X11ShellIntegration shell(X11Connection::fromQt(), m_cache);
        const QIcon icon = shell.iconForProcess(pid);
        QCOMPARE(icon.availableSizes(), QList<QSize>{QSize(48, 48)});
        QCOMPARE(icon.pixmap(48, 48).toImage().pixel(24, 24), 0xFF00C800u);
        // This process owns no managed window.
        QVERIFY(shell.iconForProcess(Pid(QCoreApplication::applicationPid())).isNull());
        QVERIFY(X11ShellIntegration(X11Connection::fromQt(), nullptr).iconForProcess(pid).isNull());
    }

    void propertiesAnyClientCanWriteAreReadWithCare()
    {
        // A client of the test's own writes what careless and hostile
        // clients write, on its windows and on the root.
        xcb_connection_t* c = desktop().connection();
        const xcb_window_t root = desktop().root();
        const auto atom = [&](const char* name) { return desktop().atom(name); };
        const xcb_atom_t utf8 = atom("UTF8_STRING");
        const auto set = [c](xcb_window_t w, xcb_atom_t property, xcb_atom_t type, uint8_t format,
                             const void* data, uint32_t count) {
            xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, property, type, format, count, data);
        };
        const auto setText = [&](xcb_window_t w, xcb_atom_t property, xcb_atom_t type,
                                 const QByteArray& text) {
            set(w, property, type, 8, text.constData(), uint32_t(text.size()));
        };
        const auto setCardinals = [&](xcb_window_t w, const char* property, xcb_atom_t type,
                                      const QList<quint32>& values) {
            set(w, atom(property), type, 32, values.constData(), uint32_t(values.size()));
        };
        const auto makeWindow = [&](const char* cls) {
            const xcb_window_t w = xcb_generate_id(c);
            xcb_create_window(c, XCB_COPY_FROM_PARENT, w, root, 0, 0, 200, 100, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            setText(w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, QByteArray(cls) + '\0' + cls + '\0');
            return w;
        };

        // Titles: _NET_WM_NAME of the wrong type, or not UTF-8, gives way to
        // WM_NAME; WM_NAME in COMPOUND_TEXT (Latin-1 and JIS X 0208 here) is
        // decoded; a title cut at the read limit inside a character keeps
        // the characters before it.
        const xcb_window_t wrongType = makeWindow("Careless");
        setText(wrongType, atom("_NET_WM_NAME"), XCB_ATOM_STRING, "Latin-1 here");
        setText(wrongType, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, "Plain");
        setCardinals(wrongType, "_NET_WM_PID", XCB_ATOM_CARDINAL, {0xFFFFFFFF});
        setText(wrongType, atom("_GTK_APPLICATION_ID"), XCB_ATOM_STRING, "org.example.Alpha");
        const xcb_window_t notUtf8 = makeWindow("Careless");
        setText(notUtf8, atom("_NET_WM_NAME"), utf8, "\xff\xfe not text");
        setText(notUtf8, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, "Fallback");
        const xcb_window_t compound = makeWindow("Careless");
        setText(compound, XCB_ATOM_WM_NAME, atom("COMPOUND_TEXT"),
                QByteArray("A\xe9\x1b$(BF|K\\\x1b(Bz"));
        const xcb_window_t cut = makeWindow("Careless");
        setText(cut, atom("_NET_WM_NAME"), utf8, "a" + QString(3000, QChar(0xE9)).toUtf8());
        const QList<xcb_window_t> windows{wrongType, notUtf8, compound, cut};
        for (xcb_window_t w : windows)
            xcb_map_window(c, w);
        xcb_flush(c);
        auto destroy = qScopeGuard([&] {
            for (xcb_window_t w : windows)
                xcb_destroy_window(c, w);
            xcb_flush(c);
        });
        const Pid pid = Pid(QCoreApplication::applicationPid());
        QVERIFY(eventually([&] {
            return std::all_of(windows.cbegin(), windows.cend(),
                               [&](xcb_window_t w) { return m_cache->client(w); });
        }));
        const auto titleOf = [&](xcb_window_t w) -> std::optional<QString> {
            const QList<RawWindow> listed = m_windows->windowsOf(pid).value_or(QList<RawWindow>{});
            for (const RawWindow& raw : listed)
                if (X11WindowSystem::idOf(raw.element) == w)
                    return raw.title.value_or(QStringLiteral("(none)"));
            return std::nullopt;
        };
        QCOMPARE(titleOf(wrongType), std::optional<QString>(QStringLiteral("Plain")));
        QCOMPARE(titleOf(notUtf8), std::optional<QString>(QStringLiteral("Fallback")));
        QCOMPARE(titleOf(compound), std::optional<QString>(QStringLiteral("Aé日本z")));
        QCOMPARE(titleOf(cut),
                 std::optional<QString>(QLatin1Char('a') + QString(2047, QChar(0xE9))));
        // A pid that is no pid gives way to the server's knowledge; a desktop
        // past any real one and an id of the wrong type are no values.
        const X11Client* careless = m_cache->client(wrongType);
        QCOMPARE(careless->pid, pid);
        QCOMPARE(careless->gtkApplicationId, std::nullopt);
        QCOMPARE(careless->desktop, std::optional<quint32>(0)); // as openbox wrote it
        setCardinals(wrongType, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {0xFFFFFFFE});
        xcb_flush(c);
        QVERIFY(eventually([&] { return !m_cache->client(wrongType)->desktop; }));

        // Frame extents that no decoration has are not believed.
        setCardinals(wrongType, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL,
                     {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
        std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr)); // written
        const auto frame = m_windows->frameOf(std::make_shared<X11WindowElement>(wrongType));
        QVERIFY(frame);
        QCOMPARE(frame->size(), QSizeF(200, 100));

        // On the root: a desktop count of 2^32 - 1 is bounded before
        // anything is made of it, and a client list naming the root, a
        // window twice and no window at all names one client.
        xcb_connection_t* ours = X11Connection::fromQt()->get();
        const auto rootMask = [&] {
            auto a = reply(xcb_get_window_attributes_reply(
                ours, xcb_get_window_attributes(ours, root), nullptr));
            return a ? a->your_event_mask : 0u;
        };
        const uint32_t maskBefore = rootMask();
        const QList<xcb_window_t> managed = desktop().clients();
        setCardinals(root, "_NET_NUMBER_OF_DESKTOPS", XCB_ATOM_CARDINAL, {0xFFFFFFFF});
        setCardinals(root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW,
                     {root, wrongType, wrongType, 0x7FFFFFF0});
        xcb_flush(c);
        QVERIFY(eventually([&] {
            const auto clients = m_cache->inClientOrder();
            return clients.size() == 1 && clients.first()->id == wrongType;
        }));
        QVERIFY(eventually([&] { return m_cache->desktopCount() == X11Client::MaxDesktops; }));
        QCOMPARE(m_spaces->mainDisplaySpaces()->spaceIds.size(), qsizetype(X11Client::MaxDesktops));
        QCOMPARE(rootMask(), maskBefore);

        // As openbox left them, for the tests after this one.
        setCardinals(root, "_NET_NUMBER_OF_DESKTOPS", XCB_ATOM_CARDINAL, {4});
        setCardinals(root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, managed);
        xcb_flush(c);
        QVERIFY(eventually([&] { return m_cache->desktopCount() == 4u; }));
    }

    void windowsThatRefuseFocusAreRaisedNotWaitedFor()
    {
        const xcb_window_t stubborn =
            owner(QStringLiteral("Stubborn"), {QStringLiteral("noinput")});
        const xcb_window_t other = owner(QStringLiteral("Other"), {QStringLiteral("name=o")});
        QVERIFY(stubborn && other);
        desktop().activate(other);
        QVERIFY(desktop().waitForActive(other));

        QElapsedTimer timer;
        timer.start();
        const Pid pid = Pid(desktop().pidOf(stubborn));
        m_windows->raise(m_windows->focusedWindowOf(pid));
        m_workspace->activate(pid);
        QVERIFY(timer.elapsed() < 50);
        QVERIFY(eventually([&] { return desktop().stackingFrontFirst().value(0) == stubborn; }));
        QCOMPARE(desktop().activeWindow(), other);
    }

    void rootChangesThatComeTogetherAreAllSeen()
    {
        // For one request openbox changes several root properties at once
        // (the desktop, the active window, the stacking): however they
        // arrive, the cache ends where the server is.
        const xcb_window_t a = owner(QStringLiteral("BurstA"), {QStringLiteral("name=a")});
        const xcb_window_t b = owner(QStringLiteral("BurstB"), {QStringLiteral("name=b")});
        QVERIFY(a && b);
        desktop().moveToDesktop(b, 1);
        // The server is where it was asked to go, and the cache with it.
        const auto settledOn = [&](quint32 current, xcb_window_t active) {
            QList<xcb_window_t> stacking;
            for (const X11Client* c : m_cache->frontToBack())
                stacking.append(c->id);
            return desktop().currentDesktop() == current && desktop().activeWindow() == active &&
                   m_cache->currentDesktop() == current && m_cache->activeWindow() == active &&
                   stacking == desktop().stackingFrontFirst();
        };
        desktop().switchDesktop(1);
        desktop().activate(b);
        QVERIFY(eventually([&] { return settledOn(1, b); }));
        desktop().switchDesktop(0);
        desktop().activate(a);
        QVERIFY(eventually([&] { return settledOn(0, a); }));
        // A desktop past openbox's four is refused, not asked for.
        const auto layout = m_spaces->mainDisplaySpaces();
        QVERIFY(layout && layout->spaceIds.size() == 4);
        QVERIFY(!m_spaces->setCurrentSpace(layout->displayId, 4));
    }
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
    const QString data = desktop.scratchPath() + QLatin1String("/data");
    QDir().mkpath(data + QLatin1String("/applications"));
    QFile entry(data + QLatin1String("/applications/org.example.Alpha.desktop"));
    if (entry.open(QIODevice::WriteOnly))
        entry.write("[Desktop Entry]\nType=Application\nName=Alpha\nExec=true\n");
    entry.close();
    qputenv("XDG_DATA_HOME", data.toUtf8());
    qputenv("DISPLAY", desktop.display().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QGuiApplication app(argc, argv);
    X11BackendTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "X11BackendTest.moc"
