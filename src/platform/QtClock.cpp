// SPDX-License-Identifier: MIT
#include "platform/QtClock.h"

#include <QDeadlineTimer>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace velkor {

QtClock::QtClock(QObject* parent) : QObject(parent) {}

// The timers are children: those still pending, and those finished or
// cancelled whose deferred deletion has not run yet, go with the clock.
QtClock::~QtClock() = default;

double QtClock::now() const
{
    return double(QDeadlineTimer::current(Qt::PreciseTimer).deadlineNSecs()) / 1e9;
}

Clock::TaskId QtClock::callAfter(double seconds, std::function<void()> task)
{
    return schedule(seconds, false, std::move(task));
}

Clock::TaskId QtClock::callEvery(double seconds, std::function<void()> task)
{
    return schedule(seconds, true, std::move(task));
}

Clock::TaskId QtClock::schedule(double seconds, bool repeating, std::function<void()> task)
{
    const TaskId id = m_nextId++;
    auto* timer = new QTimer(this);
    // Short delays (the overlay's, the pointer move) must not drift by the
    // coarse timer's 5 %.
    timer->setTimerType(seconds < 2 ? Qt::PreciseTimer : Qt::CoarseTimer);
    timer->setSingleShot(!repeating);
    timer->setInterval(
        std::chrono::milliseconds(qint64(std::llround(std::max(0.0, seconds) * 1000))));
    connect(timer, &QTimer::timeout, this, [this, id, repeating, task = std::move(task)] {
        if (!repeating) {
            // Forget the task before it runs, so that it may schedule or
            // cancel anything, itself included.
            auto it = m_timers.find(id);
            if (it == m_timers.end())
                return;
            it->second->deleteLater();
            m_timers.erase(it);
            const auto run = task;
            run();
            return;
        }
        task();
    });
    m_timers.emplace(id, timer);
    timer->start();
    return id;
}

void QtClock::cancel(TaskId id)
{
    auto it = m_timers.find(id);
    if (it == m_timers.end())
        return;
    it->second->stop();
    // A task may cancel itself while its timer is emitting.
    it->second->deleteLater();
    m_timers.erase(it);
}

} // namespace velkor
