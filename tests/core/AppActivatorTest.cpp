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
        p.windows->windows[7] = QList<FakeWindow>{window("a"), window("b"), window("c")};
        p.windows->focused[7] = QStringLiteral("b");
        AppActivator activator(*p.workspace, *p.windows);
        activator.bringToFront(7);
        p.windows->focused.clear(); // no focused window: the first listed one
        activator.bringToFront(7);
        activator.bringToFront(9); // gone: nothing to unhide or activate
        QCOMPARE(p.log, QStringList({"unhide:7", "raise:b", "frontmost:7", "activate:7", "raise:a",
                                     "frontmost:7", "activate:7", "frontmost:9"}));
    }

    void activateLaunchesOnlyWhatIsNotRunning()
    {
        FakePlatform p;
        p.workspace->addApp(3, QStringLiteral("Mail"), QStringLiteral("com.apple.mail"));
        AppActivator activator(*p.workspace, *p.windows);
        const QUrl url = QUrl::fromLocalFile(QStringLiteral("/Applications/Mail.app"));
        activator.activate(AppEntry{"com.apple.mail", "Mail", url, "com.apple.mail", 3});
        activator.activate(AppEntry{"com.apple.mail", "Mail", url, "com.apple.mail", {}});
        activator.activate(AppEntry{"x", "Nothing", {}, {}, {}});
        QCOMPARE(p.log, QStringList({"frontmost:3", "activate:3", "open:/Applications/Mail.app"}));
    }
};

QTEST_GUILESS_MAIN(AppActivatorTest)
#include "AppActivatorTest.moc"
