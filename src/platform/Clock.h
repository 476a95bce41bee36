// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>
#include <functional>

namespace velkor {

// Monotonic time and deferred work on the main thread. Every delay in the
// switching logic (the overlay's delayed show, the pointer move after an
// activation, the permission poll, the key watchdog) goes through this, so
// tests can run them without waiting.
class Clock
{
public:
    using TaskId = quint64;

    virtual ~Clock() = default;

    // Seconds since an arbitrary fixed point (system uptime), never going back.
    virtual double now() const = 0;

    // Runs task once on the main thread after the given number of seconds.
    virtual TaskId callAfter(double seconds, std::function<void()> task) = 0;

    // Runs task on the main thread every interval seconds until cancelled.
    virtual TaskId callEvery(double seconds, std::function<void()> task) = 0;

    // Forgets a pending task; unknown or finished ids are ignored.
    virtual void cancel(TaskId id) = 0;
};

} // namespace velkor
