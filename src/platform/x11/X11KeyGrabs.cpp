// SPDX-License-Identifier: MIT
#include "platform/x11/X11KeyGrabs.h"

#include <QLoggingCategory>
#include <algorithm>
#include <cstdlib>
#include <utility>

namespace velkor {

namespace {

Q_LOGGING_CATEGORY(lcGrabs, "velkor.x11.grabs", QtInfoMsg)

} // namespace

X11KeyGrabs::X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root)
    : m_connection(connection), m_root(root)
{}

QList<uint16_t> X11KeyGrabs::lockVariants(uint16_t modifiers, uint16_t numLockMask)
{
    QList<uint16_t> variants;
    for (const uint16_t locks : {uint16_t(0), uint16_t(XCB_MOD_MASK_LOCK), numLockMask,
                                 uint16_t(XCB_MOD_MASK_LOCK | numLockMask)}) {
        const uint16_t variant = modifiers | locks;
        if (!variants.contains(variant))
            variants.append(variant);
    }
    return variants;
}

X11KeyGrabs::Change X11KeyGrabs::changeBetween(const QList<X11KeyGrab>& held,
                                               const QList<X11KeyGrab>& wanted)
{
    Change change;
    for (const X11KeyGrab& grab : held) {
        if (!wanted.contains(grab))
            change.lift.append(grab);
    }
    for (const X11KeyGrab& grab : wanted) {
        if (!held.contains(grab) && !change.place.contains(grab))
            change.place.append(grab);
    }
    return change;
}

void X11KeyGrabs::apply(const QList<X11KeyGrab>& wanted, uint16_t numLockMask, double now)
{
    if (numLockMask != m_numLockMask) {
        // Every grab is made in the Num Lock variants: all of them move.
        liftAll();
        m_refused.clear();
        m_numLockMask = numLockMask;
    }
    const Change change = changeBetween(m_held, wanted);
    const QList<X11KeyGrab> before = std::exchange(m_wanted, wanted);
    for (const X11KeyGrab& grab : change.lift) {
        remove(grab);
        m_held.removeOne(grab);
    }
    // Refusals of grabs no longer wanted are forgotten; those still wanted
    // keep their schedule, the new ones are tried now.
    for (auto it = m_refused.begin(); it != m_refused.end();) {
        const bool stillWanted =
            std::any_of(wanted.cbegin(), wanted.cend(),
                        [&](const X11KeyGrab& g) { return idOf(g) == it.key(); });
        it = stillWanted ? std::next(it) : m_refused.erase(it);
    }
    for (const X11KeyGrab& grab : change.place) {
        if (!m_refused.contains(idOf(grab)))
            tryPlace(grab, now);
    }
    // Names follow the layout; keep the newest for the logs.
    for (X11KeyGrab& held : m_held)
        held.name = wanted.at(wanted.indexOf(held)).name;
    if (!before.isEmpty() && (!change.lift.isEmpty() || !change.place.isEmpty()))
        qCDebug(lcGrabs) << "grabs moved:" << change.lift.size() << "lifted," << change.place.size()
                         << "placed";
}

void X11KeyGrabs::retryDue(double now)
{
    for (const X11KeyGrab& grab : std::as_const(m_wanted)) {
        if (m_held.contains(grab))
            continue;
        const auto refusal = m_refused.constFind(idOf(grab));
        if (refusal == m_refused.constEnd() || grab.essential || now >= refusal->retryAt)
            tryPlace(grab, now);
    }
}

void X11KeyGrabs::tryPlace(const X11KeyGrab& grab, double now)
{
    const auto refusal = m_refused.find(idOf(grab));
    if (place(grab)) {
        m_held.append(grab);
        if (refusal == m_refused.end())
            return;
        const bool reported = refusal->reported;
        m_refused.erase(refusal);
        if (grab.essential) {
            // Whoever held the key let go of it: its variants with Shift,
            // Control or Alt are likely free too, and wanted now.
            for (const X11KeyGrab& variant : std::as_const(m_wanted)) {
                if (variant.keycode == grab.keycode && m_refused.contains(idOf(variant)))
                    tryPlace(variant, now);
            }
        } else if (reported) {
            qCInfo(lcGrabs).noquote() << "grabbed" << grab.name << "after all";
        }
        return;
    }
    Refusal& r = refusal != m_refused.end() ? *refusal : m_refused[idOf(grab)];
    // Said once. The activation key has a line of its own in the program's
    // log, which covers its variants while it is refused itself.
    const bool essentialRefused =
        std::any_of(m_wanted.cbegin(), m_wanted.cend(), [&](const X11KeyGrab& g) {
            return g.essential && g.keycode == grab.keycode && !m_held.contains(g);
        });
    if (r.count == 0 && !grab.essential && !essentialRefused) {
        qCWarning(lcGrabs).noquote()
            << "cannot grab" << grab.name << "- another client holds it; trying again now and then";
        r.reported = true;
    }
    ++r.count;
    const double pause =
        std::min(LongestRetrySeconds, FirstRetrySeconds * double(1 << std::min(r.count - 1, 8)));
    r.retryAt = now + pause;
}

void X11KeyGrabs::liftAll()
{
    for (const X11KeyGrab& grab : std::as_const(m_held))
        remove(grab);
    m_held.clear();
}

QList<X11KeyGrab> X11KeyGrabs::liftKey(xcb_keycode_t keycode)
{
    QList<X11KeyGrab> lifted;
    for (const X11KeyGrab& grab : std::as_const(m_held)) {
        if (grab.keycode == keycode) {
            remove(grab);
            lifted.append(grab);
        }
    }
    for (const X11KeyGrab& grab : std::as_const(lifted))
        m_held.removeOne(grab);
    return lifted;
}

void X11KeyGrabs::restore(const QList<X11KeyGrab>& grabs, double now)
{
    // Another client may have taken a key in the moment it was free; then
    // it is retried like any refused grab.
    for (const X11KeyGrab& grab : grabs)
        tryPlace(grab, now);
}

bool X11KeyGrabs::place(const X11KeyGrab& grab)
{
    const QList<uint16_t> variants = lockVariants(grab.modifiers, m_numLockMask);
    QList<xcb_void_cookie_t> cookies;
    for (const uint16_t modifiers : variants) {
        // Asynchronous: the keyboard never freezes, whatever happens to us.
        cookies.append(xcb_grab_key_checked(m_connection, 0, m_root, modifiers, grab.keycode,
                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool refused = false;
    for (const xcb_void_cookie_t cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(m_connection, cookie)) {
            refused = true;
            free(error);
        }
    }
    if (refused)
        remove(grab);
    return !refused;
}

void X11KeyGrabs::remove(const X11KeyGrab& grab)
{
    // Ungrabbing a key we do not hold is harmless, and another client's
    // grab of the same key is never touched by it.
    for (const uint16_t modifiers : lockVariants(grab.modifiers, m_numLockMask))
        xcb_ungrab_key(m_connection, grab.keycode, m_root, modifiers);
    xcb_flush(m_connection);
}

} // namespace velkor
