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

class AccentEditorTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void presetClickStoresItAndRingsItAlone();
    void popoverLoadsWithoutRewritingAndSlidersWriteUpperCase();
    void typedHexIsAppliedOnlyWhenValid_data();
    void typedHexIsAppliedOnlyWhenValid();
    void malformedStoredAccentStartsFromYellow();

private:
    AccentPopover& openPopover();
    QString storedAccent();

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<AccentEditor> m_editor;
};

void AccentEditorTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_prefs = std::make_unique<Preferences>(
        std::make_unique<QSettings>(m_dir->filePath("velkor.ini"), QSettings::IniFormat));
    m_editor = std::make_unique<AccentEditor>(*m_prefs);
    m_editor->show();
}

void AccentEditorTest::cleanup()
{
    m_editor.reset();
    m_prefs.reset();
    m_dir.reset();
}

AccentPopover& AccentEditorTest::openPopover()
{
    QTest::mouseClick(&m_editor->customSwatch(), Qt::LeftButton);
    AccentPopover* popover = m_editor->popover();
    if (!popover)
        qFatal("the custom swatch opened no editor");
    return *popover;
}

QString AccentEditorTest::storedAccent()
{
    m_prefs->store().sync();
    return QSettings(m_dir->filePath("velkor.ini"), QSettings::IniFormat)
        .value("accentHex")
        .toString();
}

void AccentEditorTest::presetClickStoresItAndRingsItAlone()
{
    auto marked = [this] {
        QList<int> result;
        for (int i = 0; i < AccentEditor::presetAccents.size(); ++i)
            if (m_editor->presetSwatch(i).isMarked())
                result.append(i);
        return result;
    };
    QCOMPARE(marked(), QList<int>{0}); // the default accent

    QTest::mouseClick(&m_editor->presetSwatch(2), Qt::LeftButton);
    QCOMPARE(m_prefs->accentHex(), QStringLiteral("#28C840"));
    QCOMPARE(storedAccent(), QStringLiteral("#28C840"));
    QCOMPARE(marked(), QList<int>{2});
    QCOMPARE(m_editor->customSwatch().color(), QColor(40, 200, 64));

    // Letter case does not matter for the ring.
    m_prefs->setAccentHex(QStringLiteral("#0a84ff"));
    QCOMPARE(marked(), QList<int>{3});
    m_prefs->setAccentHex(QStringLiteral("#123456"));
    QCOMPARE(marked(), QList<int>{});
}

void AccentEditorTest::popoverLoadsWithoutRewritingAndSlidersWriteUpperCase()
{
    m_prefs->setAccentHex(QStringLiteral("#febc2e"));
    AccentPopover& popover = openPopover();
    QCOMPARE(popover.slider(AccentPopover::red).value(), 254);
    QCOMPARE(popover.slider(AccentPopover::green).value(), 188);
    QCOMPARE(popover.slider(AccentPopover::blue).value(), 46);
    QCOMPARE(popover.valueLabel(AccentPopover::green).text(), QStringLiteral("188"));
    QCOMPARE(popover.hexField().text(), QStringLiteral("FEBC2E"));
    QCOMPARE(popover.previewColor(), QColor(254, 188, 46));
    QCOMPARE(storedAccent(), QStringLiteral("#febc2e")); // opening wrote nothing

    popover.slider(AccentPopover::blue).setFocus();
    QTest::keyClick(&popover.slider(AccentPopover::blue), Qt::Key_Right);
    QCOMPARE(m_prefs->accentHex(), QStringLiteral("#FEBC2F"));
    QCOMPARE(popover.hexField().text(), QStringLiteral("FEBC2F"));
    QCOMPARE(popover.valueLabel(AccentPopover::blue).text(), QStringLiteral("47"));
    QCOMPARE(popover.previewColor(), QColor(254, 188, 47));

    QTest::keyClick(&popover.slider(AccentPopover::red), Qt::Key_Home);
    QCOMPARE(m_prefs->accentHex(), QStringLiteral("#00BC2F"));
    QCOMPARE(storedAccent(), QStringLiteral("#00BC2F"));
    QVERIFY(!m_editor->presetSwatch(0).isMarked());
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
    QFETCH(QString, typed);
    QFETCH(QString, stored);

    AccentPopover& popover = openPopover();
    QLineEdit& field = popover.hexField();
    field.selectAll();
    QTest::keyClicks(&field, typed);
    QTest::keyClick(&field, Qt::Key_Return);

    QCOMPARE(storedAccent(), stored);
    const QString current = stored.isEmpty() ? QStringLiteral("#FEBC2E") : stored;
    QCOMPARE(m_prefs->accentHex(), current);
    const QColor color(current);
    QCOMPARE(popover.slider(AccentPopover::red).value(), color.red());
    QCOMPARE(popover.slider(AccentPopover::green).value(), color.green());
    QCOMPARE(popover.slider(AccentPopover::blue).value(), color.blue());
    // A rejected entry stays as typed, to be corrected.
    QCOMPARE(field.text(), stored.isEmpty() ? typed : stored.mid(1));
}

void AccentEditorTest::malformedStoredAccentStartsFromYellow()
{
    m_prefs->setAccentHex(QStringLiteral("banana"));
    for (int i = 0; i < AccentEditor::presetAccents.size(); ++i)
        QVERIFY(!m_editor->presetSwatch(i).isMarked());
    AccentPopover& popover = openPopover();
    const QColor yellow = QColor(Qt::yellow);
    QCOMPARE(popover.previewColor(), yellow);
    QCOMPARE(m_prefs->accentHex(), QStringLiteral("banana"));

    // The first move replaces the bad value.
    QTest::keyClick(&popover.slider(AccentPopover::green), Qt::Key_Left);
    QCOMPARE(m_prefs->accentHex(), QStringLiteral("#FFFE00"));
}

QTEST_MAIN(AccentEditorTest)
#include "AccentEditorTest.moc"
