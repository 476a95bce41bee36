// SPDX-License-Identifier: MIT
// Velkor at rest: resident memory two seconds after start, and how often its
// threads wake up over thirty seconds of nobody touching anything.
#include "Benches.h"
#include "ProcessStats.h"
#include "Report.h"
#include "Scene.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

namespace velkor::xbench {

int runIdle(const Options&)
{
    Stage stage;
    if (!stage.start({QStringLiteral("Alpha"), QStringLiteral("Bravo")}))
        return 1;
    const qint64 pid = stage.velkor().pid();
    e2e::XDesktop::settle(2000);
    if (const auto memory = memoryOf(pid)) {
        report(QStringLiteral("idle_rss_mb"), memory->residentMb);
        report(QStringLiteral("idle_rss_anon_mb"), memory->anonymousMb);
        report(QStringLiteral("idle_rss_file_mb"), memory->fileMb);
        report(QStringLiteral("idle_private_mb"), memory->privateMb);
        report(QStringLiteral("idle_pss_mb"), memory->proportionalMb);
    }
    report(QStringLiteral("idle_threads"), double(threadsOf(pid).size()));
    const qint64 before = wakeups(pid);
    const double cpuBefore = cpuMs(pid);
    e2e::XDesktop::settle(30000);
    report(QStringLiteral("idle_wakeups_30s"), double(wakeups(pid) - before));
    report(QStringLiteral("idle_cpu_ms_30s"), cpuMs(pid) - cpuBefore);
    return 0;
}

} // namespace velkor::xbench
