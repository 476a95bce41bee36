// SPDX-License-Identifier: MIT
#include "app/ShellWindows.h"

#include "app/FirstStartNotice.h"
#include "app/OnboardingWindow.h"
#include "app/PermissionsManager.h"
#include "catalogue/AppRegistry.h"
#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"
#include "settings/SettingsWindow.h"

#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

class ShellWindowsTest : public QObject
{
    Q_OBJECT
private slots:
    void windowsAreMadeOnceAndPresenceFollowsThem();
    void firstStartNoticeComesOncePerInstallation();
};

void ShellWindowsTest::firstStartNoticeComesOncePerInstallation()
{
    QTemporaryDir dir;
    const QString file = dir.filePath("v.ini");
    int settingsOpened = 0;
    const auto openSettings = [&] { ++settingsOpened; };
    {
        QSettings store(file, QSettings::IniFormat);
        const auto notice =
            FirstStartNotice::showOnce(store, QStringLiteral("Right Super"), openSettings);
        QVERIFY(notice && notice->isVisible());
        // Beside the user's work, not in front of it.
        QVERIFY(notice->testAttribute(Qt::WA_ShowWithoutActivating));
        QVERIFY(!notice->isModal());
        QVERIFY(notice->message().text().contains(QStringLiteral("No Right Super")));
        QTest::mouseClick(&notice->settingsButton(), Qt::LeftButton);
        QCOMPARE(settingsOpened, 1);
        QVERIFY(!notice->isVisible());
        QVERIFY(!FirstStartNotice::showOnce(store, QStringLiteral("Right Super"), openSettings));
    }
    // The next start reads the same store.
    QSettings again(file, QSettings::IniFormat);
    QVERIFY(!FirstStartNotice::showOnce(again, QStringLiteral("Right Super"), openSettings));
}

void ShellWindowsTest::windowsAreMadeOnceAndPresenceFollowsThem()
{
    QTemporaryDir dir;
    fake::FakePlatform platform;
    Preferences prefs(std::make_unique<QSettings>(dir.filePath("v.ini"), QSettings::IniFormat));
    AppRegistry registry(*platform.workspace, nullptr, prefs);
    PermissionsManager permissions(*platform.trust, *platform.clock);
    const SettingsContext context{prefs,
                                  registry,
                                  permissions,
                                  *platform.trust,
                                  *platform.loginItem,
                                  *platform.shell,
                                  PlatformTraits::forPlatform("xcb"),
                                  QStringLiteral("0.1.0")};
    int granted = 0;
    ShellWindows windows(context, [&] { ++granted; });
    QList<bool>& presence = platform.shell->presence;
    QVERIFY(!windows.settingsWindow());

    windows.showSettings();
    SettingsWindow* settings = windows.settingsWindow();
    QVERIFY(settings && settings->isVisible());
    QCOMPARE(presence, QList<bool>{true});
    settings->showPane(SettingsPane::apps);

    // Shown again: the same window, as it was left.
    windows.showSettings();
    QCOMPARE(windows.settingsWindow(), settings);
    QCOMPARE(settings->currentPane(), SettingsPane::apps);

    windows.showPermissions();
    OnboardingWindow* onboarding = windows.onboardingWindow();
    QVERIFY(onboarding && onboarding->isVisible());

    // One of two windows closed: still a regular app.
    const int before = int(presence.size());
    onboarding->close();
    QTest::qWait(20);
    QCOMPARE(presence.size(), before);
    QVERIFY(!presence.contains(false));

    // The last one closed: back to an accessory.
    settings->close();
    QTRY_COMPARE(presence.last(), false);
    QVERIFY(!settings->isVisible());

    windows.showPermissions();
    QCOMPARE(windows.onboardingWindow(), onboarding);
    QCOMPARE(presence.last(), true);
    windows.closePermissions();
    QVERIFY(!onboarding->isVisible());
    QTRY_COMPARE(presence.last(), false);
    QCOMPARE(granted, 0);
}

QTEST_MAIN(ShellWindowsTest)
#include "ShellWindowsTest.moc"
