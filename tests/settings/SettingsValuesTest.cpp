// SPDX-License-Identifier: MIT
#include "settings/ColorHex.h"
#include "settings/SettingsEnums.h"

#include <QTest>

using namespace velkor;

class SettingsValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void colourFromHex_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("rgb"); // -1: no colour
        QTest::newRow("default") << "#FEBC2E" << 0xFEBC2E;
        QTest::newRow("lower, no hash") << "0a1b2c" << 0x0A1B2C;
        QTest::newRow("white space around") << " \t#ffffff\n" << 0xFFFFFF;
        QTest::newRow("two hashes") << "##FEBC2E" << -1;
        QTest::newRow("five digits") << "#FEBC2" << -1;
        QTest::newRow("seven digits") << "#FEBC2EE" << -1;
        QTest::newRow("not hex") << "#GGGGGG" << -1;
        QTest::newRow("sign") << "+EBC2E" << -1;
        QTest::newRow("0x prefix") << "0xFEBC" << -1;
        QTest::newRow("inner space") << "#FE BC2E" << -1;
        QTest::newRow("fullwidth digits") << "#\uFF11\uFF12\uFF13\uFF14\uFF15\uFF16" << -1;
        QTest::newRow("empty") << "" << -1;
    }

    void colourFromHex()
    {
        QFETCH(QString, text);
        QFETCH(int, rgb);
        const auto colour = colorFromHex(text);
        QCOMPARE(colour.has_value(), rgb >= 0);
        if (colour) {
            QCOMPARE(colour->rgb() & 0xFFFFFF, QRgb(rgb));
            QCOMPARE(colour->alpha(), 255);
            QCOMPARE(hexFromColor(*colour), text.trimmed().remove('#').toUpper().prepend('#'));
        }
    }

    void rawValuesMatchExactly()
    {
        for (const auto key : allModifierKeys())
            QCOMPARE(modifierKeyFromRaw(rawValue(key)), key);
        for (const auto position : allOverlayPositions())
            QCOMPARE(overlayPositionFromRaw(rawValue(position)), position);
        for (const auto theme : allAppThemes())
            QCOMPARE(appThemeFromRaw(rawValue(theme)), theme);
        for (const auto mode : allSpaceModes())
            QCOMPARE(spaceModeFromRaw(rawValue(mode)), mode);
    }
};

QTEST_GUILESS_MAIN(SettingsValuesTest)
#include "SettingsValuesTest.moc"
