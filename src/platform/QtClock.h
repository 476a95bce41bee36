// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"

#include <QObject>
#include <map>
#include <memory>

class QTimer;

namespace velkor {

// The Clock over Qt: now() is the monotonic clock (system uptime on Linux
// and macOS), delays are QTimers on the thread that owns the clock.
class QtClock final : public QObject, public Clock
{
    Q_OBJECT
public:
    explicit QtClock(QObject* parent = nullptr);
    ~QtClock() override;

    double now() const override;
    TaskId callAfter(double seconds, std::function<void()> task) override;
    TaskId callEvery(double seconds, std::function<void()> task) override;
    void cancel(TaskId id) override;

    int pendingCount() const { return int(m_timers.size()); }

private:
    TaskId schedule(double seconds, bool repeating, std::function<void()> task);

    TaskId m_nextId = 1;
    std::map<TaskId, QTimer*> m_timers;
};

} // namespace velkor
