// SPDX-License-Identifier: MIT
#pragma once

#include "Report.h"
#include "Scene.h"

namespace velkor::e2e {
class XDesktop;
class VelkorInstance;
} // namespace velkor::e2e

namespace velkor::xbench {

class BenchClient;

// Key to focus: from the moment a switch is asked for to the moment another
// X client learns of the window manager's _NET_ACTIVE_WINDOW change, for
// five ways of asking, interleaved round by round on the same windows:
//   velkor  - a letter pressed through XTEST while the activation key is
//             held (the key goes down 20 ms before, as a hand does);
//   floor   - the bench's own client sends the very request Velkor sends
//             (see BenchClient::requestActivation): the window manager's
//             cost, which no switcher can go below;
//   key floor - velkor-key-floor, a process that does nothing but send that
//             request when an otherwise unused key it grabbed goes down
//             (pressed through XTEST): what any switcher driven by a key
//             pays on top of the floor (the key's delivery, a process
//             waking up); only when velkor-key-floor is built;
//   wmctrl  - `wmctrl -a <title>`, started then;
//   xdotool - `xdotool search --class <class> windowactivate`, started then.
struct KeyToFocus
{
    Samples velkor, floor, keyFloor, wmctrl, xdotool;
    Samples pairedVelkorMinusFloor; // per round, same target for both
    Samples pairedVelkorMinusKeyFloor;
    Samples keyFloorToRequest, keyFloorRequestToFocus;
    // Split at the _NET_ACTIVE_WINDOW request as this client sees it pass.
    Samples velkorToRequest, velkorRequestToFocus, floorToRequest, floorRequestToFocus;
    Samples velkorRootMessages; // client messages to the root per switch (a count)
    // Velkor's CPU time (every thread) from the letter's press to 30 ms
    // after the key's release: what one letter switch costs it.
    Samples velkorCpuPerSwitch, velkorMainThreadCpuPerSwitch;
    Samples velkorSettingsWrites; // 1 when the settings file was written, else 0
};

// rounds rounds; each picks, from seed, a target app and another one to
// start from, and runs every method once (in an order that rotates) from
// that start to that target. Peers only when withPeers.
KeyToFocus measureKeyToFocus(e2e::XDesktop& desktop, BenchClient& client,
                             const e2e::VelkorInstance& velkor, const QList<App>& apps, int rounds,
                             quint32 seed, bool withPeers);

// <prefix>_velkor_median_ms … and the differences and ratios the figures
// are read by: velkor_minus_floor (median and p99), velkor over floor, and
// the peers over velkor.
void reportKeyToFocus(const QString& prefix, const KeyToFocus& figures, bool withPeers);

} // namespace velkor::xbench
