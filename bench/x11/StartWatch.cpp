// SPDX-License-Identifier: MIT
#include "StartWatch.h"

#include "BenchClient.h"
#include "ProcessStats.h"
#include "Report.h"
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdlib>
#include <memory>
#include <xcb/xtest.h>

namespace velkor::xbench {

namespace {

// The kernel keeps 15 characters of a thread's name: the installed-app
// scan thread's name starts so.
const QString ScanThreadPrefix = QStringLiteral("installed-app");
// Poll period: fine enough for a figure read in tens of milliseconds,
// coarse enough not to take a core from the program being measured.
constexpr unsigned long PollMs = 1;

} // namespace

GrabProbe::GrabProbe(BenchClient& client) : m_client(client)
{
    xcb_connection_t* c = m_client.connection();
    m_window = xcb_generate_id(c);
    // Override-redirect: the window manager leaves it alone, focus and all.
    const uint32_t values[] = {1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, m_window, m_client.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_map_window(c, m_window);
    takeFocus();
}

GrabProbe::~GrabProbe()
{
    xcb_destroy_window(m_client.connection(), m_window);
    xcb_flush(m_client.connection());
}

void GrabProbe::takeFocus()
{
    xcb_set_input_focus(m_client.connection(), XCB_INPUT_FOCUS_POINTER_ROOT, m_window,
                        XCB_CURRENT_TIME);
    m_client.sync();
}

std::optional<bool> GrabProbe::activationKeyGrabbed()
{
    xcb_connection_t* c = m_client.connection();
    m_client.drain();
    for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
        xcb_test_fake_input(c, type, e2e::key::SuperR, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    std::unique_ptr<xcb_get_input_focus_reply_t, decltype(&std::free)> focus(
        xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr), &std::free);
    bool arrived = false;
    while (xcb_generic_event_t* e = xcb_poll_for_queued_event(c)) {
        arrived = arrived || ((e->response_type & 0x7f) == XCB_KEY_PRESS &&
                              reinterpret_cast<xcb_key_press_event_t*>(e)->event == m_window);
        std::free(e);
    }
    if (!focus || focus->focus != m_window) {
        takeFocus();
        return std::nullopt;
    }
    return !arrived;
}

StartFigures followStart(e2e::VelkorInstance& velkor, GrabProbe& probe, double timeoutMs)
{
    StartFigures f;
    const auto start = Clock::now();
    if (!velkor.launch())
        return f;
    const qint64 pid = velkor.pid();
    std::optional<Clock::time_point> scanSeen, scanGone, grabbed;
    bool logSeen = false;
    while (msSince(start) < timeoutMs && velkor.isRunning()) {
        // Velkor's output reaches us through the event loop.
        QCoreApplication::processEvents();
        if (!logSeen && velkor.logSaysKeyGrabbed()) {
            logSeen = true;
            f.toLogLine = msSince(start);
        }
        if (!scanGone) {
            bool running = false;
            for (const ThreadSample& t : threadsOf(pid)) {
                if (t.name.startsWith(ScanThreadPrefix)) {
                    running = true;
                    f.scanCpu = t.cpuMs;
                }
            }
            if (running && !scanSeen)
                scanSeen = Clock::now();
            else if (!running && scanSeen)
                scanGone = Clock::now();
        }
        if (!grabbed && probe.activationKeyGrabbed().value_or(false)) {
            grabbed = Clock::now();
            f.toGrab = msBetween(start, *grabbed);
            f.mainThreadCpuAtGrab = mainThreadCpuMs(pid);
        }
        // Done once the key is usable and the scan is over (or was never
        // seen: a scan shorter than one poll, or none at all).
        if (grabbed && logSeen && (scanGone || (!scanSeen && msSince(*grabbed) > 3000)))
            break;
        QThread::msleep(PollMs);
    }
    if (!scanSeen)
        f.scanCpu.reset();
    if (scanSeen && scanGone) {
        f.scanWall = msBetween(*scanSeen, *scanGone);
        if (grabbed)
            f.scanEndAfterGrab = msBetween(*grabbed, *scanGone);
    }
    return f;
}

} // namespace velkor::xbench
