// SPDX-License-Identifier: MIT
#include "KeyToFocus.h"

#include "BenchClient.h"
#include "ProcessStats.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QProcess>
#include <array>
#include <filesystem>
#include <random>
#include <thread>

namespace velkor::xbench {

using e2e::XDesktop;

namespace {

enum class Method
{
    Velkor,
    Floor,
    KeyFloor,
    Wmctrl,
    Xdotool
};

// Two presses of the activation key closer than 0.35 s are a double tap;
// every session of this benchmark starts further apart than that. Velkor
// times a press when it handles it, not when it happened, so a press
// handled late on a busy machine brings the next one closer: hence the
// wide margin.
constexpr auto SessionsApart = std::chrono::milliseconds(500);
// The activation key goes down this long before the timed letter, so the
// session's start (a registry refresh) is not part of the figure.
constexpr int KeyDownBeforeLetterMs = 20;
// Every client idles this long before a timed trial, so that none is still
// handling the previous one's changes.
constexpr int QuietBeforeTrialMs = 10;
// Velkor's work on a switch goes on after the focus changed (the session's
// end at the release among it); its CPU is read this long after.
constexpr int AfterReleaseMs = 30;

struct Trial
{
    double ms = -1; // ask to focus seen; negative when it did not come in time
    // Ask to the activation request for the target seen on the root (a
    // client message reaches every client that watches the root's
    // substructure, this one included): the switcher's own share.
    std::optional<double> toRequestMs;
    int rootMessages = 0; // client messages to the root during the trial
    std::optional<double> velkorCpuMs;
    std::optional<double> velkorMainThreadCpuMs;
    bool settingsWritten = false; // Velkor's settings file changed
};

// When the settings file was last written; nothing while it does not exist.
std::optional<std::filesystem::file_time_type> writtenAt(const QString& path)
{
    std::error_code error;
    const auto at = std::filesystem::last_write_time(path.toStdString(), error);
    return error ? std::nullopt : std::optional(at);
}

// One way of asking for a switch, timed from the ask to the change seen.
class Trials
{
public:
    Trials(XDesktop& desktop, BenchClient& client, const e2e::VelkorInstance& velkor)
        : m_desktop(desktop), m_client(client), m_pid(velkor.pid()),
          m_settingsFile(velkor.configHome() + QLatin1String("/Velkor/Velkor.conf"))
    {
        m_peer.setProcessEnvironment(desktop.environment());
        startKeyFloor(desktop);
        m_activeWindow = m_client.atom("_NET_ACTIVE_WINDOW");
        m_client.watchTopLevels();
        m_client.setObserver([this](const xcb_generic_event_t* e, Clock::time_point at) {
            if ((e->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
                return;
            const auto* m = reinterpret_cast<const xcb_client_message_event_t*>(e);
            ++m_rootMessages;
            if (m->type == m_activeWindow && m->window == m_target && !m_requestAt)
                m_requestAt = at;
        });
    }
    ~Trials()
    {
        m_client.setObserver({});
        m_keyFloor.kill();
        m_keyFloor.waitForFinished(2000);
    }

    bool hasKeyFloor() const { return m_keyFloor.state() == QProcess::Running; }

    Trial run(Method method, const App& from, const App& to)
    {
        startFrom(from);
        xcb_timestamp_t time = XCB_CURRENT_TIME;
        std::optional<quint32> otherDesktop;
        if (method == Method::KeyFloor) {
            // Named before the quiet time, as Velkor knows its windows
            // before the key.
            m_client.setKeyFloorTarget(to.window);
            m_client.sync();
        }
        XDesktop::settle(QuietBeforeTrialMs);
        if (method == Method::Velkor) {
            std::this_thread::sleep_until(m_lastSession + SessionsApart);
            m_lastSession = Clock::now();
            m_client.key(e2e::key::SuperR, true);
            m_client.sync();
            XDesktop::settle(KeyDownBeforeLetterMs);
        } else if (method == Method::Floor) {
            // What Velkor knows from its cache without asking the server.
            time = m_client.freshTimestamp();
            const auto desktop = m_client.desktopOf(to.window);
            if (desktop && desktop != m_client.currentDesktop())
                otherDesktop = desktop;
        }
        const bool velkor = method == Method::Velkor;
        const double cpuBefore = velkor ? liveThreadsCpuMs(m_pid) : 0;
        const double mainBefore = velkor ? mainThreadCpuMs(m_pid) : 0;
        const auto settingsBefore = writtenAt(m_settingsFile);
        m_client.drain();
        m_target = to.window;
        m_requestAt.reset();
        m_rootMessages = 0;
        const auto start = Clock::now();
        switch (method) {
        case Method::Velkor:
            m_client.key(to.letterKey, true);
            break;
        case Method::Floor:
            m_client.requestActivation(to.window, time, otherDesktop);
            break;
        case Method::KeyFloor:
            m_client.key(m_keyFloorKeycode, true);
            break;
        case Method::Wmctrl:
            m_peer.start(QStringLiteral("wmctrl"), {QStringLiteral("-a"), to.name});
            break;
        case Method::Xdotool:
            m_peer.start(QStringLiteral("xdotool"),
                         {QStringLiteral("search"), QStringLiteral("--class"), to.name,
                          QStringLiteral("windowactivate")});
            break;
        }
        Trial trial;
        trial.ms = m_client.waitForActive(to.window, start);
        if (m_requestAt)
            trial.toRequestMs = msBetween(start, *m_requestAt);
        trial.rootMessages = m_rootMessages;
        if (method == Method::Velkor) {
            m_client.key(to.letterKey, false);
            m_client.key(e2e::key::SuperR, false);
            m_client.sync();
            XDesktop::settle(AfterReleaseMs);
            trial.velkorCpuMs = liveThreadsCpuMs(m_pid) - cpuBefore;
            trial.velkorMainThreadCpuMs = mainThreadCpuMs(m_pid) - mainBefore;
            trial.settingsWritten = writtenAt(m_settingsFile) != settingsBefore;
        } else if (method == Method::KeyFloor) {
            m_client.key(m_keyFloorKeycode, false);
            m_client.sync();
        } else if (method == Method::Wmctrl || method == Method::Xdotool) {
            // The time a peer takes to exit is not part of its figure.
            m_peer.waitForFinished(5000);
        }
        return trial;
    }

private:
    void startKeyFloor(XDesktop& desktop)
    {
#ifdef VELKOR_KEY_FLOOR
        m_keyFloorKeycode = m_client.unboundKeycode();
        if (!m_keyFloorKeycode)
            return;
        m_keyFloor.setProcessEnvironment(desktop.environment());
        m_keyFloor.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_keyFloor.start(QStringLiteral(VELKOR_KEY_FLOOR), {QString::number(m_keyFloorKeycode)});
        if (!m_keyFloor.waitForReadyRead(5000) || !m_keyFloor.readLine().startsWith("ready"))
            m_keyFloor.kill();
#else
        Q_UNUSED(desktop);
#endif
    }

    // Untimed: the start window made active through the window manager.
    void startFrom(const App& from)
    {
        if (m_client.activeWindow() == from.window)
            return;
        const auto start = Clock::now();
        m_desktop.activate(from.window);
        m_client.waitForActive(from.window, start);
    }

    XDesktop& m_desktop;
    BenchClient& m_client;
    const qint64 m_pid;
    const QString m_settingsFile;
    QProcess m_peer;
    QProcess m_keyFloor;
    int m_keyFloorKeycode = 0;
    Clock::time_point m_lastSession{};
    xcb_atom_t m_activeWindow = 0;
    xcb_window_t m_target = 0;
    std::optional<Clock::time_point> m_requestAt;
    int m_rootMessages = 0;
};

void record(Samples& samples, double ms)
{
    if (ms < 0)
        samples.fail();
    else
        samples.add(ms);
}

// The split of one trial at the request: before it the switcher's work,
// after it the window manager's.
void recordSplit(Samples& toRequest, Samples& requestToFocus, const Trial& t)
{
    if (t.ms < 0 || !t.toRequestMs) {
        toRequest.fail();
        return;
    }
    toRequest.add(*t.toRequestMs);
    requestToFocus.add(t.ms - *t.toRequestMs);
}

void reportRatio(const QString& name, double over, double under)
{
    if (over > 0 && under > 0)
        report(name, over / under);
}

} // namespace

KeyToFocus measureKeyToFocus(XDesktop& desktop, BenchClient& client,
                             const e2e::VelkorInstance& velkor, const QList<App>& apps, int rounds,
                             quint32 seed, bool withPeers)
{
    KeyToFocus f;
    if (apps.size() < 2)
        return f;
    Trials trials(desktop, client, velkor);
    std::mt19937 random(seed);
    std::vector<Method> methods{Method::Velkor, Method::Floor};
    if (trials.hasKeyFloor())
        methods.push_back(Method::KeyFloor);
    if (withPeers)
        methods.insert(methods.end(), {Method::Wmctrl, Method::Xdotool});
    for (int round = 0; round < rounds; ++round) {
        const qsizetype target = qsizetype(random() % quint32(apps.size()));
        const qsizetype from =
            (target + 1 + qsizetype(random() % quint32(apps.size() - 1))) % apps.size();
        double velkorMs = -1;
        double floorMs = -1;
        double keyFloorMs = -1;
        for (size_t i = 0; i < methods.size(); ++i) {
            const Method method = methods[(size_t(round) + i) % methods.size()];
            const Trial t = trials.run(method, apps[from], apps[target]);
            switch (method) {
            case Method::Velkor:
                record(f.velkor, velkorMs = t.ms);
                recordSplit(f.velkorToRequest, f.velkorRequestToFocus, t);
                f.velkorRootMessages.add(t.rootMessages);
                if (t.velkorCpuMs)
                    f.velkorCpuPerSwitch.add(*t.velkorCpuMs);
                if (t.velkorMainThreadCpuMs)
                    f.velkorMainThreadCpuPerSwitch.add(*t.velkorMainThreadCpuMs);
                f.velkorSettingsWrites.add(t.settingsWritten ? 1 : 0);
                break;
            case Method::Floor:
                record(f.floor, floorMs = t.ms);
                recordSplit(f.floorToRequest, f.floorRequestToFocus, t);
                break;
            case Method::KeyFloor:
                record(f.keyFloor, keyFloorMs = t.ms);
                recordSplit(f.keyFloorToRequest, f.keyFloorRequestToFocus, t);
                break;
            case Method::Wmctrl:
                record(f.wmctrl, t.ms);
                break;
            case Method::Xdotool:
                record(f.xdotool, t.ms);
                break;
            }
        }
        if (velkorMs >= 0 && floorMs >= 0)
            f.pairedVelkorMinusFloor.add(velkorMs - floorMs);
        if (velkorMs >= 0 && keyFloorMs >= 0)
            f.pairedVelkorMinusKeyFloor.add(velkorMs - keyFloorMs);
    }
    return f;
}

void reportKeyToFocus(const QString& prefix, const KeyToFocus& f, bool withPeers)
{
    const QString p = prefix + QLatin1Char('_');
    f.velkor.report(p + QLatin1String("velkor"));
    f.floor.report(p + QLatin1String("floor"));
    f.keyFloor.report(p + QLatin1String("key_floor"));
    if (withPeers) {
        f.wmctrl.report(p + QLatin1String("wmctrl"));
        f.xdotool.report(p + QLatin1String("xdotool"));
    }
    // Where the difference lies: before the request leaves (the switcher)
    // or after (the window manager's answer to the same request).
    f.velkorToRequest.report(p + QLatin1String("velkor_key_to_request"));
    f.velkorRequestToFocus.report(p + QLatin1String("velkor_request_to_focus"));
    f.floorToRequest.report(p + QLatin1String("floor_send_to_request"));
    f.floorRequestToFocus.report(p + QLatin1String("floor_request_to_focus"));
    f.keyFloorToRequest.report(p + QLatin1String("key_floor_key_to_request"));
    f.keyFloorRequestToFocus.report(p + QLatin1String("key_floor_request_to_focus"));
    report(p + QLatin1String("velkor_root_messages_per_switch_median"),
           f.velkorRootMessages.median());
    f.velkorCpuPerSwitch.report(p + QLatin1String("velkor_cpu_per_switch"));
    f.velkorMainThreadCpuPerSwitch.report(p + QLatin1String("velkor_main_thread_cpu_per_switch"));
    // The share of switches after which the settings file had been written.
    report(p + QLatin1String("velkor_settings_writes_per_switch"),
           f.velkorSettingsWrites.count() ? f.velkorSettingsWrites.mean() : -1);
    report(p + QLatin1String("velkor_minus_floor_median_ms"), f.velkor.median() - f.floor.median());
    report(p + QLatin1String("velkor_minus_floor_p99_ms"),
           f.velkor.quantile(0.99) - f.floor.quantile(0.99));
    report(p + QLatin1String("velkor_minus_floor_paired_median_ms"),
           f.pairedVelkorMinusFloor.median());
    reportRatio(p + QLatin1String("ratio_velkor_over_floor_median"), f.velkor.median(),
                f.floor.median());
    if (f.keyFloor.count()) {
        // What Velkor adds over a program that does nothing but answer the
        // key: its own work, apart from the hops every key-driven switcher
        // pays.
        report(p + QLatin1String("velkor_minus_key_floor_median_ms"),
               f.velkor.median() - f.keyFloor.median());
        report(p + QLatin1String("velkor_minus_key_floor_p99_ms"),
               f.velkor.quantile(0.99) - f.keyFloor.quantile(0.99));
        report(p + QLatin1String("velkor_minus_key_floor_paired_median_ms"),
               f.pairedVelkorMinusKeyFloor.median());
        report(p + QLatin1String("key_floor_minus_floor_median_ms"),
               f.keyFloor.median() - f.floor.median());
    }
    if (withPeers) {
        reportRatio(p + QLatin1String("ratio_wmctrl_over_velkor_median"), f.wmctrl.median(),
                    f.velkor.median());
        reportRatio(p + QLatin1String("ratio_xdotool_over_velkor_median"), f.xdotool.median(),
                    f.velkor.median());
        reportRatio(p + QLatin1String("ratio_wmctrl_over_floor_median"), f.wmctrl.median(),
                    f.floor.median());
    }
}

} // namespace velkor::xbench
