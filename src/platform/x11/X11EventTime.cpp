// SPDX-License-Identifier: MIT
#include "platform/x11/X11EventTime.h"

#include <algorithm>

namespace velkor {

double X11EventTime::toClock(quint32 serverMs, double now)
{
    if (!m_started) {
        m_started = true;
        m_unwrappedMs = serverMs;
        m_offset = now - double(serverMs) / 1000.0;
    } else {
        // Read as a signed step, the difference crosses the wrap, and an
        // event a little older than the last one steps back.
        m_unwrappedMs += qint32(serverMs - m_lastServerMs);
    }
    m_lastServerMs = serverMs;
    const double server = double(m_unwrappedMs) / 1000.0;
    m_offset = std::min(m_offset, now - server);
    return server + m_offset;
}

} // namespace velkor
