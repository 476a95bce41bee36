// SPDX-License-Identifier: MIT
// velkor-x11-bench: the X11 figures, as name=value lines.
// - key to focus: from an XTEST letter press under the activation key to
//   the window manager's _NET_ACTIVE_WINDOW change, against `wmctrl -a` and
//   `xdotool search --class … windowactivate` for the same windows, all on
//   one private Xvfb + openbox desktop;
// - idle resident memory after start, and wakeups over 30 s of idle;
// - the cold index of 2,650 generated desktop entries on a worker thread.
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "platform/x11/GioInstalledAppSource.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <poll.h>
#include <thread>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace velkor;
using namespace velkor::e2e;
using Clock = std::chrono::steady_clock;

namespace {

void report(const char* name, double value)
{
    std::printf("%s=%.3f\n", name, value);
    std::fflush(stdout);
}

// Watches the root window's _NET_ACTIVE_WINDOW on a connection of its own,
// so that the time of the change is the time this client learns of it.
class ActiveWatcher
{
public:
    explicit ActiveWatcher(const QString& display)
        : m_c(xcb_connect(display.toLatin1().constData(), nullptr))
    {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root;
        const char* name = "_NET_ACTIVE_WINDOW";
        auto* r = xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, uint16_t(strlen(name)), name),
                                        nullptr);
        m_atom = r->atom;
        free(r);
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_c, m_root, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_c);
    }
    ~ActiveWatcher() { xcb_disconnect(m_c); }

    xcb_window_t active() const
    {
        auto* r = xcb_get_property_reply(
            m_c, xcb_get_property(m_c, 0, m_root, m_atom, XCB_ATOM_WINDOW, 0, 1), nullptr);
        xcb_window_t w = 0;
        if (r && xcb_get_property_value_length(r) == 4)
            w = *static_cast<xcb_window_t*>(xcb_get_property_value(r));
        free(r);
        return w;
    }

    // Key events through XTEST on this connection, flushed, not waited for.
    void key(int keycode, bool press)
    {
        xcb_test_fake_input(m_c, press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, uint8_t(keycode),
                            XCB_CURRENT_TIME, m_root, 0, 0, 0);
        xcb_flush(m_c);
    }

    void sync() { free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr)); }

    void drain()
    {
        while (xcb_generic_event_t* e = xcb_poll_for_event(m_c))
            free(e);
    }

    // Seconds from start until this client learns that target is active;
    // negative on timeout. The clock stops when the property change arrives,
    // not after the read that confirms its value.
    double waitFor(xcb_window_t target, Clock::time_point start, double timeout = 3.0)
    {
        pollfd socket{xcb_get_file_descriptor(m_c), POLLIN, 0};
        for (;;) {
            const double elapsed = seconds(start, Clock::now());
            if (elapsed >= timeout)
                return -1;
            xcb_generic_event_t* e = xcb_poll_for_event(m_c);
            if (!e) {
                poll(&socket, 1, int((timeout - elapsed) * 1000) + 1);
                continue;
            }
            const auto arrived = Clock::now();
            const bool relevant = isActiveChange(e);
            free(e);
            if (!relevant || active() != target)
                continue;
            // A change that came in with the confirming reply (the window
            // manager often clears the property before setting it) was only
            // learnt now.
            bool laterChange = false;
            while (xcb_generic_event_t* queued = xcb_poll_for_queued_event(m_c)) {
                laterChange = laterChange || isActiveChange(queued);
                free(queued);
            }
            return seconds(start, laterChange ? Clock::now() : arrived);
        }
    }

private:
    static double seconds(Clock::time_point from, Clock::time_point to)
    {
        return std::chrono::duration<double>(to - from).count();
    }

    bool isActiveChange(const xcb_generic_event_t* e) const
    {
        return (e->response_type & 0x7f) == XCB_PROPERTY_NOTIFY &&
               reinterpret_cast<const xcb_property_notify_event_t*>(e)->atom == m_atom;
    }

    xcb_connection_t* m_c;
    xcb_window_t m_root = 0;
    xcb_atom_t m_atom = 0;
};

struct Figures
{
    std::vector<double> ms;
    int failures = 0;

    double at(double q)
    {
        std::sort(ms.begin(), ms.end());
        if (ms.empty())
            return -1;
        return ms[std::min(ms.size() - 1, size_t(q * double(ms.size())))];
    }
};

// Alternates between two windows: before each trial the other one is made
// active through the window manager, untimed. The trigger starts its work
// and returns; the change is watched for while it runs.
struct Trial
{
    std::function<void()> prepare; // untimed, before the clock starts
    std::function<void(int which)> trigger;
    std::function<void(int which)> finish; // untimed, after the change was seen
};

Figures measure(XDesktop& desktop, ActiveWatcher& watcher, const xcb_window_t windows[2],
                int trials, const Trial& trial)
{
    Figures f;
    for (int i = 0; i < trials; ++i) {
        const int which = i % 2;
        desktop.activate(windows[1 - which]);
        desktop.waitFor([&] { return watcher.active() == windows[1 - which]; });
        if (trial.prepare)
            trial.prepare();
        watcher.drain();
        const auto start = Clock::now();
        trial.trigger(which);
        const double took = watcher.waitFor(windows[which], start);
        if (trial.finish)
            trial.finish(which);
        if (took < 0)
            ++f.failures;
        else
            f.ms.push_back(took * 1000);
    }
    return f;
}

void reportFigures(const char* prefix, Figures& f)
{
    const QByteArray p(prefix);
    report((p + "_median_ms").constData(), f.at(0.5));
    report((p + "_p90_ms").constData(), f.at(0.9));
    report((p + "_p99_ms").constData(), f.at(0.99));
    report((p + "_failures").constData(), f.failures);
}

// A peer tool run on the desktop, started without waiting for it to end:
// the time it takes to exit is not part of its figure.
class PeerTool
{
public:
    explicit PeerTool(const QString& display)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), display);
        m_process.setProcessEnvironment(env);
    }

    void start(const QString& program, const QStringList& args) { m_process.start(program, args); }
    void reap() { m_process.waitForFinished(5000); }

private:
    QProcess m_process;
};

qint64 statusField(qint64 pid, const char* field)
{
    QFile f(QStringLiteral("/proc/%1/status").arg(pid));
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

// Context switches of every thread: each is one wakeup of that thread.
qint64 wakeups(qint64 pid)
{
    qint64 total = 0;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& tid : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile f(tasks.filePath(tid) + QLatin1String("/status"));
        if (!f.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : f.readAll().split('\n'))
            if (line.startsWith("voluntary_ctxt_switches:") ||
                line.startsWith("nonvoluntary_ctxt_switches:"))
                total += line.split(':').value(1).trimmed().toLongLong();
    }
    return total;
}

void coldIndex()
{
    QTemporaryDir dir;
    const QString apps = dir.path() + QLatin1String("/applications");
    QDir().mkpath(apps);
    for (int i = 0; i < 2650; ++i) {
        QFile f(QStringLiteral("%1/org.example.App%2.desktop").arg(apps).arg(i));
        if (!f.open(QIODevice::WriteOnly))
            return;
        f.write(QStringLiteral("[Desktop Entry]\nType=Application\nName=Generated App %1\n"
                               "Comment=An app for the benchmark\nExec=true %%U\nIcon=app%1\n"
                               "Categories=Utility;\n")
                    .arg(i)
                    .toUtf8());
    }
    // GIO reads the folders at its first use in this process: that is the
    // cold index.
    const QByteArray home = qgetenv("XDG_DATA_HOME");
    const QByteArray dirs = qgetenv("XDG_DATA_DIRS");
    qputenv("XDG_DATA_HOME", dir.path().toUtf8());
    qputenv("XDG_DATA_DIRS", (dir.path() + QLatin1String("/none")).toUtf8());
    qsizetype found = 0;
    const auto start = Clock::now();
    std::thread worker([&] { found = x11::GioInstalledAppSource().scan().size(); });
    worker.join();
    report("cold_index_2650_entries_ms",
           std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    report("cold_index_entries_found", double(found));
    // The desktop started next needs the real data folders (openbox's themes).
    home.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", home);
    dirs.isNull() ? qunsetenv("XDG_DATA_DIRS") : qputenv("XDG_DATA_DIRS", dirs);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int trials = argc > 1 ? std::max(2, atoi(argv[1])) : 200;
    coldIndex();

    XDesktop desktop;
    if (!desktop.start()) {
        std::fprintf(stderr, "%s\n", qPrintable(desktop.error()));
        return 1;
    }
    const xcb_window_t windows[2] = {desktop.launchTerminal(QStringLiteral("Alpha")),
                                     desktop.launchTerminal(QStringLiteral("Beta"))};
    VelkorInstance velkor(desktop);
    if (!windows[0] || !windows[1] || !velkor.start()) {
        std::fprintf(stderr, "desktop or velkor did not start\n%s\n", qPrintable(velkor.log()));
        return 1;
    }
    XDesktop::settle(2000);
    report("idle_rss_mb", double(statusField(velkor.pid(), "VmRSS:")) / 1024.0);
    const qint64 before = wakeups(velkor.pid());
    XDesktop::settle(30000);
    report("idle_wakeups_30s", double(wakeups(velkor.pid()) - before));

    ActiveWatcher watcher(desktop.display());
    const char letters[2] = {'a', 'b'};
    report("trials", trials);
    Clock::time_point lastSuper{};
    const auto letterUnderSuper = [&] {
        // A new session per trial, its press kept more than 0.35 s from the
        // last so that it is never a double tap; the activation key goes
        // down a moment before the timed letter, as a hand does.
        std::this_thread::sleep_until(lastSuper + std::chrono::milliseconds(380));
        lastSuper = Clock::now();
        watcher.key(key::SuperR, true);
        watcher.sync();
        XDesktop::settle(20);
    };
    const auto letter = [&](int which) { return key::of(QLatin1Char(letters[which])); };
    Figures velkorFigures =
        measure(desktop, watcher, windows, trials,
                {letterUnderSuper, [&](int which) { watcher.key(letter(which), true); },
                 [&](int which) {
                     watcher.key(letter(which), false);
                     watcher.key(key::SuperR, false);
                     watcher.sync();
                 }});
    PeerTool tool(desktop.display());
    const auto reap = [&](int) { tool.reap(); };
    Figures wmctrl =
        measure(desktop, watcher, windows, trials,
                {{},
                 [&](int which) {
                     tool.start(QStringLiteral("wmctrl"),
                                {QStringLiteral("-a"),
                                 which ? QStringLiteral("Beta") : QStringLiteral("Alpha")});
                 },
                 reap});
    Figures xdotool =
        measure(desktop, watcher, windows, trials,
                {{},
                 [&](int which) {
                     tool.start(QStringLiteral("xdotool"),
                                {QStringLiteral("search"), QStringLiteral("--class"),
                                 which ? QStringLiteral("Beta") : QStringLiteral("Alpha"),
                                 QStringLiteral("windowactivate")});
                 },
                 reap});
    reportFigures("key_to_focus_velkor", velkorFigures);
    reportFigures("key_to_focus_wmctrl", wmctrl);
    reportFigures("key_to_focus_xdotool", xdotool);
    report("ratio_wmctrl_over_velkor_median", wmctrl.at(0.5) / velkorFigures.at(0.5));
    report("ratio_xdotool_over_velkor_median", xdotool.at(0.5) / velkorFigures.at(0.5));
    velkor.stop();
    return 0;
}
