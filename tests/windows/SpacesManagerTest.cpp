// SPDX-License-Identifier: MIT
#include "windows/SpacesManager.h"

#include "fakes/FakePlatform.h"

#include <QTest>

using namespace velkor;
using namespace velkor::fake;

class SpacesManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void switchGoesThroughTheDesktopApiWhenItCan()
    {
        FakePlatform p;
        p.spaces->setSpaces(4, 0);
        SpacesManager spaces(*p.workspace, *p.spaces);
        QVERIFY(!spaces.switchToSpace(0));
        QVERIFY(p.log.isEmpty());

        QVERIFY(spaces.switchToSpace(2));
        QVERIFY(spaces.switchToSpace(4));
        // Past the last Space only the shortcut is left.
        QVERIFY(spaces.switchToSpace(6));
        QCOMPARE(p.log, QStringList({"setSpace:Main:102", "setSpace:Main:104", "controlKey:22"}));
    }

    void shortcutFallbackUsesTheDigitKeys()
    {
        FakePlatform p; // no readable layout
        SpacesManager spaces(*p.workspace, *p.spaces);
        for (int n = 1; n <= 9; ++n)
            QVERIFY(spaces.switchToSpace(n));
        QCOMPARE(p.log, QStringList({"controlKey:18", "controlKey:19", "controlKey:20",
                                     "controlKey:21", "controlKey:23", "controlKey:22",
                                     "controlKey:26", "controlKey:28", "controlKey:25"}));

        p.log.clear();
        QVERIFY(!spaces.switchToSpace(10));
        p.spaces->setSpaces(3, 0);
        p.spaces->canSetCurrent = false;
        QVERIFY(spaces.switchToSpace(2));
        p.spaces->canPostKeys = false;
        QVERIFY(!spaces.switchToSpace(3));
        QCOMPARE(p.log, QStringList({"controlKey:19"}));
    }

    void moveActiveWindowSendsTheFrontmostNormalWindowAndFollows()
    {
        FakePlatform p;
        p.spaces->setSpaces(4, 0);
        p.workspace->addApp(5, QStringLiteral("Term"), std::nullopt);
        p.workspace->frontmost = 5;
        p.spaces->onScreenWindows = {{40, 6, 0}, {41, 5, 25}, {42, 5, 0}, {43, 5, 0}};
        SpacesManager spaces(*p.workspace, *p.spaces);

        QCOMPARE(spaces.frontmostWindowId(), std::optional<quint32>(42));
        QVERIFY(spaces.moveActiveWindow(3));
        QCOMPARE(p.log, QStringList({"moveWindows:42:103", "setSpace:Main:103"}));

        p.log.clear();
        QVERIFY(!spaces.moveActiveWindow(5)); // only four Spaces
        QVERIFY(!spaces.moveActiveWindow(0));
        p.spaces->canMoveWindows = false;
        QVERIFY(!spaces.moveActiveWindow(2));
        p.spaces->canMoveWindows = true;
        p.spaces->onScreenWindows = {{40, 6, 0}, {41, 5, 25}};
        QVERIFY(!spaces.moveActiveWindow(3));
        p.workspace->frontmost.reset();
        QVERIFY(!spaces.frontmostWindowId());
        QVERIFY(p.log.isEmpty());
    }

    void gatherMovesEveryWindowOfTheAppToTheCurrentSpace()
    {
        FakePlatform p;
        p.spaces->setSpaces(3, 1);
        p.spaces->allWindows = {{10, 5, 0}, {11, 6, 0}, {12, 5, 3}, {13, 5, 0}};
        p.spaces->onScreenWindows = {{10, 5, 0}};
        SpacesManager spaces(*p.workspace, *p.spaces);
        spaces.gatherWindows(5);
        QCOMPARE(p.log, QStringList({"moveWindows:10,12,13:102"}));

        p.log.clear();
        spaces.gatherWindows(99); // owns nothing
        p.spaces->layout->currentIndex = 3;
        spaces.gatherWindows(5);
        p.spaces->layout.reset();
        spaces.gatherWindows(5);
        QVERIFY(p.log.isEmpty());
    }
};

QTEST_GUILESS_MAIN(SpacesManagerTest)
#include "SpacesManagerTest.moc"
