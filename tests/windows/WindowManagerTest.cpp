// SPDX-License-Identifier: MIT
#include "windows/WindowManager.h"

#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"

#include <QTemporaryDir>
#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {

QStringList describe(const QList<WindowEntry>& entries)
{
    QStringList out;
    for (const WindowEntry& e : entries)
        out << QStringLiteral("%1 %2 %3").arg(e.id, e.title).arg(int(e.isMinimized));
    return out;
}

FakeWindow window(const QString& key, std::optional<QString> title = std::nullopt,
                  std::optional<bool> minimized = false, std::optional<QRectF> frame = {})
{
    return FakeWindow{key, std::move(title), minimized, frame};
}

struct Fixture
{
    QTemporaryDir dir;
    Preferences prefs{std::make_unique<QSettings>(dir.filePath(QStringLiteral("prefs.ini")),
                                                  QSettings::IniFormat)};
    FakePlatform p;
    WindowManager manager{*p.workspace, *p.windows, prefs};
};

} // namespace

class WindowManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void listsApplyTheFallbacksAndFilters()
    {
        Fixture f;
        f.p.workspace->addApp(4, QStringLiteral("Mail"), QStringLiteral("com.apple.mail"));
        f.p.workspace->frontmost = 4;
        f.p.windows->windows[4] =
            QList<FakeWindow>{window("a", std::nullopt, std::nullopt), window("b", QString(), true),
                              window("c", QStringLiteral("Inbox"))};
        QCOMPARE(describe(f.manager.frontmostAppWindows()),
                 QStringList({"4:0 Mail 0", "4:2 Inbox 0"}));
        QCOMPARE(describe(f.manager.windows(4, QStringLiteral("Mail"), std::nullopt)),
                 QStringList({"4:0 Mail 0", "4:1  1", "4:2 Inbox 0"}));
        f.p.windows->windows[4] = std::nullopt; // refuses to list
        QVERIFY(f.manager.windows(4, QStringLiteral("Mail"), std::nullopt).isEmpty());
    }

    void allWindowsSkipsAgentsItselfAndExcludedApps()
    {
        Fixture f;
        f.p.workspace->addApp(1, QStringLiteral("Agent"), QStringLiteral("agent")).regular = false;
        f.p.workspace->addApp(2, QStringLiteral("Velkor"), QStringLiteral("org.velkor.Velkor"));
        f.p.workspace->addApp(3, QStringLiteral("Music"), QStringLiteral("com.apple.Music"));
        f.p.workspace->addApp(4, QStringLiteral("Editor"), QStringLiteral("org.editor"));
        f.p.workspace->addApp(5, QStringLiteral("xterm"), std::nullopt);
        for (Pid pid : {1, 2, 3, 4, 5})
            f.p.windows->windows[pid] = QList<FakeWindow>{window("w", std::nullopt, pid == 4)};
        f.prefs.setExcludedBundleIds({QStringLiteral("com.apple.Music")});
        QCOMPARE(describe(f.manager.allWindows()), QStringList({"4:0 Editor 1", "5:0 xterm 0"}));
    }

    void centerMouseUsesTheFirstWindowNotMinimised()
    {
        Fixture f;
        f.p.windows->windows[6] =
            QList<FakeWindow>{window("min", {}, true, QRectF(0, 0, 10, 10)),
                              window("main", {}, false, QRectF(100, 200, 400, 300))};
        f.p.windows->windows[7] = QList<FakeWindow>{window("m", {}, true, QRectF(0, 0, 9, 9))};
        f.p.windows->windows[8] = QList<FakeWindow>{window("n")}; // frame unreadable
        for (Pid pid : {6, 7, 8})
            f.manager.centerMouse(pid);
        QCOMPARE(f.p.log, QStringList({"warp:300,350"}));
    }

    void focusRestoresRaisesThenActivates()
    {
        Fixture f;
        f.p.workspace->addApp(8, QStringLiteral("Finder"), QStringLiteral("com.apple.finder"));
        f.p.windows->windows[8] = QList<FakeWindow>{window("f0"), window("f1", {}, true)};
        const auto list = f.manager.windows(8, QStringLiteral("Finder"), std::nullopt);
        f.manager.focus(list[1]);
        f.p.workspace->removeApp(8);
        f.manager.focus(list[0]);
        QCOMPARE(f.p.log, QStringList({"setMinimized:f1:0", "raise:f1", "frontmost:8", "activate:8",
                                       "raise:f0", "frontmost:8"}));
    }
};

QTEST_GUILESS_MAIN(WindowManagerTest)
#include "WindowManagerTest.moc"
