// SPDX-License-Identifier: MIT
#include "catalogue/FuzzyMatcher.h"

#include "catalogue/AppEntry.h"

#include <QTest>

using namespace velkor;

namespace {
constexpr int Absent = INT_MIN;

int scoreOrAbsent(const QString& query, const QString& name)
{
    return FuzzyMatcher::score(query, name).value_or(Absent);
}
} // namespace

class FuzzyMatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void scoresFollowTheRules_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("expected");
        QTest::newRow("worked example") << "vs"
                                        << "Vista Sound" << 20;
        QTest::newRow("start of name") << "s"
                                       << "Sampler" << 20;
        QTest::newRow("middle, no bonus") << "p"
                                          << "Sampler" << 0;
        QTest::newRow("after a hyphen") << "t"
                                        << "Clock-Timer" << 9;
        QTest::newRow("after an underscore") << "t"
                                             << "clock_timer" << 9;
        QTest::newRow("upper-case query") << "SAM"
                                          << "Sampler" << 47;
        QTest::newRow("lower-case query") << "sam"
                                          << "Sampler" << 47;
        QTest::newRow("camel hump") << "e"
                                    << "MyEditor" << 7;
        QTest::newRow("digit before capital") << "d"
                                              << "Photo2D" << 8;
        QTest::newRow("capital after capital") << "b"
                                               << "ABC" << 1;
        QTest::newRow("runs grow") << "abc"
                                   << "abc" << 1 + 5 + 15 + 1 + 10 + 1 + 15;
        QTest::newRow("run broken then restarted") << "acd"
                                                   << "abcd" << 21 + 1 + 1 + 5 - 1;
        QTest::newRow("long name goes negative") << "z"
                                                 << "abcdefghijklmnopqrstuvwxyz" << -5;
        QTest::newRow("empty query") << ""
                                     << "Anything" << 0;
        QTest::newRow("empty query, empty name") << ""
                                                 << "" << 0;
        QTest::newRow("empty name") << "a"
                                    << "" << Absent;
        QTest::newRow("out of order") << "ba"
                                      << "ab" << Absent;
        QTest::newRow("longer than the name") << "abc"
                                              << "ab" << Absent;
        QTest::newRow("no accent folding") << "cafe"
                                           << "Café" << Absent;
    }

    void scoresFollowTheRules()
    {
        QFETCH(QString, query);
        QFETCH(QString, name);
        QFETCH(int, expected);
        QCOMPARE(scoreOrAbsent(query, name), expected);
    }

    // Characters are grapheme clusters compared up to canonical equivalence,
    // whichever side is written decomposed.
    void unicodeCharacters_data()
    {
        const QString composed = QStringLiteral("Caf\u00E9");
        const QString decomposed = QStringLiteral("Cafe\u0301");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("expected");
        // c at 0: 21; a, f, é each continue the run: +11, +16, +21 → 69 - 1.
        QTest::newRow("composed both") << "caf\u00E9" << composed << 68;
        QTest::newRow("decomposed query") << "cafe\u0301" << composed << 68;
        QTest::newRow("decomposed name") << "caf\u00E9" << decomposed << 68;
        QTest::newRow("decomposed both") << "cafe\u0301" << decomposed << 68;
        QTest::newRow("accent alone is not the letter") << "e" << decomposed << Absent;
        QTest::newRow("upper-case accented query") << "CAF\u00C9" << decomposed << 68;
        QTest::newRow("mark order does not matter")
            << "q\u0323\u0307"
            << "aq\u0307\u0323" << 1 - 0; // 2 clusters: 2 / 4 = 0
        // The emoji with its skin tone is one character: t is at 2, after a
        // space, in an 8-character name.
        QTest::newRow("emoji cluster") << "t"
                                       << "\U0001F44D\U0001F3FD Thumbs" << 11 - 2;
        // The dotted capital I lower-cases to i + U+0307, which is not i.
        QTest::newRow("dotted capital I") << "is"
                                          << "\u0130stanbul" << Absent;
        QTest::newRow("dotted capital I matched") << "i\u0307s"
                                                  << "\u0130stanbul" << 21 + 1 + 10 - 2;
        // Cyrillic: the second Ж is a camel hump.
        QTest::newRow("cyrillic hump") << "жж"
                                       << "ЖурналЖизни" << 21 + 1 + 8 - 2;
        QTest::newRow("cyrillic query, latin name") << "ж"
                                                    << "Journal" << Absent;
    }

    void unicodeCharacters()
    {
        QFETCH(QString, query);
        QFETCH(QString, name);
        QFETCH(int, expected);
        QCOMPARE(scoreOrAbsent(query, name), expected);
    }

    void rankKeepsMatchesBestFirstAndTiesInOrder()
    {
        const auto nameOf = [](const AppEntry& e) { return e.name; };
        QList<AppEntry> apps;
        for (const char* name : {"Notes", "Safari", "Sound", "Mail", "Slack", "Sampler"})
            apps.append(AppEntry{QString::fromUtf8(name), QString::fromUtf8(name), {}, {}, {}});

        QCOMPARE(FuzzyMatcher::rank(apps, QString(), nameOf), apps);

        QStringList names;
        for (const AppEntry& e : FuzzyMatcher::rank(apps, QStringLiteral("s"), nameOf))
            names.append(e.name);
        // Safari, Sound, Slack and Sampler tie at a name start; Notes
        // scores 1 - 1 = 0 and Mail does not match.
        QCOMPARE(names, (QStringList{"Safari", "Sound", "Slack", "Sampler", "Notes"}));

        names.clear();
        for (const AppEntry& e : FuzzyMatcher::rank(apps, QStringLiteral("sa"), nameOf))
            names.append(e.name);
        QCOMPARE(names, (QStringList{"Safari", "Sampler", "Slack"}));

        const QStringList plain{"b", "a", "b"};
        QCOMPARE(FuzzyMatcher::rank(plain, QStringLiteral("b"), [](const QString& s) { return s; }),
                 (QStringList{"b", "b"}));
    }
};

QTEST_GUILESS_MAIN(FuzzyMatcherTest)
#include "FuzzyMatcherTest.moc"
