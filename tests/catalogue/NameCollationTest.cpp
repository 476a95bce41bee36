// SPDX-License-Identifier: MIT
#include "catalogue/NameCollation.h"

#include <QStringList>
#include <QTest>

using namespace velkor;

class NameCollationTest : public QObject
{
    Q_OBJECT

private slots:
    // Every pair is checked both ways, so a key that breaks the order's
    // transitivity or symmetry shows up too.
    void ordersNamesLikeADictionary()
    {
        const QStringList ordered{
            QStringLiteral("(Untitled)"), QStringLiteral("~Notes"),    QStringLiteral("1Password"),
            QStringLiteral("7-Zip"),      QStringLiteral("App Store"), QStringLiteral("Apple"),
            QStringLiteral("Ärzte"),      QStringLiteral("beta"),      QStringLiteral("ecole"),
            QStringLiteral("école"),      QStringLiteral("Ecrire"),    QStringLiteral("ﬁle"),
            QStringLiteral("Files"),      QStringLiteral("mail"),      QStringLiteral("Mail Merge"),
            QStringLiteral("Zebra"),      QStringLiteral("Ωmega"),
        };
        for (qsizetype i = 0; i < ordered.size(); ++i) {
            for (qsizetype j = i + 1; j < ordered.size(); ++j) {
                QVERIFY2(NameCollation::compare(ordered[i], ordered[j]) < 0,
                         qPrintable(ordered[i] + QLatin1String(" < ") + ordered[j]));
                QVERIFY2(NameCollation::compare(ordered[j], ordered[i]) > 0,
                         qPrintable(ordered[j] + QLatin1String(" > ") + ordered[i]));
            }
        }
    }

    void ignoresCaseAndCompatibilityForms()
    {
        const QList<std::pair<QString, QString>> same{
            {QStringLiteral("ÉCOLE"), QStringLiteral("école")},
            {QStringLiteral("E\u0301cole"), QStringLiteral("École")},
            {QStringLiteral("Alpha"), QStringLiteral("aLPHA")},
            {QStringLiteral("ﬁle"), QStringLiteral("FILE")},
            {QStringLiteral("ＡＢＣ"), QStringLiteral("abc")},
        };
        for (const auto& [a, b] : same) {
            QVERIFY2(NameCollation::compare(a, b) == 0, qPrintable(a + QLatin1String(" = ") + b));
            QCOMPARE(NameCollation::sortKey(a), NameCollation::sortKey(b));
        }
    }
};

QTEST_GUILESS_MAIN(NameCollationTest)
#include "NameCollationTest.moc"
