// SPDX-License-Identifier: MIT
#include "catalogue/FuzzyMatcher.h"

#include "catalogue/AppEntry.h"

#include <QTest>

using namespace velkor;

namespace {
constexpr int Absent = INT_MIN;

void row(const char* title, const char* query, const char* name, int expected)
{
    QTest::newRow(title) << QString::fromUtf8(query) << QString::fromUtf8(name) << expected;
}
} // namespace

class FuzzyMatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void scores_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("expected");
        row("worked example", "vs", "Vista Sound", 20);
        row("start of name", "s", "Sampler", 20);
        row("middle, no bonus", "p", "Sampler", 0);
        row("after a hyphen", "t", "Clock-Timer", 9);
        row("after an underscore", "t", "clock_timer", 9);
        row("upper-case query", "SAM", "Sampler", 47);
        row("camel hump", "e", "MyEditor", 7);
        row("digit before capital", "d", "Photo2D", 8);
        row("capital after capital", "b", "ABC", 1);
        row("runs grow", "abc", "abc", 1 + 5 + 15 + 1 + 10 + 1 + 15);
        row("run broken then restarted", "acd", "abcd", 21 + 1 + 1 + 5 - 1);
        row("long name goes negative", "z", "abcdefghijklmnopqrstuvwxyz", -5);
        row("empty query", "", "Anything", 0);
        row("empty name", "a", "", Absent);
        row("out of order", "ba", "ab", Absent);
        row("longer than the name", "abc", "ab", Absent);
        row("no accent folding", "cafe", "Café", Absent);

        // Characters are grapheme clusters compared up to canonical
        // equivalence, whichever side is written decomposed.
        // c at 0: 21; a, f, é each continue the run: +11, +16, +21 → 69 - 1.
        row("composed both", "caf\u00E9", "Caf\u00E9", 68);
        row("decomposed query", "cafe\u0301", "Caf\u00E9", 68);
        row("decomposed name", "caf\u00E9", "Cafe\u0301", 68);
        row("upper-case accented query", "CAF\u00C9", "Cafe\u0301", 68);
        row("accent alone is not the letter", "e", "Cafe\u0301", Absent);
        row("mark order does not matter", "q\u0323\u0307", "aq\u0307\u0323", 1 - 0);
        // The emoji with its skin tone is one character: t is at 2, after a
        // space, in an 8-character name.
        row("emoji cluster", "t", "\U0001F44D\U0001F3FD Thumbs", 11 - 2);
        // The dotted capital I lower-cases to i + U+0307, which is not i.
        row("dotted capital I", "is", "\u0130stanbul", Absent);
        row("dotted capital I matched", "i\u0307s", "\u0130stanbul", 21 + 1 + 10 - 2);
        // Cyrillic: the second Ж is a camel hump.
        row("cyrillic hump", "жж", "ЖурналЖизни", 21 + 1 + 8 - 2);
        row("cyrillic query, latin name", "ж", "Journal", Absent);
    }

    void scores()
    {
        QFETCH(QString, query);
        QFETCH(QString, name);
        QFETCH(int, expected);
        QCOMPARE(FuzzyMatcher::score(query, name).value_or(Absent), expected);
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

        const QStringList plain{"b", "a", "b"};
        QCOMPARE(FuzzyMatcher::rank(plain, QStringLiteral("b"), [](const QString& s) { return s; }),
                 (QStringList{"b", "b"}));
    }
};

QTEST_GUILESS_MAIN(FuzzyMatcherTest)
#include "FuzzyMatcherTest.moc"
