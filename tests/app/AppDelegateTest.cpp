// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/OnboardingWindow.h"
#include "app/ShellWindows.h"
#include "fakes/FakePlatform.h"
#include "settings/SettingsWindow.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

class AppDelegateTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        // The delegate opens the user's own settings store; here it is a
        // scratch one (an XDG folder on Linux).
        QVERIFY(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_config.path()));
        QCoreApplication::setOrganizationName(QStringLiteral("velkor-tests"));
    }
    void reopeningTheRunningAppShowsItsSettings();

private:
    QTemporaryDir m_config;
};

void AppDelegateTest::reopeningTheRunningAppShowsItsSettings()
{
    fake::FakePlatform fakes;
    fake::FakeShellIntegration& shell = *fakes.shell;
    AppDelegate delegate(std::make_unique<Platform>(std::move(fakes.platform())));
    QVERIFY(delegate.start());
    // Not trusted: the onboarding window, and nothing else yet.
    QVERIFY(delegate.windows().onboardingWindow());
    QVERIFY(!delegate.windows().settingsWindow());

    // The user opens Velkor again from the Finder, the Dock or Spotlight.
    QVERIFY(shell.reopen);
    shell.reopen();
    SettingsWindow* settings = delegate.windows().settingsWindow();
    QVERIFY(settings && settings->isVisible());

    // Closed and reopened: the same window comes back.
    settings->close();
    shell.reopen();
    QCOMPARE(delegate.windows().settingsWindow(), settings);
    QVERIFY(settings->isVisible());
}

QTEST_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
