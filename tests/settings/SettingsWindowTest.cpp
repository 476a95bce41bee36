// SPDX-License-Identifier: MIT
#include "settings/SettingsWindow.h"

#include "app/PermissionsManager.h"
#include "catalogue/AppRegistry.h"
#include "fakes/FakePlatform.h"
#include "settings/AppearancePane.h"
#include "settings/AppsPane.h"
#include "settings/BehaviourPane.h"
#include "settings/GeneralPane.h"
#include "settings/Preferences.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

namespace {

// Settings, three running apps and a permissions manager, fresh for each test.
struct Fixture
{
    QTemporaryDir dir;
    fake::FakePlatform platform;
    Preferences prefs{
        std::make_unique<QSettings>(dir.filePath("velkor.ini"), QSettings::IniFormat)};
    AppRegistry registry{withApps(), nullptr, prefs};
    PermissionsManager permissions{*platform.trust, *platform.clock};
    std::unique_ptr<SettingsWindow> window;

    fake::FakeWorkspace& withApps()
    {
        fake::FakeWorkspace& apps = *platform.workspace;
        apps.addApp(11, "Calculator", QStringLiteral("org.gnome.Calculator"),
                    QStringLiteral("/usr/share/applications/org.gnome.Calculator.desktop"));
        apps.addApp(12, "xterm", std::nullopt);
        apps.addApp(13, "Firefox", QStringLiteral("firefox"));
        return apps;
    }

    SettingsWindow& makeWindow(KeyNaming naming = KeyNaming::pc, bool settingsPage = false)
    {
        const SettingsContext context{prefs,
                                      registry,
                                      permissions,
                                      *platform.trust,
                                      *platform.loginItem,
                                      *platform.shell,
                                      PlatformTraits{naming, settingsPage},
                                      QStringLiteral("1.2.3")};
        window = std::make_unique<SettingsWindow>(context);
        window->show();
        return *window;
    }

    // What the settings file holds, as the next start would read it.
    QVariant stored(const QString& key)
    {
        prefs.store().sync();
        return QSettings(dir.filePath("velkor.ini"), QSettings::IniFormat).value(key);
    }
};

void choose(QComboBox& picker, const QString& text)
{
    const int index = picker.findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    // As the user does it: the item activated from the open list.
    picker.setCurrentIndex(index);
    emit picker.activated(index);
}

void click(QCheckBox* box)
{
    // On the box itself: a stretched row's middle may be empty space.
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(box->height() / 2, box->height() / 2));
}

} // namespace

class SettingsWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void sidebarSwitchesPanesAndFooterShowsVersion();
    void activationKeyPickerUsesPlatformNamesAndNotes();
    void keyAccessRowAndKeyCheckFollowTheMonitor();
    void togglesAndPickersWriteTheirSettings();
    void delaySliderStaysOnTheGridAndControlsFollowTheSettings();
    void appsPaneExcludesAndRefreshes();
};

void SettingsWindowTest::sidebarSwitchesPanesAndFooterShowsVersion()
{
    Fixture f;
    SettingsWindow& window = f.makeWindow();
    QCOMPARE(window.windowTitle(), QStringLiteral("Velkor Settings"));
    QCOMPARE(window.versionLabel().text(), QStringLiteral("Velkor 1.2.3"));
    QListWidget& sidebar = window.sidebar();
    QCOMPARE(window.currentPane(), SettingsPane::general);
    QVERIFY(window.general().isVisible());

    const QRect appearanceRow = sidebar.visualItemRect(sidebar.item(2));
    QTest::mouseClick(sidebar.viewport(), Qt::LeftButton, {}, appearanceRow.center());
    QCOMPARE(window.currentPane(), SettingsPane::appearance);
    QVERIFY(window.appearance().isVisible());
    QVERIFY(!window.general().isVisible());

    // Only without a tray does the window say how to come back to it.
    QVERIFY(!window.trayMissingLabel().isVisible());
    f.platform.shell->setTray(false);
    QVERIFY(window.trayMissingLabel().isVisible());
    f.platform.shell->setTray(true);
    QVERIFY(!window.trayMissingLabel().isVisible());
}

void SettingsWindowTest::activationKeyPickerUsesPlatformNamesAndNotes()
{
    Fixture f;
    SettingsWindow& window = f.makeWindow(KeyNaming::pc);
    GeneralPane& general = window.general();
    QComboBox& picker = general.activationKeyPicker();
    // The group titles cannot be chosen.
    auto* model = qobject_cast<QStandardItemModel*>(picker.model());
    QVERIFY(!(model->item(0)->flags() & Qt::ItemIsEnabled));
    QVERIFY(!(model->item(4)->flags() & Qt::ItemIsEnabled));
    QCOMPARE(picker.currentText(), QStringLiteral("Right Super"));
    QVERIFY(general.rightHandNote().isVisible());
    QVERIFY(!general.leftHandWarning().isVisible());

    choose(picker, QStringLiteral("Left Alt"));
    QCOMPARE(f.prefs.modifierKey(), ModifierKey::leftOption);
    QCOMPARE(f.stored("modifierKey").toString(), QStringLiteral("leftOption"));
    QVERIFY(general.leftHandWarning().isVisible());
    QVERIFY(!general.rightHandNote().isVisible());

    choose(picker, QStringLiteral("Right Ctrl"));
    QCOMPARE(f.stored("modifierKey").toString(), QStringLiteral("rightControl"));
    QVERIFY(general.rightHandNote().isVisible());
    QVERIFY(!general.leftHandWarning().isVisible());
    QVERIFY(!general.keyCaveat().isVisible());

    choose(picker, QStringLiteral("Right Alt"));
    QVERIFY(general.keyCaveat().isVisible());
    QVERIFY(general.keyCaveat().text().contains(QStringLiteral("AltGr")));

    // The same key under Apple naming: its own label and no AltGr caveat.
    SettingsWindow& mac = f.makeWindow(KeyNaming::apple);
    QCOMPARE(mac.general().activationKeyPicker().currentText(), QStringLiteral("Right Option (⌥)"));
    QVERIFY(!mac.general().keyCaveat().isVisible());
}

void SettingsWindowTest::keyAccessRowAndKeyCheckFollowTheMonitor()
{
    Fixture f;
    SettingsWindow& linux = f.makeWindow(KeyNaming::pc, false);
    GeneralPane& general = linux.general();
    QCOMPARE(general.permissionState().text(), QStringLiteral("Keyboard access required"));
    // No system page to open on this platform.
    QVERIFY(!general.openSettingsButton().isVisible());

    // Trusted, but another program holds the key: the row says so and what
    // to do, and clears once the key is ours.
    f.platform.trust->trusted = true;
    f.permissions.refresh();
    QCOMPARE(general.permissionState().text(), QStringLiteral("Keyboard access granted"));
    QVERIFY(!general.permissionDetail().isVisible());
    f.permissions.setMonitorAccess(KeyAccess::activationKeyTaken);
    QCOMPARE(general.permissionState().text(),
             QStringLiteral("The activation key is taken by another program"));
    QVERIFY(general.permissionDetail().isVisible());
    QVERIFY(general.permissionDetail().text().contains(QStringLiteral("another activation key")));
    QVERIFY(!general.openSettingsButton().isVisible());
    f.permissions.setMonitorAccess(KeyAccess::active);
    QCOMPARE(general.permissionState().text(), QStringLiteral("Keyboard access granted"));
    QVERIFY(!general.permissionDetail().isVisible());

    // The "press it now" check lights when the key reaches the monitor, and
    // asks again for a newly chosen key.
    QVERIFY(!general.keyCheckLit());
    QVERIFY(general.keyCheck().text().contains(QStringLiteral("Press Right Super now")));
    f.permissions.noteActivationKeyPressed();
    QVERIFY(general.keyCheckLit());
    QCOMPARE(general.keyCheck().text(), QStringLiteral("✓ Velkor sees Right Super."));
    choose(general.activationKeyPicker(), QStringLiteral("Right Ctrl"));
    QVERIFY(!general.keyCheckLit());
    QVERIFY(general.keyCheck().text().contains(QStringLiteral("Press Right Ctrl now")));

    f.platform.trust->trusted = false;
    f.permissions.refresh();
    SettingsWindow& mac = f.makeWindow(KeyNaming::apple, true);
    QCOMPARE(mac.general().permissionState().text(), QStringLiteral("Accessibility required"));
    QPushButton& open = mac.general().openSettingsButton();
    QVERIFY(open.isVisible());
    QTest::mouseClick(&open, Qt::LeftButton);
    QCOMPARE(f.platform.trust->openSettingsCount, 1);

    f.platform.trust->trusted = true;
    f.permissions.refresh();
    QCOMPARE(mac.general().permissionState().text(), QStringLiteral("Accessibility granted"));
    QVERIFY(!open.isVisible());
}

void SettingsWindowTest::togglesAndPickersWriteTheirSettings()
{
    Fixture f;
    SettingsWindow& window = f.makeWindow();
    GeneralPane& general = window.general();
    BehaviourPane& behaviour = window.behaviour();
    AppearancePane& appearance = window.appearance();

    const struct
    {
        SettingsPane pane;
        QCheckBox* box;
        const char* key;
        bool before;
    } toggles[] = {
        {SettingsPane::general, &general.searchIncludesApps(), "searchIncludesApps", true},
        {SettingsPane::general, &general.launchAtLogin(), "launchAtLogin", false},
        {SettingsPane::behaviour, &behaviour.switchOnRelease(), "switchOnRelease", false},
        {SettingsPane::behaviour, &behaviour.cmdBacktickCycle(), "cmdBacktickCycle", true},
        {SettingsPane::behaviour, &behaviour.replaceCommandTab(), "replaceCommandTab", false},
        {SettingsPane::behaviour, &behaviour.mouseFollowsFocus(), "mouseFollowsFocus", false},
        {SettingsPane::appearance, &appearance.showOverlay(), "overlayEnabled", true},
        {SettingsPane::appearance, &appearance.blurredBackground(), "overlayBlur", true},
    };
    for (const auto& toggle : toggles) {
        window.showPane(toggle.pane);
        QCOMPARE(toggle.box->isChecked(), toggle.before);
        click(toggle.box);
        QCOMPARE(f.stored(toggle.key).toBool(), !toggle.before);
    }
    QCOMPARE(f.prefs.switchOnRelease(), true);
    QCOMPARE(f.prefs.blurEnabled(), false);
    // Launch at login registers once each way.
    fake::FakeLoginItem& item = *f.platform.loginItem;
    QCOMPARE(item.registerCalls, 1);
    window.showPane(SettingsPane::general);
    click(&general.launchAtLogin());
    QCOMPARE(item.unregisterCalls, 1);
    QCOMPARE(item.registerCalls, 1);
    // The overlay's other controls stay usable while it is switched off.
    QVERIFY(!f.prefs.overlayEnabled());
    QVERIFY(appearance.position().isEnabled());
    QVERIFY(appearance.delaySlider().isEnabled());

    choose(behaviour.spaceMode(), QStringLiteral("Gather windows to current desktop"));
    QCOMPARE(f.stored("spaceMode").toString(), QStringLiteral("gatherWindows"));
    QCOMPARE(appearance.position().currentText(), QStringLiteral("Bottom Right"));
    choose(appearance.position(), QStringLiteral("Top Left"));
    QCOMPARE(f.stored("overlayPosition").toString(), QStringLiteral("topLeft"));
    QCOMPARE(appearance.theme().currentText(), QStringLiteral("System"));
    choose(appearance.theme(), QStringLiteral("Dark"));
    QCOMPARE(f.stored("theme").toString(), QStringLiteral("dark"));
    QCOMPARE(f.prefs.theme(), AppTheme::dark);
}

void SettingsWindowTest::delaySliderStaysOnTheGridAndControlsFollowTheSettings()
{
    Fixture f;
    SettingsWindow& window = f.makeWindow();
    window.showPane(SettingsPane::appearance);
    AppearancePane& pane = window.appearance();
    QSlider& slider = pane.delaySlider();
    QCOMPARE(pane.delayText().text(), QStringLiteral("0.25s"));

    slider.setFocus();
    // Paging moves on the same grid as the arrows.
    const std::pair<Qt::Key, const char*> steps[] = {{Qt::Key_Right, "0.30"},
                                                     {Qt::Key_End, "1.00"},
                                                     {Qt::Key_Home, "0.00"},
                                                     {Qt::Key_PageUp, "0.10"}};
    for (const auto& [key, seconds] : steps) {
        QTest::keyClick(&slider, key);
        QCOMPARE(f.stored("overlayDelay").toDouble(), QString::fromLatin1(seconds).toDouble());
        QCOMPARE(pane.delayText().text(), QString::fromLatin1(seconds) + QLatin1Char('s'));
    }

    // Settings changed elsewhere show in the controls.
    f.prefs.setMouseFollowsFocus(true);
    f.prefs.setOverlayPosition(OverlayPosition::center);
    f.prefs.setModifierKey(ModifierKey::leftControl);
    f.prefs.setOverlayDelay(0.5);
    QVERIFY(window.behaviour().mouseFollowsFocus().isChecked());
    QCOMPARE(pane.position().currentText(), QStringLiteral("Center"));
    QCOMPARE(window.general().activationKeyPicker().currentText(), QStringLiteral("Left Ctrl"));
    QCOMPARE(pane.delayText().text(), QStringLiteral("0.50s"));
    QCOMPARE(slider.value(), 10);
}

void SettingsWindowTest::appsPaneExcludesAndRefreshes()
{
    Fixture f;
    SettingsWindow& window = f.makeWindow();
    window.showPane(SettingsPane::apps);
    AppsPane& pane = window.apps();
    QStringList names;
    for (QCheckBox* row : pane.rows())
        names << row->text();
    // The registry's order (by name), not the platform's.
    QCOMPARE(names, (QStringList{"Calculator", "Firefox", "xterm"}));
    QVERIFY(!pane.rows()[2]->isEnabled()); // xterm has no bundle id
    QVERIFY(pane.rows()[0]->isEnabled());

    QSignalSpy refreshed(&f.registry, &AppRegistry::runningAppsChanged);
    click(pane.rows()[1]);
    QCOMPARE(f.prefs.excludedBundleIds(), QStringList{"firefox"});
    QCOMPARE(f.stored("excludedBundleIds").toStringList(), QStringList{"firefox"});
    QCOMPARE(refreshed.count(), 1);
    // Excluded apps leave the registry's list, and so the pane.
    names.clear();
    for (QCheckBox* row : pane.rows())
        names << row->text();
    QCOMPARE(names, (QStringList{"Calculator", "xterm"}));

    QTRY_VERIFY(pane.rows()[0]->isVisible()); // new rows show once the loop runs
    click(pane.rows()[0]);
    QCOMPARE(f.prefs.excludedBundleIds(), (QStringList{"firefox", "org.gnome.Calculator"}));
    QCOMPARE(refreshed.count(), 2);
    QCOMPARE(pane.rows().size(), 1);
}

QTEST_MAIN(SettingsWindowTest)
#include "SettingsWindowTest.moc"
