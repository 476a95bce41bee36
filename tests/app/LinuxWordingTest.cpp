// SPDX-License-Identifier: MIT
#include "app/FirstStartNotice.h"
#include "app/OnboardingWindow.h"
#include "app/PermissionsManager.h"
#include "app/StatusMenuModel.h"
#include "catalogue/AppRegistry.h"
#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"
#include "settings/SettingsWindow.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

namespace {

// Words and glyphs that name a Mac key or feature; a Linux user knows them
// as Super, Alt, Ctrl, keyboard access and desktops.
const QRegularExpression MacWords(QStringLiteral(
    "⌘|⌥|⌃|⇧|\\bCmd\\b|\\bCommand\\b|\\bOption\\b|Accessibility|event tap|\\bSpaces?\\b|"
    "macOS|\\bDock\\b|Finder|menu bar"));

// Every text a widget tree can show, hidden or not: a hidden row may be
// shown by the next change of state.
QStringList textsOf(const QWidget& root)
{
    QStringList texts{root.windowTitle(), root.toolTip()};
    for (const QWidget* widget : root.findChildren<QWidget*>()) {
        texts << widget->toolTip();
        if (const auto* label = qobject_cast<const QLabel*>(widget))
            texts << label->text();
        else if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
            texts << button->text();
        else if (const auto* picker = qobject_cast<const QComboBox*>(widget))
            for (int i = 0; i < picker->count(); ++i)
                texts << picker->itemText(i);
        else if (const auto* list = qobject_cast<const QListWidget*>(widget))
            for (int i = 0; i < list->count(); ++i)
                texts << list->item(i)->text();
    }
    return texts;
}

void verifyNoMacWords(const QStringList& texts, const QString& where)
{
    for (const QString& text : texts) {
        const QRegularExpressionMatch match = MacWords.match(text);
        QVERIFY2(!match.hasMatch(), qPrintable(where + QLatin1String(": \"") + match.captured() +
                                               QLatin1String("\" in: ") + text));
    }
}

} // namespace

// On Linux the windows, the tray, the notices and the log speak of the keys
// and features a Linux user knows, in every state the key monitor can be in.
class LinuxWordingTest : public QObject
{
    Q_OBJECT
private slots:
    void noMacWordReachesALinuxUser()
    {
        QTemporaryDir dir;
        fake::FakePlatform platform;
        platform.workspace->addApp(11, "Calculator", QStringLiteral("org.gnome.Calculator"));
        Preferences prefs{
            std::make_unique<QSettings>(dir.filePath("velkor.ini"), QSettings::IniFormat)};
        AppRegistry registry{*platform.workspace, nullptr, prefs};
        PermissionsManager permissions{*platform.trust, *platform.clock};
        const PlatformTraits traits = PlatformTraits::forPlatform(QStringLiteral("xcb"));
        const SettingsContext context{
            prefs,           registry, permissions,          *platform.trust, *platform.loginItem,
            *platform.shell, traits,   QStringLiteral("1.0")};
        SettingsWindow settings(context);
        StatusMenuModel menu(permissions, traits.keyNaming);

        const auto verifyEverything = [&](const QString& state) {
            verifyNoMacWords(textsOf(settings), state + QLatin1String(" settings"));
            QStringList menuTexts{menu.toolTip()};
            for (const StatusMenuEntry& entry : menu.rebuild())
                menuTexts << entry.title;
            verifyNoMacWords(menuTexts, state + QLatin1String(" tray"));
            verifyNoMacWords(
                {keyAccessLogLine(permissions.keyAccess(), prefs.modifierKey(), traits.keyNaming)},
                state + QLatin1String(" log"));
        };

        for (const KeyAccess refusal : {KeyAccess::notTrusted, KeyAccess::waylandSession}) {
            platform.trust->trusted = false;
            platform.trust->refusedAs = refusal;
            permissions.refresh();
            const QString state = QStringLiteral("refused %1").arg(int(refusal));
            OnboardingWindow onboarding(permissions, traits, [] {});
            verifyNoMacWords(textsOf(onboarding), state + QLatin1String(" onboarding"));
            verifyEverything(state);
        }

        platform.trust->trusted = true;
        permissions.refresh();
        for (const KeyAccess access :
             {KeyAccess::active, KeyAccess::activationKeyTaken, KeyAccess::activationKeyMissing}) {
            permissions.setMonitorAccess(access);
            for (const ModifierKey key : allModifierKeys()) {
                prefs.setModifierKey(key);
                const QString state =
                    QStringLiteral("monitor %1, key %2").arg(int(access)).arg(rawValue(key));
                verifyEverything(state);
                // The "press it now" check lit up.
                permissions.noteActivationKeyPressed();
                verifyNoMacWords(textsOf(settings), state + QLatin1String(" key seen"));
                FirstStartNotice notice(activationKeyLabel(key, traits.keyNaming), [] {});
                verifyNoMacWords(textsOf(notice), state + QLatin1String(" first-start notice"));
            }
        }
    }
};

QTEST_MAIN(LinuxWordingTest)
#include "LinuxWordingTest.moc"
