// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowSystem.h"

#include "platform/x11/X11WindowCache.h"
#include "platform/x11/X11WindowRequests.h"

#include <algorithm>
#include <cmath>
#include <xcb/xcb_icccm.h>

namespace velkor::x11 {

namespace {

// Wider than any window decoration; a frame extent beyond it is a client's
// mistake.
constexpr quint32 MaxFrameExtent = 4096;

} // namespace

X11WindowSystem::X11WindowSystem(std::shared_ptr<X11WindowCache> cache)
    : m_owner(cache), m_cache(*cache)
{}

xcb_window_t X11WindowSystem::idOf(const WindowHandle& window)
{
    const auto* element = dynamic_cast<const X11WindowElement*>(window.get());
    return element ? element->window : NoWindow;
}

std::optional<QList<RawWindow>> X11WindowSystem::windowsOf(Pid pid)
{
    QList<RawWindow> out;
    for (const X11Client* c : m_cache.frontToBack()) {
        if (c->pid != pid || c->kind == X11Client::Kind::Other)
            continue;
        RawWindow raw;
        raw.element = std::make_shared<X11WindowElement>(c->id);
        raw.title = c->title();
        // Only _NET_WM_STATE_HIDDEN says minimised: openbox marks every
        // window of a desktop not shown Iconic in WM_STATE.
        raw.minimized = c->hidden;
        out.append(raw);
    }
    return out;
}

WindowHandle X11WindowSystem::focusedWindowOf(Pid pid)
{
    const X11Client* active = m_cache.client(m_cache.activeWindow());
    if (active && active->pid == pid)
        return std::make_shared<X11WindowElement>(active->id);
    // An app in the background has no focus of its own on X11; its last used
    // window is the topmost of its shown ones.
    for (const X11Client* c : m_cache.frontToBack())
        if (c->pid == pid && c->isTaskbarWindow() && !c->hidden)
            return std::make_shared<X11WindowElement>(c->id);
    return nullptr;
}

void X11WindowSystem::raise(const WindowHandle& window)
{
    const xcb_window_t id = idOf(window);
    if (!m_cache.client(id))
        return;
    // Activating a window raises it too, and a raise is nearly always
    // followed by the activation of the same window: the restack goes out
    // only if no activation took it by the time this event is handled, so
    // the window manager gets one request on the way to focus, not two.
    if (!m_cache.noteRaised(id)) {
        X11WindowRequests::raise(m_cache, id);
        return;
    }
    QMetaObject::invokeMethod(
        &m_cache,
        [&cache = m_cache, id] {
            if (cache.takePendingRaise(id))
                X11WindowRequests::raise(cache, id);
        },
        Qt::QueuedConnection);
}

void X11WindowSystem::setMinimized(const WindowHandle& window, bool minimized)
{
    const xcb_window_t id = idOf(window);
    if (!m_cache.client(id))
        return;
    X11Connection& x = m_cache.connection();
    if (minimized)
        x.sendRootMessage(id, Atom::WmChangeState, {XCB_ICCCM_WM_STATE_ICONIC, 0, 0, 0, 0});
    else
        xcb_map_window(x.get(), id); // the window manager de-iconifies on the map request
    x.flush();
}

void X11WindowSystem::close(const WindowHandle& window)
{
    X11WindowRequests::close(m_cache, idOf(window));
}

void X11WindowSystem::setFrontmost(Pid)
{
    // Nothing to do: on X11 the activation request that follows both raises
    // and focuses.
}

std::optional<QRectF> X11WindowSystem::frameOf(const WindowHandle& window)
{
    const xcb_window_t id = idOf(window);
    if (!id)
        return std::nullopt;
    X11Connection& x = m_cache.connection();
    xcb_connection_t* c = x.get();
    auto geometryCookie = xcb_get_geometry(c, id);
    auto originCookie = xcb_translate_coordinates(c, id, x.root(), 0, 0);
    auto extentsCookie =
        xcb_get_property(c, 0, id, x.atom(Atom::NetFrameExtents), XCB_ATOM_CARDINAL, 0, 4);
    xcb_generic_error_t* error = nullptr;
    auto geometry = reply(xcb_get_geometry_reply(c, geometryCookie, &error));
    std::free(error);
    error = nullptr;
    auto origin = reply(xcb_translate_coordinates_reply(c, originCookie, &error));
    std::free(error);
    error = nullptr;
    auto extentsReply = reply(xcb_get_property_reply(c, extentsCookie, &error));
    std::free(error);
    if (!geometry || !origin)
        return std::nullopt;
    // Left, right, top, bottom: as the window manager wrote them, unless some
    // client wrote nonsense or the window manager that wrote them is gone.
    QList<quint32> extents = values32(extentsReply.get());
    const bool sane = extents.size() == 4 && m_cache.hasWindowManager() &&
                      std::all_of(extents.cbegin(), extents.cend(),
                                  [](quint32 e) { return e <= MaxFrameExtent; });
    if (!sane)
        extents = {0, 0, 0, 0};
    return QRectF(origin->dst_x - qreal(extents[0]), origin->dst_y - qreal(extents[2]),
                  geometry->width + qreal(extents[0] + extents[1]),
                  geometry->height + qreal(extents[2] + extents[3]));
}

void X11WindowSystem::warpPointer(QPointF globalPoint)
{
    // X coordinates are 16-bit; a frame read from hostile properties must
    // not wrap the pointer to the other side.
    const auto coordinate = [](qreal v) {
        return int16_t(std::lround(std::clamp(v, -32768.0, 32767.0)));
    };
    X11Connection& x = m_cache.connection();
    xcb_warp_pointer(x.get(), NoWindow, x.root(), 0, 0, 0, 0, coordinate(globalPoint.x()),
                     coordinate(globalPoint.y()));
    x.flush();
}

} // namespace velkor::x11
