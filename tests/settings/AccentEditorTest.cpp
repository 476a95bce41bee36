// SPDX-License-Identifier: MIT
#include "settings/AccentEditor.h"

#include "settings/AccentPopover.h"
#include "settings/AccentSwatch.h"
#include "settings/Preferences.h"

#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;

namespace {

// A shown editor over settings of its own, fresh for each test.
struct Fixture
{
    QTemporaryDir dir;
    Preferences prefs{
        std::make_unique<QSettings>(dir.filePath("velkor.ini"), QSettings::IniFormat)};
    AccentEditor editor{prefs};

    Fixture() { editor.show(); }

    AccentPopover& openPopover()
    {
        QTest::mouseClick(&editor.customSwatch(), Qt::LeftButton);
        if (!editor.popover())
            qFatal("the custom swatch opened no editor");
        return *editor.popover();
    }

    // What the settings file holds, as the next start would read it.
    QString storedAccent()
    {
        prefs.store().sync();
        return QSettings(dir.filePath("velkor.ini"), QSettings::IniFormat)
            .value("accentHex")
            .toString();
    }
};

} // namespace

class AccentEditorTest : public QObject
{
    Q_OBJECT
private slots:
    void presetClickStoresItAndRingsItAlone();
    void popoverLoadsWithoutRewritingAndSlidersWriteUpperCase();
    void typedHexIsAppliedOnlyWhenValid_data();
    void typedHexIsAppliedOnlyWhenValid();
    void malformedStoredAccentStartsFromYellow();
};

void AccentEditorTest::presetClickStoresItAndRingsItAlone()
{
    Fixture f;
    auto marked = [&f] {
        QList<int> result;
        for (int i = 0; i < AccentEditor::presetAccents.size(); ++i)
            if (f.editor.presetSwatch(i).isMarked())
                result.append(i);
        return result;
    };
    QCOMPARE(marked(), QList<int>{0}); // the default accent

    QTest::mouseClick(&f.editor.presetSwatch(2), Qt::LeftButton);
    QCOMPARE(f.prefs.accentHex(), QStringLiteral("#28C840"));
    QCOMPARE(f.storedAccent(), QStringLiteral("#28C840"));
    QCOMPARE(marked(), QList<int>{2});
    QCOMPARE(f.editor.customSwatch().color(), QColor(40, 200, 64));

    // Letter case does not matter for the ring.
    f.prefs.setAccentHex(QStringLiteral("#0a84ff"));
    QCOMPARE(marked(), QList<int>{3});
    f.prefs.setAccentHex(QStringLiteral("#123456"));
    QCOMPARE(marked(), QList<int>{});
}

void AccentEditorTest::popoverLoadsWithoutRewritingAndSlidersWriteUpperCase()
{
    Fixture f;
    f.prefs.setAccentHex(QStringLiteral("#febc2e"));
    AccentPopover& popover = f.openPopover();
    QCOMPARE(popover.slider(AccentPopover::red).value(), 254);
    QCOMPARE(popover.slider(AccentPopover::green).value(), 188);
    QCOMPARE(popover.slider(AccentPopover::blue).value(), 46);
    QCOMPARE(popover.valueLabel(AccentPopover::green).text(), QStringLiteral("188"));
    QCOMPARE(popover.hexField().text(), QStringLiteral("FEBC2E"));
    QCOMPARE(popover.previewColor(), QColor(254, 188, 46));
    QCOMPARE(f.storedAccent(), QStringLiteral("#febc2e")); // opening wrote nothing

    popover.slider(AccentPopover::blue).setFocus();
    QTest::keyClick(&popover.slider(AccentPopover::blue), Qt::Key_Right);
    QCOMPARE(f.prefs.accentHex(), QStringLiteral("#FEBC2F"));
    QCOMPARE(popover.hexField().text(), QStringLiteral("FEBC2F"));
    QCOMPARE(popover.valueLabel(AccentPopover::blue).text(), QStringLiteral("47"));
    QCOMPARE(popover.previewColor(), QColor(254, 188, 47));

    QTest::keyClick(&popover.slider(AccentPopover::red), Qt::Key_Home);
    QCOMPARE(f.prefs.accentHex(), QStringLiteral("#00BC2F"));
    QCOMPARE(f.storedAccent(), QStringLiteral("#00BC2F"));
    QVERIFY(!f.editor.presetSwatch(0).isMarked());
}

void AccentEditorTest::typedHexIsAppliedOnlyWhenValid_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored"); // empty: the default stays, nothing written
    QTest::newRow("with #") << "#0a84ff"
                            << "#0A84FF";
    QTest::newRow("without #") << "bf5af2"
                               << "#BF5AF2";
    QTest::newRow("spaces around") << "  ff9f0a  "
                                   << "#FF9F0A";
    for (const char* bad : {"0A84F", "0A84FF0", "0A84FG", "+A84FF", "0A 84FF"})
        QTest::newRow(bad) << bad << QString();
}

void AccentEditorTest::typedHexIsAppliedOnlyWhenValid()
{
    Fixture f;
    QFETCH(QString, typed);
    QFETCH(QString, stored);

    AccentPopover& popover = f.openPopover();
    QLineEdit& field = popover.hexField();
    field.selectAll();
    QTest::keyClicks(&field, typed);
    QTest::keyClick(&field, Qt::Key_Return);

    QCOMPARE(f.storedAccent(), stored);
    const QString current = stored.isEmpty() ? QStringLiteral("#FEBC2E") : stored;
    QCOMPARE(f.prefs.accentHex(), current);
    const QColor color(current);
    QCOMPARE(popover.slider(AccentPopover::red).value(), color.red());
    QCOMPARE(popover.slider(AccentPopover::green).value(), color.green());
    QCOMPARE(popover.slider(AccentPopover::blue).value(), color.blue());
    // A rejected entry stays as typed, to be corrected.
    QCOMPARE(field.text(), stored.isEmpty() ? typed : stored.mid(1));
}

void AccentEditorTest::malformedStoredAccentStartsFromYellow()
{
    Fixture f;
    f.prefs.setAccentHex(QStringLiteral("banana"));
    AccentPopover& popover = f.openPopover();
    const QColor yellow = QColor(Qt::yellow);
    QCOMPARE(popover.previewColor(), yellow);
    QCOMPARE(f.prefs.accentHex(), QStringLiteral("banana"));

    // The first move replaces the bad value.
    QTest::keyClick(&popover.slider(AccentPopover::green), Qt::Key_Left);
    QCOMPARE(f.prefs.accentHex(), QStringLiteral("#FFFE00"));
}

QTEST_MAIN(AccentEditorTest)
#include "AccentEditorTest.moc"
