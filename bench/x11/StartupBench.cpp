// SPDX-License-Identifier: MIT
// Start-up: from exec to the activation key grabbed (Velkor usable), polled
// from the bench's client without a grab of its own (see GrabProbe), each
// start with a fresh settings folder. Twice: with the system's desktop
// entries only, and with 5,000 generated ones more, to show whether the
// installed-app scan stays off the critical path.
#include "BenchClient.h"
#include "Benches.h"
#include "Scene.h"
#include "StartWatch.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QDir>

namespace velkor::xbench {

namespace {

constexpr int DefaultStarts = 20;
constexpr int GeneratedEntries = 5000;

struct Series
{
    Samples toGrab, toLogLine, mainThreadCpuAtGrab, scanWall, scanCpu, scanEndAfterGrab;

    void add(const StartFigures& f)
    {
        const auto put = [](Samples& s, const std::optional<double>& v) {
            v ? s.add(*v) : s.fail();
        };
        put(toGrab, f.toGrab);
        put(toLogLine, f.toLogLine);
        put(mainThreadCpuAtGrab, f.mainThreadCpuAtGrab);
        put(scanWall, f.scanWall);
        put(scanCpu, f.scanCpu);
        put(scanEndAfterGrab, f.scanEndAfterGrab);
    }

    void report(const QString& prefix) const
    {
        toGrab.report(prefix + QLatin1String("_to_grab"));
        toLogLine.report(prefix + QLatin1String("_to_log_line"));
        mainThreadCpuAtGrab.report(prefix + QLatin1String("_main_thread_cpu_at_grab"));
        scanWall.report(prefix + QLatin1String("_scan_worker_wall"));
        scanCpu.report(prefix + QLatin1String("_scan_worker_cpu"));
        scanEndAfterGrab.report(prefix + QLatin1String("_scan_end_after_grab"));
    }
};

Series startRepeatedly(e2e::XDesktop& desktop, GrabProbe& probe, int starts, const QString& dataDir)
{
    Series series;
    for (int i = 0; i < starts; ++i) {
        if (probe.activationKeyGrabbed().value_or(false)) {
            // A Velkor of an earlier start still holds the key.
            e2e::XDesktop::settle(500);
        }
        const QString home = QStringLiteral("%1/start-%2-%3")
                                 .arg(desktop.scratchPath())
                                 .arg(dataDir.isEmpty())
                                 .arg(i);
        auto velkor = makeVelkor(desktop, home, dataDir);
        series.add(followStart(*velkor, probe));
        velkor->stop();
        e2e::XDesktop::settle(200);
    }
    return series;
}

} // namespace

int runStartup(const Options& options)
{
    e2e::XDesktop desktop;
    if (!desktop.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(desktop.error()));
        return 1;
    }
    // A desktop like the key-to-focus one: Velkor reads every window at start.
    if (launchApps(desktop, twelveNames()).isEmpty())
        return 1;
    BenchClient client(desktop.display());
    GrabProbe probe(client);
    if (probe.activationKeyGrabbed() != std::optional<bool>(false)) {
        std::fprintf(stderr, "the grab probe does not work on this desktop\n");
        return 1;
    }
    const int starts = options.trials > 0 ? options.trials : DefaultStarts;
    report(QStringLiteral("startup_starts"), starts);
    startRepeatedly(desktop, probe, starts, QString()).report(QStringLiteral("startup"));

    const QString entries = desktop.scratchPath() + QLatin1String("/entries");
    if (!writeDesktopEntries(entries, GeneratedEntries))
        return 1;
    report(QStringLiteral("startup_generated_entries"), GeneratedEntries);
    startRepeatedly(desktop, probe, starts, entries).report(QStringLiteral("startup_5000_entries"));
    return 0;
}

} // namespace velkor::xbench
