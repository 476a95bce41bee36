// SPDX-License-Identifier: MIT
#pragma once

#include "Report.h"
#include "Scene.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <random>

namespace velkor::e2e {
class XDesktop;
}

namespace velkor::xbench {

class BenchClient;
class OverlayWatch;

// The gestures of the soak, each typed through XTEST the way a hand would
// and each waited for until its effect shows on the server, so that no
// gesture is counted that Velkor did not carry out.
enum class Gesture
{
    Letter,         // a letter under the key: its one app comes to the front
    Cycle,          // the same letter two to four times: the S apps take turns
    Search,         // a few letters no app starts with: the match comes at release
    WindowSwitcher, // double tap, Tab, release: the switcher shows, commits, goes
    Hold,           // the key held past the overlay delay: the overlay shows and goes
    Desktop,        // a digit under the key: another desktop
    OpenWindow,     // an xterm of a new app starts
    CloseWindow,    // one of those is killed
    Count
};
const char* nameOf(Gesture gesture);

// The apps the soak starts with: five with a letter each, two sharing S
// for the cycles, and one client with three windows.
QStringList soakAppNames();
QString soakMultiWindowName();

class SoakGestures final
{
public:
    SoakGestures(e2e::XDesktop& desktop, BenchClient& client, OverlayWatch& overlay,
                 const QList<App>& apps, xcb_window_t multiWindow, quint32 seed);

    // Picks the next gesture from the seeded mix.
    Gesture pick();
    // Performs it; false when its effect did not show in time.
    bool perform(Gesture gesture);

private:
    // The activation key goes down at least 0.4 s after its last press:
    // closer, two presses are a double tap.
    void pressActivation();
    void releaseActivation();
    void tap(int keycode);

    bool letter();
    bool cycle();
    bool search();
    bool windowSwitcher();
    bool hold();
    bool desktopDigit();
    bool openWindow();
    bool closeWindow();

    QString activeClass();
    bool waitForClass(const QString& cls);

    e2e::XDesktop& m_desktop;
    BenchClient& m_client;
    OverlayWatch& m_overlay;
    std::mt19937 m_random;
    QStringList m_letterApps;             // one app under their letter
    QMap<QString, xcb_window_t> m_opened; // churn apps running now, in name order
    quint32 m_desktops = 0;
    Clock::time_point m_lastPress{};
};

} // namespace velkor::xbench
