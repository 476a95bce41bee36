// SPDX-License-Identifier: MIT
#include "core/AppActivator.h"

#include "fakes/FakePlatform.h"

#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {
FakeWindow window(const QString& key)
{
    return FakeWindow{key, std::nullopt, false, std::nullopt, true};
}
} // namespace

class AppActivatorTest : public QObject
{
    Q_OBJECT

private slots:
    void bringToFrontRaisesBeforeActivating()
    {
        FakePlatform p;
        p.workspace->addApp(7, QStringLiteral("Safari"), QStringLiteral("com.apple.Safari"));
        p.workspace->hidden.insert(7);
        p.windows->windows[7] = QList<FakeWindow>{window("a"), window("b")};
        p.windows->focused[7] = QStringLiteral("b");

        AppActivator(*p.workspace, *p.windows).bringToFront(7);
        QCOMPARE(p.log, QStringList({"unhide:7", "raise:b", "frontmost:7", "activate:7"}));
    }

    void withoutFocusedWindowTheFirstListedIsRaised()
    {
        FakePlatform p;
        p.workspace->addApp(7, QStringLiteral("Notes"), std::nullopt);
        p.windows->windows[7] = QList<FakeWindow>{window("w1"), window("w2"), window("w3")};
        AppActivator activator(*p.workspace, *p.windows);
        activator.bringToFront(7);
        QCOMPARE(p.log, QStringList({"raise:w1", "frontmost:7", "activate:7"}));

        // No windows, or a list that cannot be read: nothing is raised.
        p.log.clear();
        p.windows->windows[7] = QList<FakeWindow>{};
        activator.bringToFront(7);
        p.windows->windows[7] = std::nullopt;
        activator.bringToFront(7);
        QCOMPARE(p.log, QStringList({"frontmost:7", "activate:7", "frontmost:7", "activate:7"}));
    }

    void vanishedProcessIsNeitherUnhiddenNorActivated()
    {
        FakePlatform p;
        p.workspace->hidden.insert(9);
        AppActivator(*p.workspace, *p.windows).bringToFront(9);
        QCOMPARE(p.log, QStringList({"frontmost:9"}));
    }

    void activateLaunchesOnlyWhatIsNotRunning()
    {
        FakePlatform p;
        p.workspace->addApp(3, QStringLiteral("Mail"), QStringLiteral("com.apple.mail"));
        AppActivator activator(*p.workspace, *p.windows);
        const QUrl url = QUrl::fromLocalFile(QStringLiteral("/Applications/Mail.app"));

        activator.activate(AppEntry{"com.apple.mail", "Mail", url, "com.apple.mail", 3});
        QCOMPARE(p.log, QStringList({"frontmost:3", "activate:3"}));

        p.log.clear();
        activator.activate(AppEntry{"com.apple.mail", "Mail", url, "com.apple.mail", {}});
        QCOMPARE(p.log, QStringList({"open:/Applications/Mail.app"}));

        p.log.clear();
        activator.activate(AppEntry{"x", "Nothing", {}, {}, {}});
        QVERIFY(p.log.isEmpty());
    }
};

QTEST_GUILESS_MAIN(AppActivatorTest)
#include "AppActivatorTest.moc"
