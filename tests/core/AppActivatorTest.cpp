// SPDX-License-Identifier: MIT
#include "core/AppActivator.h"

#include "fakes/FakePlatform.h"

#include <QTest>

using namespace velkor;
using namespace velkor::fake;

namespace {
FakeWindow window(const QString& key)
{
    return FakeWindow{key, std::nullopt, false, std::nullopt};
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
};

QTEST_GUILESS_MAIN(AppActivatorTest)
#include "AppActivatorTest.moc"
