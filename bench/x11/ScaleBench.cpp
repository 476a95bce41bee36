// SPDX-License-Identifier: MIT
// Scale: key to focus with twelve windows, then with 500 windows and 5,000
// desktop entries on the same desktop (the same twelve targets, a crowd of
// multi-window clients around them); the cold index of 5,000 entries, on a
// worker thread in this process and as Velkor's own scan thread seen from
// outside. The search keystroke over everything is velkor-bench's
// searchKeystroke (the ranking is portable).
#include "BenchClient.h"
#include "Benches.h"
#include "KeyToFocus.h"
#include "ProcessStats.h"
#include "Scene.h"
#include "StartWatch.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "platform/x11/GioInstalledAppSource.h"

#include <QTemporaryDir>
#include <thread>

namespace velkor::xbench {

namespace {

constexpr int Windows = 500;
constexpr int Entries = 5000;

// GIO reads the folders at its first use in a process: that is the cold
// index, here on a worker as in Velkor. Runs before any desktop starts,
// since it points the data folders elsewhere for a while.
void coldIndexInProcess()
{
    QTemporaryDir dir;
    if (!writeDesktopEntries(dir.path(), Entries))
        return;
    const QByteArray home = qgetenv("XDG_DATA_HOME");
    const QByteArray dirs = qgetenv("XDG_DATA_DIRS");
    qputenv("XDG_DATA_HOME", dir.path().toUtf8());
    qputenv("XDG_DATA_DIRS", (dir.path() + QLatin1String("/none")).toUtf8());
    qsizetype found = 0;
    const auto start = Clock::now();
    std::thread worker([&] { found = x11::GioInstalledAppSource().scan().size(); });
    worker.join();
    report(QStringLiteral("cold_index_5000_entries_ms"), msSince(start));
    report(QStringLiteral("cold_index_5000_entries_found"), double(found));
    // The desktop started next needs the real data folders (openbox's themes).
    home.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", home);
    dirs.isNull() ? qunsetenv("XDG_DATA_DIRS") : qputenv("XDG_DATA_DIRS", dirs);
}

} // namespace

int runScale(const Options& options)
{
    coldIndexInProcess();

    Stage stage;
    if (!stage.start(twelveNames()))
        return 1;
    e2e::XDesktop& desktop = stage.desktop();
    e2e::XDesktop::settle(2000);
    const KeyToFocus few = measureKeyToFocus(desktop, stage.client(), stage.velkor(), stage.apps(),
                                             options.rounds, options.seed, false);
    report(QStringLiteral("scale_12_windows"), double(desktop.clients().size()));
    reportKeyToFocus(QStringLiteral("scale_12"), few, false);
    stage.velkor().stop();

    const QString entries = desktop.scratchPath() + QLatin1String("/entries");
    if (!writeDesktopEntries(entries, Entries) || !launchCrowd(desktop, Windows)) {
        std::fprintf(stderr, "the crowd of windows or the entries did not come up\n");
        return 1;
    }
    auto velkor =
        makeVelkor(desktop, desktop.scratchPath() + QLatin1String("/velkor-crowd"), entries);
    {
        // Velkor's own scan thread, followed from outside during its start.
        GrabProbe probe(stage.client());
        const StartFigures start = followStart(*velkor, probe);
        report(QStringLiteral("scale_500_startup_to_grab_ms"), start.toGrab.value_or(-1));
        report(QStringLiteral("velkor_scan_worker_5000_wall_ms"), start.scanWall.value_or(-1));
        report(QStringLiteral("velkor_scan_worker_5000_cpu_ms"), start.scanCpu.value_or(-1));
    }
    if (!velkor->isRunning() || !velkor->logSaysKeyGrabbed()) {
        std::fprintf(stderr, "velkor did not start among 500 windows\n%s\n",
                     qPrintable(velkor->log()));
        return 1;
    }
    e2e::XDesktop::settle(2000);
    report(QStringLiteral("scale_500_windows"), double(desktop.clients().size()));
    report(QStringLiteral("scale_500_entries"), Entries);
    if (const auto memory = memoryOf(velkor->pid()))
        report(QStringLiteral("scale_500_rss_mb"), memory->residentMb);
    const KeyToFocus many = measureKeyToFocus(desktop, stage.client(), *velkor, stage.apps(),
                                              options.rounds, options.seed + 1, false);
    reportKeyToFocus(QStringLiteral("scale_500"), many, false);
    if (few.velkor.median() > 0) {
        report(QStringLiteral("scale_ratio_500_over_12_velkor_median"),
               many.velkor.median() / few.velkor.median());
        report(QStringLiteral("scale_ratio_500_over_12_floor_median"),
               many.floor.median() / few.floor.median());
    }
    velkor->stop();
    return 0;
}

} // namespace velkor::xbench
