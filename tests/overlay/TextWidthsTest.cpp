// SPDX-License-Identifier: MIT
#include "overlay/TextWidths.h"

#include "overlay/OverlayFonts.h"

#include <QFontMetricsF>
#include <QtTest>

using namespace velkor;

class TextWidthsTest : public QObject
{
    Q_OBJECT
private slots:
    void measuresAndElidesAsTheFontDoes();
};

// Kept widths stand in for the font's own measuring: each text, asked
// again, beyond the number kept, and cut at widths on either side of its
// own (advances are in 1/64 pixel), comes out as the font says.
void TextWidthsTest::measuresAndElidesAsTheFontDoes()
{
    const QFont font = OverlayFonts::title(19);
    const QFontMetricsF metrics(font);
    TextWidths widths(font);
    QCOMPARE(widths.height(), metrics.height());

    const QStringList texts{QStringLiteral("Alpha"), QStringLiteral("Terminal — ~/src"),
                            QStringLiteral("日本語のタイトル"), QStringLiteral("e\u0301te\u0301"),
                            QString()};
    for (int round = 0; round < 2; ++round) {
        for (const QString& text : texts) {
            const double advance = metrics.horizontalAdvance(text);
            QCOMPARE(widths.advance(text), advance);
            for (double width : {advance + 1.0 / 128, advance, advance - 1.0 / 128,
                                 advance - 1.0 / 64, advance / 2, 0.0}) {
                QCOMPARE(widths.elided(text, width),
                         metrics.elidedText(text, Qt::ElideRight, width));
            }
        }
        // Enough other texts that the first ones are measured again.
        for (int i = 0; i < 600; ++i)
            QCOMPARE(widths.advance(QString::number(i)),
                     metrics.horizontalAdvance(QString::number(i)));
    }
    QVERIFY(widths.elided(texts[1], 20).endsWith(QChar(0x2026)));
}

QTEST_MAIN(TextWidthsTest)
#include "TextWidthsTest.moc"
