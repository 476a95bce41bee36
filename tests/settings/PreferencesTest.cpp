// SPDX-License-Identifier: MIT
#include "settings/Preferences.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace velkor;

namespace {

// QSettings caches a parsed file by name for the life of the process, so a
// file read back under the name it was written with would come from that
// cache with its original types. Reading a copy under a new name makes
// QSettings parse the text it really wrote.
QString copyUnderNewName(const QString& path)
{
    static int n = 0;
    const QString copy = path + QStringLiteral(".copy%1").arg(++n);
    QFile::copy(path, copy);
    return copy;
}

std::unique_ptr<QSettings> iniAt(const QString& path)
{
    return std::make_unique<QSettings>(path, QSettings::IniFormat);
}

void writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class PreferencesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_configHome;

private slots:
    void initTestCase()
    {
        // Keeps the user store of this machine out of reach.
        qputenv("XDG_CONFIG_HOME", m_configHome.path().toUtf8());
    }

    void userStoreIsTheNativeFileUnderTheConfigFolder()
    {
        const QString expected = m_configHome.filePath(QStringLiteral("Velkor/Velkor.conf"));
        Preferences::setApplicationIdentity();
        {
            Preferences prefs(Preferences::openUserStore());
            const QString file = prefs.store().fileName();
            if (file.endsWith(QLatin1String(".plist"))) {
                // macOS: the user-defaults domain must be the bundle's own.
                QVERIFY2(file.endsWith(QLatin1String("/org.velkor.Velkor.plist")),
                         qPrintable(file));
                return;
            }
            QCOMPARE(file, expected);
            QCOMPARE(prefs.store().format(), QSettings::NativeFormat);
            prefs.setSpaceMode(SpaceMode::gatherWindows);
        }
        QVERIFY(readFile(expected).contains("spaceMode=gatherWindows"));
    }

    void aFreshStoreWritesNothingUntilASettingIsSet()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Velkor.conf"));
        {
            Preferences prefs(iniAt(path));
            QCOMPARE(prefs.modifierKey(), ModifierKey::rightCommand);
            QVERIFY(prefs.excludedBundleIds().isEmpty() && prefs.letterUsage().isEmpty());
        }
        QVERIFY(!QFile::exists(path));
    }

    // Through the INI text and through QSettings' native format (the user
    // store's kind), lists of none and of one element included.
    void everySettingSurvivesTheRoundTrip_data()
    {
        QTest::addColumn<bool>("native");
        QTest::addColumn<QStringList>("excluded");
        QTest::addColumn<QStringList>("usageOfE");
        for (const bool native : {false, true}) {
            const char* kind = native ? "native" : "ini";
            QTest::addRow("%s, empty lists", kind) << native << QStringList() << QStringList();
            QTest::addRow("%s, one element", kind)
                << native << QStringList{"com.a"} << QStringList{"org.x"};
            QTest::addRow("%s, commas, quotes, unicode", kind)
                << native << QStringList{"a,b", "\"q\"", "ünï"} << QStringList{"x", "y; z", "#w"};
        }
    }

    void everySettingSurvivesTheRoundTrip()
    {
        QFETCH(bool, native);
        const auto format = native ? QSettings::NativeFormat : QSettings::IniFormat;
        QFETCH(QStringList, excluded);
        QFETCH(QStringList, usageOfE);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Velkor.conf"));
        const LetterUsage usage{
            {QStringLiteral("é"), usageOfE},
            {QStringLiteral("漢"), {QStringLiteral("cn.app")}},
            {QStringLiteral("👍🏽"), {QStringLiteral("a"), QStringLiteral("b")}}};
        {
            Preferences prefs(std::make_unique<QSettings>(path, format));
            prefs.setOverlayEnabled(false);
            prefs.setOverlayDelay(1.5);
            prefs.setOverlayPosition(OverlayPosition::topLeft);
            prefs.setBlurEnabled(false);
            prefs.setAccentHex(QStringLiteral("#00ff7f"));
            prefs.setTheme(AppTheme::dark);
            prefs.setLaunchAtLogin(true);
            prefs.setSearchIncludesApps(false);
            prefs.setModifierKey(ModifierKey::leftOption);
            prefs.setLetterLaunchesApps(false);
            prefs.setCmdBacktickCycle(false);
            prefs.setReplaceCommandTab(true);
            prefs.setMouseFollowsFocus(true);
            prefs.setSpaceMode(SpaceMode::gatherWindows);
            prefs.setSwitchOnRelease(true);
            prefs.setExcludedBundleIds(excluded);
            prefs.setLetterUsage(usage);
        }
        const QString copy = copyUnderNewName(path);
        Preferences prefs(std::make_unique<QSettings>(copy, format));
        QCOMPARE(prefs.overlayEnabled(), false);
        QCOMPARE(prefs.overlayDelay(), 1.5);
        QCOMPARE(prefs.overlayPosition(), OverlayPosition::topLeft);
        QCOMPARE(prefs.blurEnabled(), false);
        QCOMPARE(prefs.accentHex(), QStringLiteral("#00ff7f"));
        QCOMPARE(prefs.theme(), AppTheme::dark);
        QCOMPARE(prefs.launchAtLogin(), true);
        QCOMPARE(prefs.searchIncludesApps(), false);
        QCOMPARE(prefs.modifierKey(), ModifierKey::leftOption);
        QCOMPARE(prefs.letterLaunchesApps(), false);
        QCOMPARE(prefs.cmdBacktickCycle(), false);
        QCOMPARE(prefs.replaceCommandTab(), true);
        QCOMPARE(prefs.mouseFollowsFocus(), true);
        QCOMPARE(prefs.spaceMode(), SpaceMode::gatherWindows);
        QCOMPARE(prefs.switchOnRelease(), true);
        QCOMPARE(prefs.excludedBundleIds(), excluded);
        QCOMPARE(prefs.letterUsage(), usage);

        // The blur flag lives under its historical key only.
        QSettings raw(copy, format);
        QVERIFY(raw.contains(QStringLiteral("overlayBlur")));
        QVERIFY(!raw.contains(QStringLiteral("blurEnabled")));
    }

    void badStoredValuesFallBackToTheirDefaults()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("bad.conf"));
        writeFile(path, "[General]\n"
                        "overlayEnabled=yes\n"
                        "overlayBlur=0\n"
                        "launchAtLogin=1\n"
                        "switchOnRelease=TRUE\n"
                        "overlayDelay=-0.5\n"
                        "overlayPosition=middle\n"
                        "modifierKey=hyper\n"
                        "spaceMode=GatherWindows\n"
                        "theme=Dark\n"
                        "accentHex=1, 2\n"
                        "letterUsage=x\n");
        Preferences prefs(iniAt(path));
        QCOMPARE(prefs.overlayEnabled(), true);
        QCOMPARE(prefs.blurEnabled(), true);
        QCOMPARE(prefs.launchAtLogin(), false);
        QCOMPARE(prefs.switchOnRelease(), false);
        QCOMPARE(prefs.overlayDelay(), 0.25);
        QCOMPARE(prefs.overlayPosition(), OverlayPosition::bottomRight);
        QCOMPARE(prefs.modifierKey(), ModifierKey::rightCommand);
        QCOMPARE(prefs.spaceMode(), SpaceMode::followApp);
        QCOMPARE(prefs.theme(), AppTheme::system);
        QCOMPARE(prefs.accentHex(), QStringLiteral("#FEBC2E"));
        QVERIFY(prefs.letterUsage().isEmpty());
        // Loading never rewrites what it rejected.
        QSettings raw(path, QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("theme")).toString(), QStringLiteral("Dark"));
    }

    void delayMustBeAFiniteNonNegativeNumber_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<double>("expected");
        QTest::newRow("plain") << QByteArray("0.5") << 0.5;
        QTest::newRow("zero") << QByteArray("0") << 0.0;
        QTest::newRow("negative") << QByteArray("-1") << 0.25;
        QTest::newRow("nan") << QByteArray("nan") << 0.25;
        QTest::newRow("infinite") << QByteArray("inf") << 0.25;
        QTest::newRow("word") << QByteArray("soon") << 0.25;
        QTest::newRow("list") << QByteArray("1, 2") << 0.25;
        QTest::newRow("boolean") << QByteArray("@Variant(\\0\\0\\0\\x1\\x1)") << 0.25;
    }

    void delayMustBeAFiniteNonNegativeNumber()
    {
        QFETCH(QByteArray, stored);
        QFETCH(double, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("delay.conf"));
        writeFile(path, "[General]\noverlayDelay=" + stored + "\n");
        Preferences prefs(iniAt(path));
        QCOMPARE(prefs.overlayDelay(), expected);
    }

    void listsMustHoldOnlyStrings()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("lists.conf"));
        {
            QSettings writer(path, QSettings::IniFormat);
            writer.setValue(QStringLiteral("letterUsage"),
                            QVariantMap{{QStringLiteral("a"), QStringList{QStringLiteral("x")}},
                                        {QStringLiteral("b"), 5}});
        }
        const QString copy = copyUnderNewName(path);
        {
            // An INI list keeps its elements' types only through @Variant():
            // this one holds the number 7 between two strings.
            QFile file(copy);
            QVERIFY(file.open(QIODevice::Append));
            file.write("excludedBundleIds=com.a, @Variant(\\0\\0\\0\\x2\\0\\0\\0\\a), com.b\n");
        }
        Preferences prefs(iniAt(copy));
        QVERIFY(prefs.excludedBundleIds().isEmpty());
        QVERIFY(prefs.letterUsage().isEmpty());

        // Lists written by hand: a bare word is a list of one.
        const QString handWritten = dir.filePath(QStringLiteral("hand.conf"));
        writeFile(handWritten, "[General]\nexcludedBundleIds=com.only\n");
        QCOMPARE(Preferences(iniAt(handWritten)).excludedBundleIds(),
                 QStringList{QStringLiteral("com.only")});
    }

    void everyAssignmentNotifiesAndWrites()
    {
        QTemporaryDir dir;
        Preferences prefs(iniAt(dir.filePath(QStringLiteral("Velkor.conf"))));
        QSignalSpy changed(&prefs, &Preferences::changed);
        QSignalSpy blur(&prefs, &Preferences::blurEnabledChanged);
        QSignalSpy theme(&prefs, &Preferences::themeChanged);
        prefs.setBlurEnabled(true); // unchanged, still written
        prefs.setBlurEnabled(true);
        prefs.setTheme(AppTheme::light);
        QCOMPARE(blur.count(), 2);
        QCOMPARE(theme.count(), 1);
        QCOMPARE(changed.count(), 3);
        QCOMPARE(prefs.store().value(QStringLiteral("overlayBlur")), QVariant(true));
        QCOMPARE(prefs.store().value(QStringLiteral("theme")), QVariant(QStringLiteral("light")));
    }

    void exclusionKeepsTheListSortedAndUnique()
    {
        QTemporaryDir dir;
        Preferences prefs(iniAt(dir.filePath(QStringLiteral("Velkor.conf"))));
        prefs.setExcludedBundleIds({QStringLiteral("c"), QStringLiteral("a")});
        prefs.setExcluded(true, QStringLiteral("b"));
        QCOMPARE(prefs.excludedBundleIds(),
                 (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
        QCOMPARE(prefs.store().value(QStringLiteral("excludedBundleIds")).toStringList(),
                 prefs.excludedBundleIds());

        prefs.setExcludedBundleIds({QStringLiteral("a"), QStringLiteral("a")});
        prefs.setExcluded(false, QStringLiteral("x"));
        QCOMPARE(prefs.excludedBundleIds(), QStringList{QStringLiteral("a")});
        prefs.setExcluded(false, QStringLiteral("a"));
        QVERIFY(prefs.excludedBundleIds().isEmpty());

        // Code-point order: U+1F600 sorts after U+FF21, although its first
        // UTF-16 unit (a surrogate) is smaller.
        const QString fullwidthA = QStringLiteral("\uFF21");
        const QString emoji = QStringLiteral("\U0001F600");
        prefs.setExcluded(true, emoji);
        prefs.setExcluded(true, fullwidthA);
        QCOMPARE(prefs.excludedBundleIds(), (QStringList{fullwidthA, emoji}));
    }

    void letterUsageKeepsTheMostRecentTwentyPerLetter()
    {
        QTemporaryDir dir;
        Preferences prefs(iniAt(dir.filePath(QStringLiteral("Velkor.conf"))));
        QSignalSpy usageChanged(&prefs, &Preferences::letterUsageChanged);
        prefs.recordLetterUsage(QStringLiteral("X"), std::nullopt);
        QCOMPARE(usageChanged.count(), 0);

        prefs.recordLetterUsage(QStringLiteral("X"), QStringLiteral("a"));
        prefs.recordLetterUsage(QStringLiteral("x"), QStringLiteral("b"));
        prefs.recordLetterUsage(QStringLiteral("É"), QStringLiteral("e"));
        prefs.recordLetterUsage(QStringLiteral("E\u0301"), QStringLiteral("e"));
        QCOMPARE(prefs.letterUsage().value(QStringLiteral("x")),
                 (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
        QCOMPARE(prefs.letterUsage().value(QStringLiteral("é")), QStringList{QStringLiteral("e")});
        QVERIFY(!prefs.letterUsage().contains(QStringLiteral("X")));

        prefs.recordLetterUsage(QStringLiteral("x"), QStringLiteral("a"));
        QCOMPARE(prefs.letterUsage().value(QStringLiteral("x")),
                 (QStringList{QStringLiteral("a"), QStringLiteral("b")}));

        for (int i = 0; i < 18; ++i)
            prefs.recordLetterUsage(QStringLiteral("x"), QStringLiteral("id%1").arg(i));
        QCOMPARE(prefs.letterUsage().value(QStringLiteral("x")).size(), 20);
        QCOMPARE(prefs.letterUsage().value(QStringLiteral("x")).last(), QStringLiteral("b"));
        prefs.recordLetterUsage(QStringLiteral("x"), QStringLiteral("id18"));
        const QStringList ids = prefs.letterUsage().value(QStringLiteral("x"));
        QCOMPARE(ids.size(), 20);
        QCOMPARE(ids.first(), QStringLiteral("id18"));
        QVERIFY(!ids.contains(QStringLiteral("b")));
        QCOMPARE(usageChanged.count(), 24);
        QCOMPARE(
            prefs.store().value(QStringLiteral("letterUsage")).toMap().value("x").toStringList(),
            ids);
    }

    void aDamagedFileIsKeptAsideAndDefaultsAreUsed()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Velkor.conf"));
        const QByteArray damaged = "[General]\noverlayDelay=3\n[Broken\nswitchOnRelease=true\n";
        writeFile(path, damaged);

        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("cannot be read; moved it to .*"
                                                               "Velkor\\.conf\\.damaged-")));
        {
            Preferences prefs(iniAt(path));
            QCOMPARE(prefs.overlayDelay(), 0.25);
            QCOMPARE(prefs.switchOnRelease(), false);
            QCOMPARE(prefs.store().status(), QSettings::NoError);
            prefs.setOverlayDelay(0.75);
        }
        const QStringList aside =
            QDir(dir.path()).entryList({QStringLiteral("Velkor.conf.damaged-*")}, QDir::Files);
        QCOMPARE(aside.size(), 1);
        QCOMPARE(readFile(dir.filePath(aside.first())), damaged);
        QCOMPARE(Preferences(iniAt(copyUnderNewName(path))).overlayDelay(), 0.75);

        // A second damaged file within the same second gets its own name.
        writeFile(path, damaged + "\x01\xff[");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("moved it to")));
        Preferences again(iniAt(path));
        QCOMPARE(again.overlayDelay(), 0.25);
        QCOMPARE(QDir(dir.path())
                     .entryList({QStringLiteral("Velkor.conf.damaged-*")}, QDir::Files)
                     .size(),
                 2);
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
