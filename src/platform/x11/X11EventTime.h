// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

namespace velkor {

// Puts the X server's event times (milliseconds, wrapping every 49.7 days)
// on the Clock's time line, so key timing follows the moments the keys
// moved, not the moments we got round to their events: two taps queued
// behind a stall stay as far apart as they were typed.
class X11EventTime final
{
public:
    // serverMs is the event's time, now the Clock's time as it is handled.
    double toClock(quint32 serverMs, double now);

private:
    bool m_started = false;
    quint32 m_lastServerMs = 0;
    qint64 m_unwrappedMs = 0;
    // The Clock's time minus the server's, in seconds: the smallest gap seen
    // is the truest, since handling an event late only widens it.
    double m_offset = 0;
};

} // namespace velkor
