// SPDX-License-Identifier: MIT
#include "settings/Preferences.h"

#include <QCoreApplication>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

using namespace velkor;

namespace {

// A store of the same kind as the user's (QSettings' native format: the
// user-defaults domain on macOS, an INI file on Linux) under a name of its own.
std::unique_ptr<QSettings> nativeStore()
{
    return std::make_unique<QSettings>(
        QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("VelkorTests"),
        QStringLiteral("NativeStore-%1").arg(QCoreApplication::applicationPid()));
}

} // namespace

// Every key and type Velkor stores must come back as written from the
// platform's own settings store, lists of none and of one element included.
class PreferencesNativeStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void cleanup()
    {
        auto store = nativeStore();
        store->clear();
        store->sync();
        const QString file = store->fileName();
        store.reset();
        QFile::remove(file);
    }

    void everySettingComesBack_data()
    {
        QTest::addColumn<QStringList>("excluded");
        QTest::addColumn<QStringList>("usageOfS");
        QTest::newRow("empty lists") << QStringList() << QStringList();
        QTest::newRow("one element") << QStringList{"com.apple.Safari"} << QStringList{"org.x"};
        QTest::newRow("several") << QStringList{"a.b", "c.d", "ünï.code"}
                                 << QStringList{"com.a", "com.b"};
    }

    void everySettingComesBack()
    {
        QFETCH(QStringList, excluded);
        QFETCH(QStringList, usageOfS);
        const LetterUsage usage{{QStringLiteral("s"), usageOfS},
                                {QStringLiteral("é"), {QStringLiteral("fr.app")}}};
        {
            Preferences prefs(nativeStore());
            prefs.setOverlayEnabled(false);
            prefs.setOverlayDelay(0.6);
            prefs.setOverlayPosition(OverlayPosition::center);
            prefs.setBlurEnabled(false);
            prefs.setAccentHex(QStringLiteral("#12ABef"));
            prefs.setTheme(AppTheme::light);
            prefs.setLaunchAtLogin(true);
            prefs.setSearchIncludesApps(false);
            prefs.setModifierKey(ModifierKey::rightControl);
            prefs.setLetterLaunchesApps(false);
            prefs.setCmdBacktickCycle(false);
            prefs.setReplaceCommandTab(true);
            prefs.setMouseFollowsFocus(true);
            prefs.setSpaceMode(SpaceMode::gatherWindows);
            prefs.setSwitchOnRelease(true);
            prefs.setExcludedBundleIds(excluded);
            prefs.setLetterUsage(usage);
        }
        Preferences prefs(nativeStore());
        QCOMPARE(prefs.overlayEnabled(), false);
        QCOMPARE(prefs.overlayDelay(), 0.6);
        QCOMPARE(prefs.overlayPosition(), OverlayPosition::center);
        QCOMPARE(prefs.blurEnabled(), false);
        QCOMPARE(prefs.accentHex(), QStringLiteral("#12ABef"));
        QCOMPARE(prefs.theme(), AppTheme::light);
        QCOMPARE(prefs.launchAtLogin(), true);
        QCOMPARE(prefs.searchIncludesApps(), false);
        QCOMPARE(prefs.modifierKey(), ModifierKey::rightControl);
        QCOMPARE(prefs.letterLaunchesApps(), false);
        QCOMPARE(prefs.cmdBacktickCycle(), false);
        QCOMPARE(prefs.replaceCommandTab(), true);
        QCOMPARE(prefs.mouseFollowsFocus(), true);
        QCOMPARE(prefs.spaceMode(), SpaceMode::gatherWindows);
        QCOMPARE(prefs.switchOnRelease(), true);
        QCOMPARE(prefs.excludedBundleIds(), excluded);
        QCOMPARE(prefs.letterUsage(), usage);
    }
};

QTEST_GUILESS_MAIN(PreferencesNativeStoreTest)
#include "PreferencesNativeStoreTest.moc"
