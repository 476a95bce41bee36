// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <xcb/xcb.h>

namespace velkor::e2e {
class VelkorInstance;
}

namespace velkor::xbench {

class BenchClient;

// Whether the activation key (Right Super) is grabbed, found out without
// grabbing anything ourselves: a grab of our own would make Velkor's fail
// with BadAccess. A window of the bench holds the keyboard focus; the key
// is pressed and released through XTEST; a press that arrives at that
// window was grabbed by nobody, a press that does not was taken by a
// passive grab on the root (Velkor's). The server handles queued input
// before the next request, so one round trip after the key settles it.
class GrabProbe final
{
public:
    explicit GrabProbe(BenchClient& client);
    ~GrabProbe();

    // Nothing when the focus had moved away from the probe (it is taken
    // back for the next try): the answer would mean nothing.
    std::optional<bool> activationKeyGrabbed();

private:
    void takeFocus();

    BenchClient& m_client;
    xcb_window_t m_window = 0;
};

// One start of Velkor, followed from exec until its key is grabbed and its
// installed-app scan (a thread named after it) has ended. Milliseconds;
// absent when not seen.
struct StartFigures
{
    std::optional<double> toGrab;              // exec to the grab seen by the probe
    std::optional<double> toLogLine;           // exec to the "activation key … grabbed" line read
    std::optional<double> mainThreadCpuAtGrab; // main thread's CPU time by then
    std::optional<double> scanWall;            // scan thread first seen to gone
    std::optional<double> scanCpu;             // its CPU time, last read before it ended
    std::optional<double> scanEndAfterGrab;    // gone this long after the grab (negative: before)
};

// Launches velkor (not started yet) and follows it for at most timeoutMs.
StartFigures followStart(e2e::VelkorInstance& velkor, GrabProbe& probe, double timeoutMs = 15000);

} // namespace velkor::xbench
