// SPDX-License-Identifier: MIT
#pragma once

#include "Report.h"

#include <QSet>
#include <optional>
#include <xcb/xcb.h>

namespace velkor::xbench {

class BenchClient;

// Velkor's overlay as another X client sees it: an override-redirect
// top-level named "Velkor overlay" that maps, gets painted and unmaps.
// Paints are seen through the DAMAGE extension: a damage object on every
// override-redirect top-level from its creation, and, after each map, the
// first damage after which the window's pixels are no longer blank is its
// first frame. Opacity changes (the fade-in, a property on the window) are
// counted from that map on.
class OverlayWatch final
{
public:
    // Installs itself as the client's observer; the client must outlive it.
    explicit OverlayWatch(BenchClient& client);
    ~OverlayWatch();

    // False when the server has no DAMAGE: maps are still seen, paints not.
    bool seesPaint() const { return m_damageEvent != 0; }

    bool isMapped() const { return m_mapped; }
    // Since the latest map: when it came, and when the first frame came.
    std::optional<Clock::time_point> mappedAt() const { return m_mappedAt; }
    std::optional<Clock::time_point> paintedAt() const { return m_paintedAt; }
    int opacityChanges() const { return m_opacityChanges; }
    // Whether the latest map created the window (its first show).
    bool wasCreatedForThisMap() const { return m_createdForThisMap; }

    // Wait, event by event, until the overlay maps / is painted / unmaps.
    bool waitForMap(double timeoutMs);
    bool waitForPaint(double timeoutMs);
    bool waitForUnmap(double timeoutMs);

private:
    void observe(const xcb_generic_event_t* e, Clock::time_point at);
    void onCreate(xcb_window_t window, bool overrideRedirect);
    void onMap(xcb_window_t window, bool overrideRedirect, Clock::time_point at);
    bool looksPainted();

    BenchClient& m_client;
    xcb_atom_t m_opacity = 0;
    uint8_t m_damageEvent = 0; // first event of DAMAGE, 0 without it
    QSet<xcb_window_t> m_damaged;
    QSet<xcb_window_t> m_created; // created since we watch, not yet mapped
    xcb_window_t m_overlay = 0;
    bool m_mapped = false;
    bool m_createdForThisMap = false;
    std::optional<Clock::time_point> m_mappedAt;
    std::optional<Clock::time_point> m_paintedAt;
    int m_opacityChanges = 0;
};

} // namespace velkor::xbench
