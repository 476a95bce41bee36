// SPDX-License-Identifier: MIT
#include "SoakGestures.h"

#include "BenchClient.h"
#include "OverlayWatch.h"
#include "XDesktop.h"

#include <cstdlib>
#include <thread>

namespace velkor::xbench {

using e2e::XDesktop;
namespace key = e2e::key;

namespace {

// Further apart than a double tap's 0.35 s, with a margin for a press that
// Velkor handles late on a busy machine (it times presses when handled).
constexpr auto SessionsApart = std::chrono::milliseconds(450);
// Well inside the 0.35 s of a double tap.
constexpr int DoubleTapGapMs = 100;
// Between keys, as a quick hand; also lets the bench's own loop read
// Velkor's output so that its pipe never fills.
constexpr int BetweenKeysMs = 10;
constexpr double EffectTimeoutMs = 3000;

const QStringList CycleApps{QStringLiteral("Sierra"), QStringLiteral("Sigma")};

// Apps that come and go; their letters are no fixed app's, and none of the
// search queries below matches them.
const QStringList ChurnApps{QStringLiteral("Oscar"),  QStringLiteral("Papa"),
                            QStringLiteral("Quebec"), QStringLiteral("Tango"),
                            QStringLiteral("Victor"), QStringLiteral("Whiskey"),
                            QStringLiteral("Yankee")};

// Queries whose first letter starts no running app, so that they search
// from the first key, each matching one app as a subsequence.
const std::pair<const char*, const char*> Searches[] = {{"lpha", "Alpha"},
                                                        {"ravo", "Bravo"},
                                                        {"harlie", "Charlie"},
                                                        {"ierra", "Sierra"},
                                                        {"igma", "Sigma"}};

// How often each gesture comes, out of 100; the churn share is split
// between opening and closing by how many churn apps run.
constexpr int Weights[] = {28, 12, 14, 10, 10, 10, 16};

} // namespace

const char* nameOf(Gesture gesture)
{
    static const char* const names[] = {"letter", "cycle",   "search",      "switcher",
                                        "hold",   "desktop", "open_window", "close_window"};
    return names[int(gesture)];
}

QStringList soakAppNames()
{
    return {QStringLiteral("Alpha"), QStringLiteral("Bravo"), QStringLiteral("Charlie"),
            QStringLiteral("Delta"), QStringLiteral("Echo"),  QStringLiteral("Sierra"),
            QStringLiteral("Sigma")};
}

QString soakMultiWindowName()
{
    return QStringLiteral("Multi");
}

SoakGestures::SoakGestures(XDesktop& desktop, BenchClient& client, OverlayWatch& overlay,
                           const QList<App>& apps, xcb_window_t multiWindow, quint32 seed)
    : m_desktop(desktop), m_client(client), m_overlay(overlay), m_random(seed)
{
    for (const App& app : apps)
        if (!CycleApps.contains(app.name))
            m_letterApps.append(app.name);
    if (multiWindow)
        m_letterApps.append(soakMultiWindowName());
    // openbox offers several desktops; another window manager may offer none.
    xcb_connection_t* c = m_client.connection();
    const xcb_atom_t number = m_client.atom("_NET_NUMBER_OF_DESKTOPS");
    auto cookie = xcb_get_property(c, 0, m_client.root(), number, XCB_ATOM_CARDINAL, 0, 1);
    if (auto* r = xcb_get_property_reply(c, cookie, nullptr)) {
        if (xcb_get_property_value_length(r) == 4)
            m_desktops = *static_cast<const quint32*>(xcb_get_property_value(r));
        std::free(r);
    }
}

Gesture SoakGestures::pick()
{
    int roll = int(m_random() % 100);
    int kind = 0;
    while (roll >= Weights[kind]) {
        roll -= Weights[kind];
        ++kind;
    }
    Gesture g = Gesture(kind);
    if (g == Gesture::OpenWindow) { // the churn share
        if (m_opened.size() >= 4)
            g = Gesture::CloseWindow;
        else if (m_opened.size() >= 2 && m_random() % 2)
            g = Gesture::CloseWindow;
    }
    if (g == Gesture::Desktop && m_desktops < 2)
        g = Gesture::Hold;
    // The window switcher needs the fixed windows around: on desktop 1.
    if (g == Gesture::WindowSwitcher && m_client.currentDesktop().value_or(0) != 0)
        g = m_desktops >= 2 ? Gesture::Desktop : Gesture::Hold;
    return g;
}

bool SoakGestures::perform(Gesture gesture)
{
    switch (gesture) {
    case Gesture::Letter:
        return letter();
    case Gesture::Cycle:
        return cycle();
    case Gesture::Search:
        return search();
    case Gesture::WindowSwitcher:
        return windowSwitcher();
    case Gesture::Hold:
        return hold();
    case Gesture::Desktop:
        return desktopDigit();
    case Gesture::OpenWindow:
        return openWindow();
    case Gesture::CloseWindow:
        return closeWindow();
    case Gesture::Count:
        break;
    }
    return false;
}

void SoakGestures::pressActivation()
{
    std::this_thread::sleep_until(m_lastPress + SessionsApart);
    m_lastPress = Clock::now();
    m_client.key(key::SuperR, true);
    m_client.sync();
    XDesktop::settle(BetweenKeysMs);
}

void SoakGestures::releaseActivation()
{
    m_client.key(key::SuperR, false);
    m_client.sync();
    XDesktop::settle(BetweenKeysMs);
}

void SoakGestures::tap(int keycode)
{
    m_client.key(keycode, true);
    m_client.key(keycode, false);
    m_client.sync();
    XDesktop::settle(BetweenKeysMs);
}

QString SoakGestures::activeClass()
{
    return m_client.wmClass(m_client.activeWindow());
}

bool SoakGestures::waitForClass(const QString& cls)
{
    return m_client.waitForActiveWhere([&](xcb_window_t w) { return m_client.wmClass(w) == cls; },
                                       EffectTimeoutMs) != 0;
}

bool SoakGestures::letter()
{
    QStringList candidates = m_letterApps + m_opened.keys();
    candidates.removeAll(activeClass());
    if (candidates.isEmpty())
        return hold();
    const QString app = candidates.at(qsizetype(m_random() % quint32(candidates.size())));
    pressActivation();
    tap(key::of(app.at(0).toLower()));
    const bool ok = waitForClass(app);
    releaseActivation();
    return ok;
}

bool SoakGestures::cycle()
{
    const int presses = 2 + int(m_random() % 3);
    const auto isCycleApp = [&](xcb_window_t w) { return CycleApps.contains(m_client.wmClass(w)); };
    pressActivation();
    const xcb_window_t before = m_client.activeWindow();
    tap(key::of(QLatin1Char('s')));
    // The first press always brings another window (the next S app after
    // the one in front, or the first). Later ones need not: each choice is
    // recorded and the letter's learnt order, rebuilt when the activation
    // is reported, moves under the cycle, so a press may choose the app
    // already in front. They are typed, and the front is checked at the end.
    bool ok =
        m_client.waitForActiveWhere([&](xcb_window_t w) { return w != before && isCycleApp(w); },
                                    EffectTimeoutMs) != 0;
    for (int i = 1; i < presses; ++i)
        tap(key::of(QLatin1Char('s')));
    m_client.sync();
    ok = ok && m_client.waitForActiveWhere(isCycleApp, EffectTimeoutMs) != 0;
    releaseActivation();
    return ok;
}

bool SoakGestures::search()
{
    QList<std::pair<const char*, const char*>> choices;
    const QString front = activeClass();
    for (const auto& s : Searches)
        if (front != QLatin1String(s.second))
            choices.append(s);
    const auto& [query, app] = choices.at(qsizetype(m_random() % quint32(choices.size())));
    pressActivation();
    for (const char* c = query; *c; ++c)
        tap(key::of(QLatin1Char(*c)));
    releaseActivation(); // the selected row is committed at release
    return waitForClass(QLatin1String(app));
}

bool SoakGestures::windowSwitcher()
{
    std::this_thread::sleep_until(m_lastPress + SessionsApart);
    m_client.key(key::SuperR, true);
    m_client.key(key::SuperR, false);
    m_client.sync();
    XDesktop::settle(DoubleTapGapMs);
    m_lastPress = Clock::now();
    m_client.key(key::SuperR, true);
    m_client.sync();
    // The switcher shows at once. Which window its second row holds is
    // Velkor's business (rows follow the apps' order, not the stacking), so
    // the effect waited for is the switcher shown, committed and gone.
    const bool shown = m_overlay.waitForMap(EffectTimeoutMs);
    tap(key::Tab);
    releaseActivation();
    return m_overlay.waitForUnmap(EffectTimeoutMs) && shown;
}

bool SoakGestures::hold()
{
    pressActivation();
    const bool shown = m_overlay.waitForMap(2000);
    releaseActivation();
    return m_overlay.waitForUnmap(2000) && shown;
}

bool SoakGestures::desktopDigit()
{
    const quint32 current = m_client.currentDesktop().value_or(0);
    const quint32 span = std::min<quint32>(m_desktops, 3);
    // Back to the first desktop more often than not: the fixed apps live there.
    quint32 target = current != 0 && m_random() % 2 ? 0 : quint32(m_random() % span);
    if (target == current)
        target = (current + 1) % span;
    pressActivation();
    tap(key::of(QLatin1Char(char('1' + target))));
    const bool ok = m_client.waitForDesktop(target, EffectTimeoutMs);
    releaseActivation();
    return ok;
}

bool SoakGestures::openWindow()
{
    QStringList notRunning;
    for (const QString& name : ChurnApps)
        if (!m_opened.contains(name))
            notRunning.append(name);
    if (notRunning.isEmpty())
        return closeWindow();
    const QString name = notRunning.at(qsizetype(m_random() % quint32(notRunning.size())));
    const xcb_window_t window = m_desktop.launchTerminal(name);
    if (!window)
        return false;
    m_opened.insert(name, window);
    return true;
}

bool SoakGestures::closeWindow()
{
    if (m_opened.isEmpty())
        return openWindow();
    const QStringList names = m_opened.keys();
    const QString name = names.at(qsizetype(m_random() % quint32(names.size())));
    const xcb_window_t window = m_opened.take(name);
    m_desktop.kill(window);
    return m_desktop.waitFor([&] { return !m_desktop.exists(window); }, int(EffectTimeoutMs));
}

} // namespace velkor::xbench
