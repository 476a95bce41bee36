// SPDX-License-Identifier: MIT
#include "AppNames.h"
#include "Bench.h"
#include "catalogue/AppRegistry.h"
#include "catalogue/FuzzyMatcher.h"
#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"

#include <QTemporaryDir>
#include <algorithm>

using namespace velkor;

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void rankWhileTyping(const QStringList& names, const QString& typed, const QString& label)
{
    std::vector<double> perKeystroke;
    qsizetype lastMatches = 0;
    for (qsizetype length = 1; length <= typed.size(); ++length) {
        const QString query = typed.left(length);
        std::vector<double> runs;
        for (int run = 0; run < 5; ++run) {
            runs.push_back(1000.0 * bench::bestOf(1, [&] {
                               lastMatches = FuzzyMatcher::rank(names, query, [](const QString& n) {
                                                 return n;
                                             }).size();
                           }));
        }
        perKeystroke.push_back(median(runs));
    }
    bench::report(label + QStringLiteral("_ms_median"), median(perKeystroke));
    bench::report(label + QStringLiteral("_ms_max"),
                  *std::max_element(perKeystroke.begin(), perKeystroke.end()));
    bench::report(label + QStringLiteral("_final_matches"), double(lastMatches));
}

} // namespace

VELKOR_BENCH(fuzzyRank)
{
    const QStringList names = bench::generatedAppNames(10000);
    rankWhileTyping(names, QStringLiteral("visual studio"), QStringLiteral("fuzzy_rank_10000"));
    rankWhileTyping(names, QStringLiteral("café"), QStringLiteral("fuzzy_rank_10000_accented"));
}

VELKOR_BENCH(registryRefresh)
{
    QTemporaryDir dir;
    Preferences prefs(std::make_unique<QSettings>(dir.filePath(QStringLiteral("bench.conf")),
                                                  QSettings::IniFormat));
    fake::CallLog log;
    fake::FakeWorkspace workspace(log);
    const QStringList names = bench::generatedAppNames(300);
    for (int i = 0; i < names.size(); ++i) {
        const QString id = QStringLiteral("org.example.app%1").arg(i);
        workspace.addApp(1000 + i, names.at(i), id, QStringLiteral("/apps/%1.desktop").arg(id));
        if (i % 7 == 0)
            prefs.recordLetterUsage(AppRegistry::letterKey(names.at(i)), id);
    }
    AppRegistry registry(workspace, nullptr, prefs);
    registry.refreshRunning(); // the collator's first use is not a refresh
    std::vector<double> refreshes;
    for (int i = 0; i < 200; ++i)
        refreshes.push_back(1000.0 * bench::bestOf(1, [&] { registry.refreshRunning(); }));
    bench::report(QStringLiteral("registry_refresh_300_ms_median"), median(refreshes));
    bench::report(QStringLiteral("registry_refresh_300_ms_max"),
                  *std::max_element(refreshes.begin(), refreshes.end()));
    bench::report(QStringLiteral("registry_refresh_300_letters"),
                  double(registry.letterMap().size()));
}

// What recording the letter's choice costs a switch, with the store written
// through to disk as the event loop would: nothing to write when the order
// stays, one file rewrite when it changes.
VELKOR_BENCH(letterUsageRecord)
{
    QTemporaryDir dir;
    Preferences prefs(std::make_unique<QSettings>(dir.filePath(QStringLiteral("bench.conf")),
                                                  QSettings::IniFormat));
    const QString letters = QStringLiteral("abcdefghijklmnopqrstuvwxyzéßж漢");
    for (const QChar letter : letters)
        for (int i = 0; i < 20; ++i)
            prefs.recordLetterUsage(letter,
                                    QStringLiteral("org.example.%1.app%2").arg(letter).arg(i));
    prefs.store().sync();
    const auto perSwitch = [&](auto&& chooseId) {
        std::vector<double> micros;
        for (int round = 0; round < 400; ++round)
            micros.push_back(1e6 * bench::bestOf(1, [&] {
                                 prefs.recordLetterUsage(QStringLiteral("s"), chooseId(round));
                                 prefs.store().sync();
                             }));
        return median(micros);
    };
    bench::report(QStringLiteral("record_letter_same_order_us_median"),
                  perSwitch([](int) { return QStringLiteral("org.example.s.app19"); }));
    bench::report(QStringLiteral("record_letter_new_order_us_median"), perSwitch([](int round) {
                      return QStringLiteral("org.example.s.app%1").arg(round % 2);
                  }));
}
