// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

// The figures velkor-x11-bench can take, one entry point each; main picks
// them from the command line. Each prints its own name=value lines and
// returns the process status (0 once it has measured, whatever the
// figures say: these are benchmarks, not tests).
namespace velkor::xbench {

struct Options
{
    int rounds = 200;        // key to focus: rounds of every method
    int trials = 0;          // overlay and start-up: 0 picks each one's default
    int soakGestures = 1000; // --soak N
    quint32 seed = 12;       // every random choice, so a run can be replayed
};

int runKeyToFocus(const Options& options); // 12 windows, floor and peers
int runIdle(const Options& options);       // resident memory and wakeups at rest
int runSoak(const Options& options);       // memory and CPU over mixed gestures
int runOverlay(const Options& options);    // overlay request to first frame
int runStartup(const Options& options);    // exec to the activation key grabbed
int runScale(const Options& options);      // 500 windows, 5,000 entries

} // namespace velkor::xbench
