// SPDX-License-Identifier: MIT
#include "settings/Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

using namespace velkor;

namespace {

// QSettings caches a parsed file by name for the life of the process, so a
// file read back under the name it was written with would come from that
// cache with its original types. Reading a copy under a new name makes
// QSettings parse the text it really wrote.
QString copyUnderNewName(const QString& path)
{
    static int n = 0;
    const QFileInfo original(path);
    const QString copy = original.dir().filePath(QStringLiteral("%1.copy%2.%3")
                                                     .arg(original.completeBaseName())
                                                     .arg(++n)
                                                     .arg(original.suffix()));
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

    // The native file under the config folder, not written until a
    // setting is set.
    void userStoreIsTheNativeFileUnderTheConfigFolderWrittenOnceSet()
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
            QVERIFY(prefs.excludedBundleIds().isEmpty() && prefs.letterUsage().isEmpty());
        }
        QVERIFY(!QFile::exists(expected));
        Preferences(Preferences::openUserStore()).setSpaceMode(SpaceMode::gatherWindows);
        QVERIFY(readFile(expected).contains("spaceMode=gatherWindows"));
    }

    // Through the INI text and through QSettings' native format (the user
    // store's kind; on macOS a property list, which keeps the letter order as
    // one dictionary), lists of none and of one element included.
    void everySettingSurvivesTheRoundTrip_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("native");
        QTest::addColumn<QStringList>("excluded");
        QTest::addColumn<QStringList>("usageOfE");
        const std::pair<const char*, bool> stores[] = {
            {"Velkor.conf", false}, {"Velkor.conf", true}, {"Velkor.plist", true}};
        for (const auto& [file, native] : stores) {
            const QString kind = QStringLiteral("%1 %2").arg(native ? "native" : "ini", file);
            QTest::addRow("%s, empty lists", qPrintable(kind))
                << file << native << QStringList() << QStringList();
            QTest::addRow("%s, one element", qPrintable(kind))
                << file << native << QStringList{"com.a"} << QStringList{"org.x"};
            QTest::addRow("%s, commas, quotes, unicode", qPrintable(kind))
                << file << native << QStringList{"a,b", "\"q\"", "ünï"}
                << QStringList{"x", "y; z", "#w", "@Variant(x)"};
        }
    }

    void everySettingSurvivesTheRoundTrip()
    {
        QFETCH(QString, file);
        QFETCH(bool, native);
        const auto format = native ? QSettings::NativeFormat : QSettings::IniFormat;
        QFETCH(QStringList, excluded);
        QFETCH(QStringList, usageOfE);
        QTemporaryDir dir;
        const QString path = dir.filePath(file);
        // Letters from names in any script, and some QSettings takes apart
        // in a key ("/" separates groups, "%" escapes).
        const LetterUsage usage{
            {QStringLiteral("é"), usageOfE},
            {QStringLiteral("ß"), {QStringLiteral("de.app")}},
            {QStringLiteral("ж"), {QStringLiteral("ru.app")}},
            {QStringLiteral("漢"), {QStringLiteral("cn.app")}},
            {QStringLiteral("👍🏽"), {QStringLiteral("a"), QStringLiteral("b")}},
            {QStringLiteral("/"), {QStringLiteral("slash")}},
            {QStringLiteral("%"), {QStringLiteral("per")}},
            {QStringLiteral("%2F"), {QStringLiteral("literal")}},
            {QStringLiteral("="), {QStringLiteral("eq")}},
            {QStringLiteral("["), {QStringLiteral("br")}}};
        {
            Preferences prefs(std::make_unique<QSettings>(path, format));
            prefs.setOverlayEnabled(false);
            prefs.setOverlayDelay(0.75);
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
        QCOMPARE(prefs.overlayDelay(), 0.75);
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

        if (!native) {
            // A file a person can read: one plain key per letter.
            const QByteArray text = readFile(path);
            QVERIFY2(text.contains("[letterUsage]\n"), text.constData());
            QVERIFY2(text.contains("\n%U6F22=cn.app\n"), text.constData());
            QVERIFY2(!text.contains("\nletterUsage="), text.constData());
        }
        if (LetterUsageStore::layoutFor(raw) == LetterUsageStore::Layout::dictionary)
            QCOMPARE(raw.value(QStringLiteral("letterUsage")).typeId(), QMetaType::QVariantMap);
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
                        "overlayPosition=middle\n"
                        "modifierKey=hyper\n"
                        "spaceMode=GatherWindows\n"
                        "theme=Dark\n"
                        "accentHex=1, 2\n");
        Preferences prefs(iniAt(path));
        QCOMPARE(prefs.overlayEnabled(), true);
        QCOMPARE(prefs.blurEnabled(), true);
        QCOMPARE(prefs.launchAtLogin(), false);
        QCOMPARE(prefs.switchOnRelease(), false);
        QCOMPARE(prefs.overlayPosition(), OverlayPosition::bottomRight);
        QCOMPARE(prefs.modifierKey(), ModifierKey::rightCommand);
        QCOMPARE(prefs.spaceMode(), SpaceMode::followApp);
        QCOMPARE(prefs.theme(), AppTheme::system);
        QCOMPARE(prefs.accentHex(), QStringLiteral("#FEBC2E"));
        // Loading never rewrites what it rejected.
        QSettings raw(path, QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("theme")).toString(), QStringLiteral("Dark"));
    }

    // What the settings window cannot set is brought within its reach on
    // load, in memory: the file keeps what it holds.
    void valuesOutOfRangeAreBroughtWithinReach_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<double>("expected");
        QTest::newRow("zero") << QByteArray("0") << 0.0;
        QTest::newRow("off the slider's grid") << QByteArray("0.33") << 0.35;
        QTest::newRow("negative") << QByteArray("-1") << 0.0;
        QTest::newRow("a month") << QByteArray("3000000") << 1.0;
        QTest::newRow("near the largest double") << QByteArray("1e308") << 1.0;
        QTest::newRow("nan") << QByteArray("nan") << 0.25;
        QTest::newRow("infinite") << QByteArray("inf") << 0.25;
        QTest::newRow("minus infinite") << QByteArray("-inf") << 0.25;
        QTest::newRow("word") << QByteArray("soon") << 0.25;
        QTest::newRow("list") << QByteArray("1, 2") << 0.25;
        QTest::newRow("boolean") << QByteArray("@Variant(\\0\\0\\0\\x1\\x1)") << 0.25;
    }

    void valuesOutOfRangeAreBroughtWithinReach()
    {
        QFETCH(QByteArray, stored);
        QFETCH(double, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("range.conf"));
        QByteArray text = "[General]\noverlayDelay=" + stored + "\n\n[letterUsage]\na=";
        for (int i = 0; i < 25; ++i)
            text += "id" + QByteArray::number(i % 22) + (i < 24 ? ", " : "\n");
        writeFile(path, text);
        {
            Preferences prefs(iniAt(path));
            QCOMPARE(prefs.overlayDelay(), expected);
            // A hand-made list is kept to what switching keeps: twenty, no repeats.
            QStringList firstTwenty;
            for (int i = 0; i < 20; ++i)
                firstTwenty.append(QStringLiteral("id%1").arg(i));
            QCOMPARE(prefs.letterUsage().value(QStringLiteral("a")), firstTwenty);
            // The setter keeps to the same range.
            prefs.setOverlayDelay(2.5);
            QCOMPARE(prefs.overlayDelay(), 1.0);
            prefs.setOverlayDelay(std::nan(""));
            QCOMPARE(prefs.overlayDelay(), 0.25);
        }
        QCOMPARE(Preferences(iniAt(copyUnderNewName(path))).overlayDelay(), 0.25);
    }

    // Every switch records the letter's choice; a file rewritten each time
    // would be a disk write per keystroke and would lose what a person wrote
    // in it.
    void assigningWhatTheStoreHoldsLeavesTheFileAlone()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Velkor.conf"));
        const QByteArray handWritten = "; edited by hand\n"
                                       "[General]\n"
                                       "overlayBlur=false\n"
                                       "overlayDelay=1e308\n"
                                       "theme=dark\n"
                                       "excludedBundleIds=com.only\n"
                                       "\n"
                                       "[letterUsage]\n"
                                       "f=org.firefox, org.files\n"
                                       "%E9=org.editor\n";
        writeFile(path, handWritten);
        {
            Preferences prefs(iniAt(path));
            QCOMPARE(prefs.overlayDelay(), 1.0);
            prefs.setBlurEnabled(false);
            prefs.setTheme(AppTheme::dark);
            prefs.setExcludedBundleIds({QStringLiteral("com.only")});
            for (int i = 0; i < 3; ++i) {
                prefs.recordLetterUsage(QStringLiteral("F"), QStringLiteral("org.firefox"));
                prefs.recordLetterUsage(QStringLiteral("é"), QStringLiteral("org.editor"));
            }
            QCOMPARE(prefs.letterUsage().value(QStringLiteral("é")),
                     QStringList{QStringLiteral("org.editor")});
        }
        QCOMPARE(readFile(path), handWritten);

        // A real change is written, and only then the clamped delay.
        {
            Preferences prefs(iniAt(path));
            prefs.recordLetterUsage(QStringLiteral("f"), QStringLiteral("org.files"));
        }
        const QByteArray changed = readFile(path);
        QVERIFY2(changed.contains("\nf=org.files, org.firefox\n"), changed.constData());
        QVERIFY2(changed.contains("\noverlayDelay=1e308\n"), changed.constData());
        {
            Preferences prefs(iniAt(path));
            prefs.setOverlayDelay(prefs.overlayDelay());
        }
        QVERIFY2(readFile(path).contains("\noverlayDelay=1\n"), readFile(path).constData());
    }

    // Older versions kept the letter order as one binary "@Variant" value.
    void anOlderLetterUsageMovesIntoItsGroupLosingNothing()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("old.conf"));
        const LetterUsage old{
            {QStringLiteral("a"), {QStringLiteral("com.a, b"), QStringLiteral("c")}},
            {QStringLiteral("ж"), {QStringLiteral("ru.app")}},
            {QStringLiteral("/"), {QStringLiteral("slash")}}};
        {
            QSettings writer(path, QSettings::IniFormat);
            QVariantMap map;
            for (auto it = old.cbegin(); it != old.cend(); ++it)
                map.insert(it.key(), it.value());
            writer.setValue(QStringLiteral("letterUsage"), map);
            writer.setValue(QStringLiteral("theme"), QStringLiteral("dark"));
        }
        const QString copy = copyUnderNewName(path);
        QVERIFY(readFile(copy).contains("@Variant("));
        {
            Preferences prefs(iniAt(copy));
            QCOMPARE(prefs.letterUsage(), old);
        }
        const QByteArray migrated = readFile(copy);
        QVERIFY2(!migrated.contains("@Variant"), migrated.constData());
        QVERIFY2(migrated.contains("\n[letterUsage]\n") &&
                     migrated.contains("\na=\"com.a, b\", c\n"),
                 migrated.constData());
        const QString again = copyUnderNewName(copy);
        Preferences reread(iniAt(again));
        QCOMPARE(reread.letterUsage(), old);
        QCOMPARE(reread.theme(), AppTheme::dark);

        // One that cannot be read stays until the order is next recorded.
        const QString unreadable = dir.filePath(QStringLiteral("unreadable.conf"));
        writeFile(unreadable, "[General]\nletterUsage=x\n");
        {
            Preferences prefs(iniAt(unreadable));
            QVERIFY(prefs.letterUsage().isEmpty());
        }
        QCOMPARE(readFile(unreadable), QByteArray("[General]\nletterUsage=x\n"));
        {
            Preferences prefs(iniAt(unreadable));
            prefs.recordLetterUsage(QStringLiteral("q"), QStringLiteral("org.q"));
        }
        QCOMPARE(readFile(unreadable), QByteArray("[letterUsage]\nq=org.q\n"));
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
    }

    // The setters keep their values' rules in memory and in the store, and
    // every assignment notifies, even of an unchanged value.
    void settersKeepTheirRulesAndNotify()
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

        // Exclusions: sorted by code point, without repeats. U+1F600 sorts
        // after U+FF21, although its first UTF-16 unit (a surrogate) is smaller.
        prefs.setExcludedBundleIds({QStringLiteral("c"), QStringLiteral("a"), QStringLiteral("a")});
        prefs.setExcluded(true, QStringLiteral("b"));
        prefs.setExcluded(false, QStringLiteral("x"));
        QCOMPARE(prefs.excludedBundleIds(),
                 (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
        QCOMPARE(prefs.store().value(QStringLiteral("excludedBundleIds")).toStringList(),
                 prefs.excludedBundleIds());
        const QString fullwidthA = QStringLiteral("\uFF21");
        const QString emoji = QStringLiteral("\U0001F600");
        prefs.setExcludedBundleIds({emoji});
        prefs.setExcluded(true, fullwidthA);
        QCOMPARE(prefs.excludedBundleIds(), (QStringList{fullwidthA, emoji}));
        prefs.setExcluded(false, emoji);
        QCOMPARE(prefs.excludedBundleIds(), QStringList{fullwidthA});

        // Each letter keeps its twenty most recent choices.
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
        // A burst of choices is one write of the file, made later (or when
        // the settings go), not one per choice.
        const QString file = prefs.store().fileName();
        QCoreApplication::processEvents(); // where the store would write what it was given
        QVERIFY(!readFile(file).contains("letterUsage"));
        prefs.writeLetterUsageNow();
        QCOMPARE(QSettings(file, QSettings::IniFormat).value(QStringLiteral("letterUsage/x")),
                 QVariant(ids));
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
