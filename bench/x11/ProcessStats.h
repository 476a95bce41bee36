// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <optional>

// What /proc says about another process: its memory, its CPU time, and its
// threads. Read from outside, so that measuring costs the process nothing.
namespace velkor::xbench {

struct Memory
{
    double residentMb = 0;  // VmRSS
    double anonymousMb = 0; // RssAnon: the heap and stacks, what a leak grows
    double fileMb = 0;      // RssFile: mapped libraries, fonts, caches
    // From smaps_rollup: the resident pages no other process maps (what
    // ending the process gives back), and each page divided by how many
    // processes map it. -1 when the kernel does not say.
    double privateMb = -1;
    double proportionalMb = -1; // Pss
};
std::optional<Memory> memoryOf(qint64 pid);

// User plus system time of the whole process, dead threads included, in
// milliseconds (the kernel counts it in clock ticks, usually 10 ms each).
double cpuMs(qint64 pid);

// Context switches of every live thread: each is one wakeup.
qint64 wakeups(qint64 pid);

struct ThreadSample
{
    qint64 tid = 0;
    QString name;     // at most 15 characters, as the kernel keeps it
    double cpuMs = 0; // time on a CPU, from schedstat (nanosecond counts)
};
QList<ThreadSample> threadsOf(qint64 pid);
// The main thread's time on a CPU in milliseconds (its tid is the pid).
double mainThreadCpuMs(qint64 pid);
// Time on a CPU of every live thread together, in milliseconds, to the
// nanosecond counts of schedstat: for short spans, where cpuMs's ticks
// are too coarse.
double liveThreadsCpuMs(qint64 pid);

} // namespace velkor::xbench
