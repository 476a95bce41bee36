// SPDX-License-Identifier: MIT
#include "app/OnboardingWindow.h"

#include "app/PermissionsManager.h"
#include "fakes/FakePlatform.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace velkor;

class OnboardingWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void linuxSaysWhatIsMissingAndPollsOnce();
    void grantedRefusedForGoodOrOnApple();
};

void OnboardingWindowTest::linuxSaysWhatIsMissingAndPollsOnce()
{
    fake::FakePlatform platform;
    PermissionsManager permissions(*platform.trust, *platform.clock);
    int granted = 0;
    OnboardingWindow window(permissions, PlatformTraits::forPlatform("xcb"), [&] { ++granted; });
    window.show();
    QCOMPARE(window.windowTitle(), QStringLiteral("Welcome to Velkor"));
    QVERIFY(window.body().text().startsWith(platform.trust->missingExplanation()));
    QVERIFY(!window.title().text().contains(QStringLiteral("Accessibility")));
    QVERIFY(window.requestButton().isVisible());
    QVERIFY(!window.continueButton().isVisible());
    QVERIFY(!window.grantedLabel().isVisible());

    // Two clicks, one poller.
    QTest::mouseClick(&window.requestButton(), Qt::LeftButton);
    QTest::mouseClick(&window.requestButton(), Qt::LeftButton);
    QCOMPARE(platform.clock->pendingCount(), 1);
    platform.clock->advance(3.0);
    QCOMPARE(granted, 0);

    platform.trust->trusted = true;
    platform.clock->advance(1.0);
    QCOMPARE(granted, 1);
    QCOMPARE(platform.clock->pendingCount(), 0);
    QVERIFY(!window.requestButton().isVisible());
    QVERIFY(window.grantedLabel().isVisible());
    QVERIFY(window.continueButton().isVisible());

    // Continue (Return) finishes onboarding again; the app tolerates that.
    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(granted, 2);
}

void OnboardingWindowTest::grantedRefusedForGoodOrOnApple()
{
    fake::FakePlatform platform;
    PermissionsManager permissions(*platform.trust, *platform.clock);
    int granted = 0;
    {
        // Granted elsewhere while the window was not shown: showing it reads again.
        OnboardingWindow window(permissions, PlatformTraits::forPlatform("xcb"),
                                [&] { ++granted; });
        platform.trust->trusted = true;
        window.show();
        QVERIFY(window.grantedLabel().isVisible());
        QVERIFY(!window.requestButton().isVisible());
        QTest::mouseClick(&window.continueButton(), Qt::LeftButton);
        QCOMPARE(granted, 1);
    }
    platform.trust->trusted = false;
    {
        OnboardingWindow window(permissions, PlatformTraits::forPlatform("cocoa"), [] {});
        window.show();
        QCOMPARE(window.title().text(), QStringLiteral("Velkor needs Accessibility access"));
        QCOMPARE(window.requestButton().text(), QStringLiteral("Open Accessibility Settings"));
        QTest::mouseClick(&window.requestButton(), Qt::LeftButton);
        QCOMPARE(platform.trust->openSettingsCount, 1);
    }
    // A Wayland session: only logging in to another session helps, and the
    // way there is spelt out.
    platform.trust->refusedAs = KeyAccess::waylandSession;
    permissions.refresh();
    OnboardingWindow window(permissions, PlatformTraits::forPlatform("xcb"), [] {});
    window.show();
    QVERIFY(!window.requestButton().isVisible());
    QVERIFY(window.body().text().contains(waylandSessionAdvice()));
}

QTEST_MAIN(OnboardingWindowTest)
#include "OnboardingWindowTest.moc"
