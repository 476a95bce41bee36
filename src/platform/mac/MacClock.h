// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"

#include <QObject>
#include <unordered_map>

class QTimer;

namespace velkor {

// System uptime as the time line (the same one the key events carry), Qt
// timers on the main thread for the deferred work.
class MacClock final : public Clock
{
public:
    MacClock();
    ~MacClock() override;

    double now() const override;
    TaskId callAfter(double seconds, std::function<void()> task) override;
    TaskId callEvery(double seconds, std::function<void()> task) override;
    void cancel(TaskId id) override;

private:
    TaskId schedule(double seconds, bool repeating, std::function<void()> task);

    QObject m_timerOwner;
    std::unordered_map<TaskId, QTimer*> m_timers;
    TaskId m_nextId = 1;
};

} // namespace velkor
