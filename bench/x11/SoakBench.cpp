// SPDX-License-Identifier: MIT
// The soak: N gestures of a seeded mix (see SoakGestures) against a real
// Velkor, with windows coming and going, each waited for until its effect
// shows. Every 100 gestures: Velkor's resident memory from /proc and its
// CPU time (user + system, every thread) per gesture over those 100.
#include "BenchClient.h"
#include "Benches.h"
#include "OverlayWatch.h"
#include "ProcessStats.h"
#include "Scene.h"
#include "SoakGestures.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QProcess>
#include <array>

namespace velkor::xbench {

namespace {

constexpr int ReportEvery = 100;

void reportMemory(const QString& at, qint64 pid)
{
    if (const auto m = memoryOf(pid)) {
        report(QStringLiteral("soak_rss_mb_at_") + at, m->residentMb);
        report(QStringLiteral("soak_rss_anon_mb_at_") + at, m->anonymousMb);
    }
}

// What a Qt program with a tray icon and an overlay and nothing else keeps
// resident on the same desk, idle and after as many showings as a soak
// shows the overlay: the part of Velkor's figure that is Qt's.
void reportQtFloor(e2e::XDesktop& desktop)
{
#ifdef VELKOR_QT_FLOOR
    constexpr int Showings = 300;
    QProcess floor;
    floor.setProcessEnvironment(desktop.environment());
    floor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    floor.start(QStringLiteral(VELKOR_QT_FLOOR), {QString::number(Showings)});
    auto waitFor = [&floor](const char* line) {
        return floor.waitForReadyRead(30000) && floor.readLine().startsWith(line);
    };
    if (waitFor("idle")) {
        if (const auto idle = memoryOf(floor.processId()))
            report(QStringLiteral("qt_floor_idle_rss_mb"), idle->residentMb);
        if (waitFor("done")) {
            e2e::XDesktop::settle(500);
            if (const auto end = memoryOf(floor.processId())) {
                report(QStringLiteral("qt_floor_rss_mb"), end->residentMb);
                report(QStringLiteral("qt_floor_rss_anon_mb"), end->anonymousMb);
                report(QStringLiteral("qt_floor_private_mb"), end->privateMb);
            }
        }
    }
    floor.kill();
    floor.waitForFinished(2000);
#else
    Q_UNUSED(desktop);
#endif
}

} // namespace

int runSoak(const Options& options)
{
    Stage stage;
    if (!stage.start(soakAppNames()))
        return 1;
    e2e::XDesktop& desktop = stage.desktop();
    const xcb_window_t multi =
        desktop.launch(QStringLiteral(VELKOR_MULTI_WINDOW_CLIENT),
                       {soakMultiWindowName(), QStringLiteral("name=Multi one"),
                        QStringLiteral("name=Multi two"), QStringLiteral("name=Multi three")},
                       soakMultiWindowName());
    OverlayWatch overlay(stage.client());
    SoakGestures gestures(desktop, stage.client(), overlay, stage.apps(), multi, options.seed);
    const qint64 pid = stage.velkor().pid();
    e2e::XDesktop::settle(2000);

    const int total = options.soakGestures;
    report(QStringLiteral("soak_gestures"), total);
    reportMemory(QStringLiteral("0"), pid);
    const auto start = Clock::now();
    const double cpuStart = cpuMs(pid);
    const qint64 wakeupsStart = wakeups(pid);
    double cpuMark = cpuStart;
    std::optional<double> rssAt200;
    std::array<int, size_t(Gesture::Count)> done{}, missed{};
    // CPU per kind of gesture, from Velkor's live threads' schedstat around
    // each gesture: work a gesture leaves behind lands on the next one.
    std::array<double, size_t(Gesture::Count)> cpuByKind{};
    for (int i = 1; i <= total; ++i) {
        const Gesture g = gestures.pick();
        ++done[size_t(g)];
        const double cpuBefore = liveThreadsCpuMs(pid);
        if (!gestures.perform(g))
            ++missed[size_t(g)];
        cpuByKind[size_t(g)] += liveThreadsCpuMs(pid) - cpuBefore;
        if (!stage.velkor().isRunning()) {
            std::fprintf(stderr, "velkor exited at gesture %d\n%s\n", i,
                         qPrintable(stage.velkor().log()));
            return 1;
        }
        if (i % ReportEvery == 0 || i == total) {
            const QString at = QString::number(i);
            reportMemory(at, pid);
            const double cpu = cpuMs(pid);
            const int span = i % ReportEvery ? i % ReportEvery : ReportEvery;
            report(QStringLiteral("soak_cpu_ms_per_gesture_at_") + at, (cpu - cpuMark) / span);
            cpuMark = cpu;
            if (i == 200)
                rssAt200 = memoryOf(pid).value_or(Memory{}).residentMb;
        }
    }
    const double seconds = msSince(start) / 1000.0;
    // Work a gesture left behind (a window's properties read after it
    // opened) belongs to the gestures too.
    e2e::XDesktop::settle(1000);
    report(QStringLiteral("soak_seconds"), seconds);
    report(QStringLiteral("soak_cpu_ms_per_gesture"), (cpuMs(pid) - cpuStart) / total);
    // Steadier than CPU time on a shared machine, and on a virtual one most
    // of a gesture's time is spent waking up.
    report(QStringLiteral("soak_wakeups_per_gesture"), double(wakeups(pid) - wakeupsStart) / total);
    const Memory end = memoryOf(pid).value_or(Memory{});
    report(QStringLiteral("soak_rss_mb_end"), end.residentMb);
    report(QStringLiteral("soak_rss_file_mb_end"), end.fileMb);
    report(QStringLiteral("soak_private_mb_end"), end.privateMb);
    report(QStringLiteral("soak_pss_mb_end"), end.proportionalMb);
    if (rssAt200)
        report(QStringLiteral("soak_rss_growth_from_200_mb"), end.residentMb - *rssAt200);
    report(QStringLiteral("soak_threads_end"), double(threadsOf(pid).size()));
    int unconfirmed = 0;
    for (size_t g = 0; g < done.size(); ++g) {
        const QString name = QString::fromLatin1(nameOf(Gesture(g)));
        report(QStringLiteral("soak_count_") + name, done[g]);
        if (done[g])
            report(QStringLiteral("soak_cpu_ms_per_") + name, cpuByKind[g] / done[g]);
        if (missed[g])
            report(QStringLiteral("soak_unconfirmed_") + name, missed[g]);
        unconfirmed += missed[g];
    }
    report(QStringLiteral("soak_unconfirmed"), unconfirmed);
    reportQtFloor(desktop);
    return 0;
}

} // namespace velkor::xbench
