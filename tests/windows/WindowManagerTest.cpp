// SPDX-License-Identifier: MIT
#include "windows/WindowManager.h"

#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"

#include <QTemporaryDir>
#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {

QStringList ids(const QList<WindowEntry>& entries)
{
    QStringList out;
    for (const WindowEntry& e : entries)
        out << e.id;
    return out;
}

FakeWindow window(const QString& key, std::optional<QString> title, std::optional<bool> minimized,
                  std::optional<QRectF> frame = std::nullopt)
{
    return FakeWindow{key, std::move(title), minimized, frame, true};
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
    void listingAppliesTheFallbacks()
    {
        Fixture f;
        f.p.windows->windows[812] =
            QList<FakeWindow>{window("a", std::nullopt, std::nullopt), window("b", QString(), true),
                              window("c", QStringLiteral("Report.pdf"), false)};
        const auto list = f.manager.windows(812, QStringLiteral("Preview"), QStringLiteral("p"));
        QCOMPARE(ids(list), QStringList({"812:0", "812:1", "812:2"}));
        QCOMPARE(list[0].title, QStringLiteral("Preview")); // unreadable title
        QCOMPARE(list[1].title, QString());                 // empty title stays empty
        QCOMPARE(list[2].title, QStringLiteral("Report.pdf"));
        QCOMPARE(list[0].isMinimized, false);
        QCOMPARE(list[1].isMinimized, true);
        QCOMPARE(FakeWindowSystem::keyOf(list[2].element), QStringLiteral("c"));
        QCOMPARE(list[2].bundleId, std::optional<QString>(QStringLiteral("p")));

        f.p.windows->windows[812] = std::nullopt; // refuses to list
        QVERIFY(f.manager.windows(812, QStringLiteral("Preview"), std::nullopt).isEmpty());
    }

    void frontmostAppWindowsLeaveOutMinimisedOnes()
    {
        Fixture f;
        QVERIFY(f.manager.frontmostAppWindows().isEmpty());
        f.p.workspace->addApp(4, QStringLiteral("Mail"), QStringLiteral("com.apple.mail"));
        f.p.workspace->frontmost = 4;
        f.p.windows->windows[4] =
            QList<FakeWindow>{window("m1", std::nullopt, true), window("m2", std::nullopt, false)};
        const auto list = f.manager.frontmostAppWindows();
        QCOMPARE(ids(list), QStringList({"4:1"}));
        QCOMPARE(list[0].title, QStringLiteral("Mail"));

        f.p.windows->windows[4] = QList<FakeWindow>{window("m1", std::nullopt, true)};
        QVERIFY(f.manager.frontmostAppWindows().isEmpty());
        QCOMPARE(f.manager.windows(4, QString(), std::nullopt).size(), 1);
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
            f.p.windows->windows[pid] =
                QList<FakeWindow>{window(QString::number(pid), std::nullopt, pid == 4)};
        f.prefs.setExcludedBundleIds({QStringLiteral("com.apple.Music")});

        QCOMPARE(ids(f.manager.allWindows()), QStringList({"4:0", "5:0"}));
    }

    void closeAndCenterMouseActOnTheRightWindow()
    {
        Fixture f;
        f.p.windows->windows[6] =
            QList<FakeWindow>{window("min", std::nullopt, true, QRectF(0, 0, 10, 10)),
                              window("main", std::nullopt, false, QRectF(100, 200, 400, 300))};
        f.manager.centerMouse(6);
        QCOMPARE(f.p.windows->pointer, std::optional<QPointF>(QPointF(300, 350)));

        const auto list = f.manager.windows(6, QString(), std::nullopt);
        f.manager.close(list[1]);
        f.p.windows->windows[6]->first().hasCloseButton = false;
        f.manager.close(list[0]);
        QCOMPARE(f.p.log, QStringList({"warp:300,350", "close:main"}));

        // Only a minimised window, or one without a readable frame: no move.
        f.p.log.clear();
        f.p.windows->windows[7] =
            QList<FakeWindow>{window("m", std::nullopt, true, QRectF(0, 0, 9, 9))};
        f.manager.centerMouse(7);
        f.p.windows->windows[7] = QList<FakeWindow>{window("n", std::nullopt, false)};
        f.manager.centerMouse(7);
        QVERIFY(f.p.log.isEmpty());
    }

    void focusRestoresRaisesThenActivates()
    {
        Fixture f;
        f.p.workspace->addApp(8, QStringLiteral("Finder"), QStringLiteral("com.apple.finder"));
        f.p.windows->windows[8] =
            QList<FakeWindow>{window("f0", std::nullopt, false), window("f1", std::nullopt, true)};
        const auto list = f.manager.windows(8, QStringLiteral("Finder"), std::nullopt);
        f.manager.focus(list[1]);
        QCOMPARE(f.p.log,
                 QStringList({"setMinimized:f1:0", "raise:f1", "frontmost:8", "activate:8"}));

        f.p.log.clear();
        f.manager.focus(list[0]);
        f.p.workspace->removeApp(8);
        f.manager.focus(list[0]);
        QCOMPARE(f.p.log,
                 QStringList({"raise:f0", "frontmost:8", "activate:8", "raise:f0", "frontmost:8"}));
    }
};

QTEST_GUILESS_MAIN(WindowManagerTest)
#include "WindowManagerTest.moc"
