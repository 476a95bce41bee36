// SPDX-License-Identifier: MIT
// The overlay's first frame: from the activation key going down, with the
// overlay delay set to 0 in the settings, to the overlay window mapped and
// to its first painted frame, as another X client sees them. Velkor's own
// "show now" moment cannot be seen from outside; with no delay it follows
// the key press by the key's delivery, the session's start (a registry
// refresh) and one turn of the event loop (a zero-length timer). So the
// figure includes all of that, and is an upper bound of request to frame.
#include "BenchClient.h"
#include "Benches.h"
#include "OverlayWatch.h"
#include "ProcessStats.h"
#include "Scene.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QProcess>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace velkor::xbench {

namespace {

constexpr int DefaultShows = 100;
// Further apart than a double tap's 0.35 s, with a margin for a press that
// Velkor handles late on a busy machine (it times presses when handled).
constexpr auto SessionsApart = std::chrono::milliseconds(450);
// The fade-in lasts 0.14 s; this covers it with room.
constexpr double FadeWatchMs = 250;

struct Show
{
    double toMap = -1;
    double toPaint = -1;
    int opacityChanges = 0;
    double fadeMainThreadCpuMs = -1;
    bool created = false;
};

// One hold of the activation key until the overlay is on screen and its
// fade is over, then the release and the overlay gone again.
Show showOnce(BenchClient& client, OverlayWatch& watch, qint64 pid)
{
    Show s;
    const auto start = Clock::now();
    client.key(e2e::key::SuperR, true);
    if (watch.waitForMap(2000))
        s.toMap = msBetween(start, *watch.mappedAt());
    if (watch.waitForPaint(2000))
        s.toPaint = msBetween(start, *watch.paintedAt());
    s.created = watch.wasCreatedForThisMap();
    if (watch.mappedAt()) {
        // The fade's cost on the main thread from the first frame to the
        // fade's end, read from outside while the window's opacity changes
        // are counted.
        const double cpuBefore = mainThreadCpuMs(pid);
        const double left = FadeWatchMs - msSince(*watch.mappedAt());
        if (left > 0)
            client.pump([](const xcb_generic_event_t*) { return false; }, left);
        s.fadeMainThreadCpuMs = mainThreadCpuMs(pid) - cpuBefore;
        s.opacityChanges = watch.opacityChanges();
    }
    client.key(e2e::key::SuperR, false);
    watch.waitForUnmap(2000);
    return s;
}

// Allocations per frame of the fade are counted inside a process of their
// own (velkor-fade-bench), on this desktop's display; its lines are
// passed on as they are.
void fadeAllocations(const e2e::XDesktop& desktop)
{
#ifdef VELKOR_FADE_BENCH
    QProcess fade;
    QProcessEnvironment env = desktop.environment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), desktop.scratchPath()); // private, 0700
    fade.setProcessEnvironment(env);
    fade.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    fade.start(QStringLiteral(VELKOR_FADE_BENCH), {});
    if (!fade.waitForFinished(60000))
        fade.kill();
    std::fputs(fade.readAllStandardOutput().constData(), stdout);
    std::fflush(stdout);
#else
    Q_UNUSED(desktop);
#endif
}

// Shows shows after one more that is reported apart, every figure named
// with prefix.
void measureShows(const QString& prefix, BenchClient& client, OverlayWatch& watch, qint64 pid,
                  int shows)
{
    const auto name = [&prefix](const char* figure) {
        return prefix + QLatin1Char('_') + QLatin1String(figure);
    };
    Samples toMap, toPaint, mapToPaint, fadeCpu;
    std::vector<double> opacityChanges;
    Clock::time_point lastPress{};
    for (int i = 0; i <= shows; ++i) {
        std::this_thread::sleep_until(lastPress + SessionsApart);
        lastPress = Clock::now();
        const Show s = showOnce(client, watch, pid);
        if (i == 0) {
            // The first show after start (or after a compositor came) may
            // make the window: its own figure.
            report(name("first_show_created_window"), s.created ? 1 : 0);
            report(name("first_show_press_to_map_ms"), s.toMap);
            report(name("first_show_press_to_painted_ms"), s.toPaint);
            continue;
        }
        s.toMap < 0 ? toMap.fail() : toMap.add(s.toMap);
        s.toPaint < 0 ? toPaint.fail() : toPaint.add(s.toPaint);
        if (s.toMap >= 0 && s.toPaint >= 0)
            mapToPaint.add(s.toPaint - s.toMap);
        if (s.fadeMainThreadCpuMs >= 0)
            fadeCpu.add(s.fadeMainThreadCpuMs);
        opacityChanges.push_back(s.opacityChanges);
    }
    toMap.report(name("press_to_map"));
    toPaint.report(name("press_to_painted"));
    mapToPaint.report(name("map_to_painted"));
    fadeCpu.report(name("fade_main_thread_cpu"));
    std::sort(opacityChanges.begin(), opacityChanges.end());
    if (!opacityChanges.empty()) {
        const double frames = opacityChanges[opacityChanges.size() / 2];
        report(name("fade_opacity_changes_median"), frames);
        if (frames > 0)
            report(name("fade_main_thread_cpu_per_change_ms"), fadeCpu.median() / frames);
    }
}

// Whether a compositor holds the screen's _NET_WM_CM_S0 selection.
bool composited(BenchClient& client)
{
    xcb_connection_t* c = client.connection();
    std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, client.atom("_NET_WM_CM_S0")),
                                      nullptr),
        &std::free);
    return owner && owner->owner != XCB_NONE;
}

} // namespace

int runOverlay(const Options& options)
{
    Stage stage;
    const auto noDelay = [](Preferences& prefs) { prefs.setOverlayDelay(0.0); };
    if (!stage.start({QStringLiteral("Alpha"), QStringLiteral("Bravo")}, noDelay))
        return 1;
    BenchClient& client = stage.client();
    OverlayWatch watch(client);
    const qint64 pid = stage.velkor().pid();
    e2e::XDesktop::settle(2000);
    report(QStringLiteral("overlay_delay_setting_s"), 0);
    report(QStringLiteral("overlay_sees_paint"), watch.seesPaint() ? 1 : 0);
    const int shows = options.trials > 0 ? options.trials : DefaultShows;

    // Without a compositor (this desktop as it starts) the overlay is shaped
    // and shown at once; with one it fades in, and only then has frames to
    // count allocations in.
    measureShows(QStringLiteral("overlay"), client, watch, pid, shows);
    QProcess compositor;
    compositor.setProcessEnvironment(stage.desktop().environment());
    compositor.start(QStringLiteral("xcompmgr"), {});
    bool ready = compositor.waitForStarted(5000);
    for (int i = 0; ready && i < 500 && !composited(client); ++i)
        e2e::XDesktop::settle(10);
    ready = ready && composited(client);
    report(QStringLiteral("overlay_composited_compositor_running"), ready ? 1 : 0);
    if (ready) {
        // Velkor follows the compositor's arrival before the next show.
        e2e::XDesktop::settle(500);
        measureShows(QStringLiteral("overlay_composited"), client, watch, pid, shows);
    }
    fadeAllocations(stage.desktop());
    compositor.terminate();
    compositor.waitForFinished(2000);
    return 0;
}

} // namespace velkor::xbench
