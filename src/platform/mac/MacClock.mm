// SPDX-License-Identifier: MIT
#include "platform/mac/MacClock.h"

#import <Foundation/Foundation.h>
#include <QTimer>
#include <chrono>

namespace velkor {

MacClock::MacClock() = default;
MacClock::~MacClock() = default;

double MacClock::now() const
{
    return NSProcessInfo.processInfo.systemUptime;
}

Clock::TaskId MacClock::callAfter(double seconds, std::function<void()> task)
{
    return schedule(seconds, false, std::move(task));
}

Clock::TaskId MacClock::callEvery(double seconds, std::function<void()> task)
{
    return schedule(seconds, true, std::move(task));
}

void MacClock::cancel(TaskId id)
{
    const auto found = m_timers.find(id);
    if (found == m_timers.end())
        return;
    // Deleted later: cancel may run inside the very timer's timeout.
    found->second->stop();
    found->second->deleteLater();
    m_timers.erase(found);
}

Clock::TaskId MacClock::schedule(double seconds, bool repeating, std::function<void()> task)
{
    const TaskId id = m_nextId++;
    auto* timer = new QTimer(&m_timerOwner);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeating);
    timer->setInterval(std::chrono::milliseconds(qMax<qint64>(0, qRound64(seconds * 1000.0))));
    QObject::connect(timer, &QTimer::timeout, &m_timerOwner,
                     [this, id, repeating, task = std::move(task)] {
                         if (!repeating)
                             cancel(id);
                         task();
                     });
    m_timers.emplace(id, timer);
    timer->start();
    return id;
}

} // namespace velkor
