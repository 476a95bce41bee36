// SPDX-License-Identifier: MIT
#include "OverlayWatch.h"

#include "BenchClient.h"

#include <cstdlib>
#include <memory>
#include <xcb/damage.h>

namespace velkor::xbench {

namespace {

const QString OverlayName = QStringLiteral("Velkor overlay");

// An overlay frame has a pill, text and a soft shadow: hundreds of colours.
// A window not drawn yet holds one fill, or nothing but black.
constexpr int PaintedColours = 8;

template <typename T> using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T> Reply<T> reply(T* raw)
{
    return Reply<T>(raw, &std::free);
}

} // namespace

OverlayWatch::OverlayWatch(BenchClient& client) : m_client(client)
{
    xcb_connection_t* c = m_client.connection();
    m_opacity = m_client.atom("_NET_WM_WINDOW_OPACITY");
    const xcb_query_extension_reply_t* damage = xcb_get_extension_data(c, &xcb_damage_id);
    if (damage && damage->present) {
        auto version = reply(xcb_damage_query_version_reply(
            c, xcb_damage_query_version(c, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION),
            nullptr));
        if (version)
            m_damageEvent = uint8_t(damage->first_event + XCB_DAMAGE_NOTIFY);
    }
    m_client.setObserver(
        [this](const xcb_generic_event_t* e, Clock::time_point at) { observe(e, at); });
    m_client.watchTopLevels();
    // Windows made before we watched: an overlay shown earlier among them.
    auto tree = reply(xcb_query_tree_reply(c, xcb_query_tree(c, m_client.root()), nullptr));
    if (!tree)
        return;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        auto attributes = reply(
            xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, children[i]), nullptr));
        if (attributes && attributes->override_redirect)
            onCreate(children[i], true);
    }
    m_created.clear();
}

OverlayWatch::~OverlayWatch()
{
    m_client.setObserver({});
}

void OverlayWatch::observe(const xcb_generic_event_t* e, Clock::time_point at)
{
    const uint8_t type = e->response_type & 0x7f;
    if (m_damageEvent && type == m_damageEvent) {
        const auto* d = reinterpret_cast<const xcb_damage_notify_event_t*>(e);
        if (d->drawable == m_overlay && m_mapped && !m_paintedAt && looksPainted())
            m_paintedAt = at;
        return;
    }
    switch (type) {
    case XCB_CREATE_NOTIFY: {
        const auto* n = reinterpret_cast<const xcb_create_notify_event_t*>(e);
        if (n->parent == m_client.root())
            onCreate(n->window, n->override_redirect);
        break;
    }
    case XCB_MAP_NOTIFY: {
        const auto* n = reinterpret_cast<const xcb_map_notify_event_t*>(e);
        if (n->event == m_client.root())
            onMap(n->window, n->override_redirect, at);
        break;
    }
    case XCB_UNMAP_NOTIFY:
        if (reinterpret_cast<const xcb_unmap_notify_event_t*>(e)->window == m_overlay)
            m_mapped = false;
        break;
    case XCB_DESTROY_NOTIFY: {
        const xcb_window_t w = reinterpret_cast<const xcb_destroy_notify_event_t*>(e)->window;
        m_damaged.remove(w);
        m_created.remove(w);
        if (w == m_overlay) {
            m_overlay = 0;
            m_mapped = false;
        }
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto* p = reinterpret_cast<const xcb_property_notify_event_t*>(e);
        if (p->window == m_overlay && p->atom == m_opacity && m_mapped)
            ++m_opacityChanges;
        break;
    }
    default:
        break;
    }
}

void OverlayWatch::onCreate(xcb_window_t window, bool overrideRedirect)
{
    if (!overrideRedirect)
        return;
    m_created.insert(window);
    // From its creation on, so that not even the first frame goes unseen.
    if (m_damageEvent && !m_damaged.contains(window)) {
        xcb_connection_t* c = m_client.connection();
        xcb_damage_create(c, xcb_generate_id(c), window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(c);
        m_damaged.insert(window);
    }
}

void OverlayWatch::onMap(xcb_window_t window, bool overrideRedirect, Clock::time_point at)
{
    if (!overrideRedirect)
        return;
    const bool created = m_created.contains(window);
    if (window != m_overlay) {
        if (m_client.name(window) != OverlayName)
            return;
        m_overlay = window;
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_client.connection(), window, XCB_CW_EVENT_MASK, &mask);
        onCreate(window, true); // made before we watched: damage from now on
        xcb_flush(m_client.connection());
    }
    m_mapped = true;
    m_mappedAt = at;
    m_paintedAt.reset();
    m_opacityChanges = 0;
    m_createdForThisMap = created;
    m_created.remove(window);
}

bool OverlayWatch::looksPainted()
{
    xcb_connection_t* c = m_client.connection();
    auto geometry = reply(xcb_get_geometry_reply(c, xcb_get_geometry(c, m_overlay), nullptr));
    if (!geometry)
        return false;
    auto image = reply(xcb_get_image_reply(c,
                                           xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, m_overlay, 0,
                                                         0, geometry->width, geometry->height, ~0u),
                                           nullptr));
    if (!image || image->depth < 24)
        return false;
    // Depth 24 and 32 both come as 32-bit pixels.
    const auto* pixels = reinterpret_cast<const quint32*>(xcb_get_image_data(image.get()));
    const int count = xcb_get_image_data_length(image.get()) / 4;
    QSet<quint32> colours;
    for (int i = 0; i < count && colours.size() < PaintedColours; ++i)
        colours.insert(pixels[i]);
    return colours.size() >= PaintedColours;
}

bool OverlayWatch::waitForMap(double timeoutMs)
{
    return m_mapped ||
           m_client.pump([&](const xcb_generic_event_t*) { return m_mapped; }, timeoutMs)
               .has_value();
}

bool OverlayWatch::waitForPaint(double timeoutMs)
{
    return (m_mapped && m_paintedAt) ||
           m_client
               .pump(
                   [&](const xcb_generic_event_t*) { return m_mapped && m_paintedAt.has_value(); },
                   timeoutMs)
               .has_value();
}

bool OverlayWatch::waitForUnmap(double timeoutMs)
{
    return !m_mapped ||
           m_client.pump([&](const xcb_generic_event_t*) { return !m_mapped; }, timeoutMs)
               .has_value();
}

} // namespace velkor::xbench
