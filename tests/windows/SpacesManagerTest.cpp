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
    void switchUsesTheDesktopApiElseTheDigitShortcut()
    {
        FakePlatform p;
        p.spaces->setSpaces(4, 0);
        SpacesManager spaces(*p.workspace, *p.spaces);
        QVERIFY(!spaces.switchToSpace(0));
        QVERIFY(spaces.switchToSpace(2));
        QVERIFY(spaces.switchToSpace(6)); // past the last Space
        p.spaces->canSetCurrent = false;
        QVERIFY(spaces.switchToSpace(1));
        QCOMPARE(p.log, QStringList({"setSpace:Main:102", "controlKey:22", "controlKey:18"}));

        p.log.clear();
        p.spaces->layout.reset();
        for (int n = 1; n <= 10; ++n)
            QCOMPARE(spaces.switchToSpace(n), n <= 9);
        QCOMPARE(p.log, QStringList({"controlKey:18", "controlKey:19", "controlKey:20",
                                     "controlKey:21", "controlKey:23", "controlKey:22",
                                     "controlKey:26", "controlKey:28", "controlKey:25"}));
    }

    void moveActiveWindowSendsTheFrontmostNormalWindowAndFollows()
    {
        FakePlatform p;
        p.spaces->setSpaces(4, 0);
        p.workspace->frontmost = 5;
        p.spaces->onScreenWindows = {{40, 6, 0}, {41, 5, 25}, {42, 5, 0}, {43, 5, 0}};
        SpacesManager spaces(*p.workspace, *p.spaces);
        QVERIFY(spaces.moveActiveWindow(3));
        QVERIFY(!spaces.moveActiveWindow(5)); // only four Spaces
        p.spaces->canMoveWindows = false;
        QVERIFY(!spaces.moveActiveWindow(2));
        p.spaces->canMoveWindows = true;
        p.spaces->onScreenWindows = {{40, 6, 0}, {41, 5, 25}}; // no normal window
        QVERIFY(!spaces.moveActiveWindow(3));
        QCOMPARE(p.log, QStringList({"moveWindows:42:103", "setSpace:Main:103"}));
    }

    void gatherMovesEveryWindowOfTheAppToTheCurrentSpace()
    {
        FakePlatform p;
        p.spaces->setSpaces(3, 1);
        p.spaces->allWindows = {{10, 5, 0}, {11, 6, 0}, {12, 5, 3}, {13, 5, 0}};
        SpacesManager spaces(*p.workspace, *p.spaces);
        spaces.gatherWindows(5);
        spaces.gatherWindows(99); // owns nothing
        p.spaces->layout->currentIndex = 3;
        spaces.gatherWindows(5);
        QCOMPARE(p.log, QStringList({"moveWindows:10,12,13:102"}));
    }
};

QTEST_GUILESS_MAIN(SpacesManagerTest)
#include "SpacesManagerTest.moc"
