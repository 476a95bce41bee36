// SPDX-License-Identifier: MIT
#include "KeyToFocus.h"

#include "BenchClient.h"
#include "XDesktop.h"

#include <QProcess>
#include <array>
#include <random>
#include <thread>

namespace velkor::xbench {

using e2e::XDesktop;

namespace {

enum class Method
{
    Velkor,
    Floor,
    Wmctrl,
    Xdotool
};

// Two presses of the activation key closer than 0.35 s are a double tap;
// every session of this benchmark starts further apart than that.
constexpr auto SessionsApart = std::chrono::milliseconds(380);
// The activation key goes down this long before the timed letter, so the
// session's start (a registry refresh) is not part of the figure.
constexpr int KeyDownBeforeLetterMs = 20;
// Every client idles this long before a timed trial, so that none is still
// handling the previous one's changes.
constexpr int QuietBeforeTrialMs = 10;

// One way of asking for a switch, timed from the ask to the change seen.
class Trials
{
public:
    Trials(XDesktop& desktop, BenchClient& client) : m_desktop(desktop), m_client(client)
    {
        m_peer.setProcessEnvironment(desktop.environment());
    }

    // Milliseconds, or negative when the switch did not come in time.
    double run(Method method, const App& from, const App& to)
    {
        startFrom(from);
        XDesktop::settle(QuietBeforeTrialMs);
        xcb_timestamp_t time = XCB_CURRENT_TIME;
        std::optional<quint32> otherDesktop;
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
        m_client.drain();
        const auto start = Clock::now();
        switch (method) {
        case Method::Velkor:
            m_client.key(to.letterKey, true);
            break;
        case Method::Floor:
            m_client.requestActivation(to.window, time, otherDesktop);
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
        const double ms = m_client.waitForActive(to.window, start);
        if (method == Method::Velkor) {
            m_client.key(to.letterKey, false);
            m_client.key(e2e::key::SuperR, false);
            m_client.sync();
        } else if (method == Method::Wmctrl || method == Method::Xdotool) {
            // The time a peer takes to exit is not part of its figure.
            m_peer.waitForFinished(5000);
        }
        return ms;
    }

private:
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
    QProcess m_peer;
    Clock::time_point m_lastSession{};
};

void record(Samples& samples, double ms)
{
    if (ms < 0)
        samples.fail();
    else
        samples.add(ms);
}

void reportRatio(const QString& name, double over, double under)
{
    if (over > 0 && under > 0)
        report(name, over / under);
}

} // namespace

KeyToFocus measureKeyToFocus(XDesktop& desktop, BenchClient& client, const QList<App>& apps,
                             int rounds, quint32 seed, bool withPeers)
{
    KeyToFocus f;
    if (apps.size() < 2)
        return f;
    Trials trials(desktop, client);
    std::mt19937 random(seed);
    std::vector<Method> methods{Method::Velkor, Method::Floor};
    if (withPeers)
        methods.insert(methods.end(), {Method::Wmctrl, Method::Xdotool});
    for (int round = 0; round < rounds; ++round) {
        const qsizetype target = qsizetype(random() % quint32(apps.size()));
        const qsizetype from =
            (target + 1 + qsizetype(random() % quint32(apps.size() - 1))) % apps.size();
        double velkorMs = -1;
        double floorMs = -1;
        for (size_t i = 0; i < methods.size(); ++i) {
            const Method method = methods[(size_t(round) + i) % methods.size()];
            const double ms = trials.run(method, apps[from], apps[target]);
            switch (method) {
            case Method::Velkor:
                record(f.velkor, velkorMs = ms);
                break;
            case Method::Floor:
                record(f.floor, floorMs = ms);
                break;
            case Method::Wmctrl:
                record(f.wmctrl, ms);
                break;
            case Method::Xdotool:
                record(f.xdotool, ms);
                break;
            }
        }
        if (velkorMs >= 0 && floorMs >= 0)
            f.pairedVelkorMinusFloor.add(velkorMs - floorMs);
    }
    return f;
}

void reportKeyToFocus(const QString& prefix, const KeyToFocus& f, bool withPeers)
{
    const QString p = prefix + QLatin1Char('_');
    f.velkor.report(p + QLatin1String("velkor"));
    f.floor.report(p + QLatin1String("floor"));
    if (withPeers) {
        f.wmctrl.report(p + QLatin1String("wmctrl"));
        f.xdotool.report(p + QLatin1String("xdotool"));
    }
    report(p + QLatin1String("velkor_minus_floor_median_ms"), f.velkor.median() - f.floor.median());
    report(p + QLatin1String("velkor_minus_floor_p99_ms"),
           f.velkor.quantile(0.99) - f.floor.quantile(0.99));
    report(p + QLatin1String("velkor_minus_floor_paired_median_ms"),
           f.pairedVelkorMinusFloor.median());
    reportRatio(p + QLatin1String("ratio_velkor_over_floor_median"), f.velkor.median(),
                f.floor.median());
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
