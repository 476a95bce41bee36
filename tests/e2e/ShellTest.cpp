// SPDX-License-Identifier: MIT
#include "DesktopTestCase.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QProcess>
#include <QtTest>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace velkor;
using namespace velkor::e2e;

namespace {

template <typename T> using Reply = std::unique_ptr<T, decltype(&free)>;

// Every window below root, depth first (override-redirect windows and the
// window manager's frames alike).
QList<xcb_window_t> allWindows(xcb_connection_t* c, xcb_window_t root)
{
    QList<xcb_window_t> result;
    Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr),
                                       &free);
    if (!tree)
        return result;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        result.append(children[i]);
        result.append(allWindows(c, children[i]));
    }
    return result;
}

QString windowName(xcb_connection_t* c, xcb_window_t window)
{
    Reply<xcb_get_property_reply_t> name(
        xcb_get_property_reply(
            c, xcb_get_property(c, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, 256),
            nullptr),
        &free);
    if (!name)
        return {};
    return QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(name.get())),
                             xcb_get_property_value_length(name.get()));
}

bool isViewable(xcb_connection_t* c, xcb_window_t window)
{
    Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr), &free);
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

// Shown windows with this exact title.
QList<xcb_window_t> shownWindowsNamed(XDesktop& desktop, const QString& title)
{
    xcb_connection_t* c = desktop.connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    QList<xcb_window_t> found;
    for (const xcb_window_t window : allWindows(c, root))
        if (windowName(c, window) == title && isViewable(c, window))
            found.append(window);
    return found;
}

xcb_window_t selectionOwner(XDesktop& desktop, const char* name)
{
    xcb_connection_t* c = desktop.connection();
    Reply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, uint16_t(strlen(name)), name), nullptr),
        &free);
    if (!atom)
        return 0;
    Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom->atom), nullptr), &free);
    return owner ? owner->owner : xcb_window_t(0);
}

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
    int outside = -1; // just outside the pill's left end
    int inside = -1;  // just inside it
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
// without dots, sits in the middle of the window inside the view's 34-pixel
// padding.
std::optional<AroundThePill> lookAroundThePill(XDesktop& desktop)
{
    const QList<xcb_window_t> overlays = shownWindowsNamed(desktop, "Velkor overlay");
    if (overlays.isEmpty())
        return std::nullopt;
    const QRect window = desktop.frame(overlays.first());
    const int padding = 34;
    const int middle = window.center().y();
    AroundThePill seen;
    seen.behind = qGray(desktop.pixel({window.left() - 30, middle}));
    seen.margin = qGray(desktop.pixel(window.topLeft() + QPoint(4, 4)));
    seen.outside = qGray(desktop.pixel({window.left() + padding - 2, middle}));
    seen.inside = qGray(desktop.pixel({window.left() + padding + 3, middle}));
    seen.below = qGray(desktop.pixel({window.center().x(), window.bottom() - padding + 4}));
    return seen;
}

void click(XDesktop& desktop, QPoint where, uint8_t button)
{
    desktop.warpPointer(where);
    xcb_connection_t* c = desktop.connection();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    xcb_test_fake_input(c, XCB_BUTTON_PRESS, button, XCB_CURRENT_TIME, root, 0, 0, 0);
    xcb_test_fake_input(c, XCB_BUTTON_RELEASE, button, XCB_CURRENT_TIME, root, 0, 0, 0);
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
    void overlayAppearsInTheCornerWithoutTakingFocus()
    {
        const xcb_window_t term = desktop().launchTerminal(QStringLiteral("Workbench"));
        QVERIFY(term);
        desktop().activate(term);
        QVERIFY(desktop().waitForActive(QStringLiteral("Workbench")));
        VelkorInstance velkor(desktop());
        {
            auto prefs = velkor.preferences();
            prefs->setOverlayPosition(OverlayPosition::topLeft);
            prefs->setOverlayDelay(0.3);
        }
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));

        QElapsedTimer held;
        desktop().press(key::SuperR);
        held.start();
        QVERIFY(desktop().waitFor(
            [&] { return !shownWindowsNamed(desktop(), "Velkor overlay").isEmpty(); }, 3000));
        // Not before the delay.
        QVERIFY2(held.elapsed() >= 250, qPrintable(QString::number(held.elapsed())));
        const xcb_window_t overlay = shownWindowsNamed(desktop(), "Velkor overlay").first();
        const QRect rect = desktop().frame(overlay); // unmanaged: no frame extents
        QCOMPARE(rect.topLeft(), QPoint(24, 24));
        QVERIFY(rect.width() >= 180 && rect.height() >= 60);
        // The terminal keeps the keyboard while the overlay shows.
        QCOMPARE(desktop().activeClass(), QStringLiteral("Workbench"));
        QCOMPARE(desktop().activeWindow(), term);

        desktop().release(key::SuperR);
        QVERIFY(desktop().waitFor(
            [&] { return shownWindowsNamed(desktop(), "Velkor overlay").isEmpty(); }, 2000));
        QCOMPARE(desktop().activeWindow(), term);
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
            desktop().waitFor(
                [&] { return shownWindowsNamed(desktop(), "Velkor overlay").isEmpty(); });
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

        QCOMPARE(selectionOwner(desktop(), "_NET_WM_CM_S0"), xcb_window_t(0));
        QVERIFY2(holdUntil(cut), qPrintable(last.describe()));

        Helper compositor(desktop(), QStringLiteral("xcompmgr"), {});
        if (!compositor.started())
            QSKIP("xcompmgr is not installed");
        QVERIFY(desktop().waitFor([&] { return selectionOwner(desktop(), "_NET_WM_CM_S0") != 0; },
                                  5000));
        QVERIFY2(holdUntil(seeThrough), qPrintable(last.describe()));

        compositor.stop();
        QVERIFY(desktop().waitFor([&] { return selectionOwner(desktop(), "_NET_WM_CM_S0") == 0; },
                                  5000));
        QVERIFY2(holdUntil(cut), qPrintable(last.describe()));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    // Each hold schedules the overlay; a switch that ends before the delay
    // must not show it. The delay is far longer than any hold on a loaded
    // machine, so a showing is a fault whatever the timing. That the release
    // cancels the pending show is the overlay controller's unit test.
    void quickSwitchNeverShowsTheOverlay()
    {
        QVERIFY(desktop().launchTerminal(QStringLiteral("Alpha")));
        QVERIFY(desktop().launchTerminal(QStringLiteral("Beta")));
        QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        VelkorInstance velkor(desktop());
        velkor.preferences()->setOverlayDelay(3600);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));

        bool seen = false;
        for (int round = 0; round < 3; ++round) {
            desktop().holding(key::SuperR, [&] {
                desktop().type(QStringLiteral("a"));
                seen = seen || !shownWindowsNamed(desktop(), "Velkor overlay").isEmpty();
            });
            QVERIFY(desktop().waitForActive(QStringLiteral("Alpha")));
            seen = seen || !shownWindowsNamed(desktop(), "Velkor overlay").isEmpty();
            desktop().holding(key::SuperR, [&] { desktop().type(QStringLiteral("b")); });
            QVERIFY(desktop().waitForActive(QStringLiteral("Beta")));
        }
        QVERIFY(!seen);
        QVERIFY(shownWindowsNamed(desktop(), "Velkor overlay").isEmpty());
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    void trayIconIsEmbeddedAndOpensItsMenu()
    {
        QProcess tray;
        tray.setProcessEnvironment(desktop().environment());
        tray.start(QStringLiteral("trayer"),
                   {"--edge", "top", "--align", "right", "--widthtype", "request", "--height", "24",
                    "--SetDockType", "true"});
        if (!tray.waitForStarted(5000))
            QSKIP("trayer is not installed");
        xcb_connection_t* c = desktop().connection();
        // A tray host owns the system tray selection of screen 0.
        const auto trayAtom = [&] {
            Reply<xcb_intern_atom_reply_t> a(
                xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, 19, "_NET_SYSTEM_TRAY_S0"), nullptr),
                &free);
            return a ? a->atom : xcb_atom_t(0);
        }();
        auto trayOwner = [&] {
            Reply<xcb_get_selection_owner_reply_t> owner(
                xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, trayAtom), nullptr),
                &free);
            return owner ? owner->owner : xcb_window_t(0);
        };
        QVERIFY2(desktop().waitFor([&] { return trayOwner() != 0; }, 5000), "no tray host");
        // trayer owns the selection before its panel is up to take icons.
        XDesktop::settle(500);

        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
        // The icon's window is reparented into the tray host's window.
        xcb_window_t icon = 0;
        QVERIFY2(desktop().waitFor(
                     [&] {
                         for (const xcb_window_t w : allWindows(c, root)) {
                             Reply<xcb_query_tree_reply_t> tree(
                                 xcb_query_tree_reply(c, xcb_query_tree(c, w), nullptr), &free);
                             const bool embedded =
                                 tree && tree->parent != root &&
                                 desktop().wmClass(w) == QLatin1String("Velkor") &&
                                 isViewable(c, w);
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
        const QList<xcb_window_t> existing = allWindows(c, root);
        const QSet<xcb_window_t> before(existing.cbegin(), existing.cend());
        click(desktop(), iconRect.center(), 3);
        // The menu: a new shown window of ours, tall enough for its entries.
        QVERIFY2(desktop().waitFor(
                     [&] {
                         for (const xcb_window_t w : allWindows(c, root))
                             if (!before.contains(w) && isViewable(c, w) &&
                                 desktop().frame(w).height() > 100)
                                 return true;
                         return false;
                     },
                     3000),
                 qPrintable(velkor.log()));
        desktop().tap(key::Escape);
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
        tray.terminate();
        tray.waitForFinished(3000);
    }

    void secondStartShowsTheSettingsWindow()
    {
        PrivateSessionBus bus;
        if (!bus.start())
            QSKIP("dbus-daemon is not installed");

        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY(shownWindowsNamed(desktop(), "Velkor Settings").isEmpty());

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

        QVERIFY2(
            desktop().waitFor(
                [&] { return !shownWindowsNamed(desktop(), "Velkor Settings").isEmpty(); }, 5000),
            qPrintable(velkor.log()));
        QVERIFY(velkor.isRunning());
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    void aBusThatWillNotTellDoesNotStopVelkor()
    {
        PrivateSessionBus bus;
        if (!bus.start("session-bus-refusing-velkor.conf"))
            QSKIP("dbus-daemon is not installed");
        VelkorInstance velkor(desktop());
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY(velkor.isRunning());
        QVERIFY2(velkor.log().contains(QStringLiteral("session bus refused the name")),
                 qPrintable(velkor.log()));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }
};

QTEST_GUILESS_MAIN(ShellTest)
#include "ShellTest.moc"
