// SPDX-License-Identifier: MIT
#pragma once

#include "Report.h"
#include "Scene.h"

namespace velkor::e2e {
class XDesktop;
}

namespace velkor::xbench {

class BenchClient;

// Key to focus: from the moment a switch is asked for to the moment another
// X client learns of the window manager's _NET_ACTIVE_WINDOW change, for
// four ways of asking, interleaved round by round on the same windows:
//   velkor  - a letter pressed through XTEST while the activation key is
//             held (the key goes down 20 ms before, as a hand does);
//   floor   - the bench's own client sends the very request Velkor sends
//             (see BenchClient::requestActivation): the window manager's
//             cost, which no switcher can go below;
//   wmctrl  - `wmctrl -a <title>`, started then;
//   xdotool - `xdotool search --class <class> windowactivate`, started then.
struct KeyToFocus
{
    Samples velkor, floor, wmctrl, xdotool;
    Samples pairedVelkorMinusFloor; // per round, same target for both
};

// rounds rounds; each picks, from seed, a target app and another one to
// start from, and runs every method once (in an order that rotates) from
// that start to that target. Peers only when withPeers.
KeyToFocus measureKeyToFocus(e2e::XDesktop& desktop, BenchClient& client, const QList<App>& apps,
                             int rounds, quint32 seed, bool withPeers);

// <prefix>_velkor_median_ms … and the differences and ratios the figures
// are read by: velkor_minus_floor (median and p99), velkor over floor, and
// the peers over velkor.
void reportKeyToFocus(const QString& prefix, const KeyToFocus& figures, bool withPeers);

} // namespace velkor::xbench
