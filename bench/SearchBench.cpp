// SPDX-License-Identifier: MIT
// One search keystroke over everything: 500 running apps and 5,000 installed
// ones, through the whole switching core on the fake platform (key event in,
// ranked rows in the overlay model out). The overlay's repaint is not part
// of it; velkor-x11-bench's overlay figures see the window.
#include "AppNames.h"
#include "Bench.h"
#include "CoordinatorHarness.h"

#include <algorithm>

namespace {

using velkor::test::CoordinatorHarness;

constexpr int Running = 500;
constexpr int Installed = 5000;
constexpr int Sessions = 20;

} // namespace

VELKOR_BENCH(searchKeystroke)
{
    using namespace velkor;
    CoordinatorHarness h;
    const QStringList names = bench::generatedAppNames(Running + Installed);
    for (int i = 0; i < Running; ++i)
        h.addApp(1000 + i, names[i], QStringLiteral("org.bench.running%1").arg(i));
    for (int i = Running; i < names.size(); ++i)
        h.addInstalled(names[i], QStringLiteral("org.bench.installed%1").arg(i));
    h.fake.workspace->frontmost = 1000;
    h.boot();

    // The first letter switches (or starts the search); every later one
    // searches running and installed apps together.
    const QString typed = QStringLiteral("visual studio");
    std::vector<double> perKeystroke;
    std::vector<double> firstSearch; // the second letter: a search over all 5,500 names
    qsizetype rows = 0;
    for (int session = 0; session < Sessions; ++session) {
        h.pressActivation();
        h.type(typed.at(0));
        for (qsizetype i = 1; i < typed.size(); ++i) {
            perKeystroke.push_back(1000.0 * bench::bestOf(1, [&] { h.type(typed.at(i)); }));
            if (i == 1)
                firstSearch.push_back(perKeystroke.back());
            rows = h.model().items().size();
        }
        h.releaseActivation();
        h.clearLog();
        h.advance(0.5);
    }
    std::sort(perKeystroke.begin(), perKeystroke.end());
    std::sort(firstSearch.begin(), firstSearch.end());
    const QString name =
        QStringLiteral("search_keystroke_%1_running_%2_installed").arg(Running).arg(Installed);
    bench::report(name + QStringLiteral("_ms_median"), perKeystroke[perKeystroke.size() / 2]);
    bench::report(name + QStringLiteral("_ms_p90"), perKeystroke[perKeystroke.size() * 9 / 10]);
    bench::report(name + QStringLiteral("_ms_max"), perKeystroke.back());
    bench::report(name + QStringLiteral("_first_search_ms_median"),
                  firstSearch[firstSearch.size() / 2]);
    bench::report(name + QStringLiteral("_rows_shown"), double(rows));
}
