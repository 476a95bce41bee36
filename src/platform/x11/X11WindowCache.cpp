// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowCache.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSet>
#include <algorithm>

Q_LOGGING_CATEGORY(lcX11Cache, "velkor.x11.windows", QtInfoMsg)

namespace velkor::x11 {

namespace {

// More windows than any desktop holds; a longer client list or window tree
// is read only this far.
constexpr uint32_t MaxClients = 4096;

// A window manager's answer to one request changes several root properties
// within a millisecond, each told in an event of its own: an activation
// sets the active window (often twice: none, then the window) and the
// stacking. Reading them this long after the first change reads the burst
// once.
constexpr int RootBurstMs = 4;

} // namespace

X11WindowCache::X11WindowCache(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection)), m_reader(*m_connection)
{
    m_rootRead.setSingleShot(true);
    m_rootRead.setInterval(RootBurstMs);
    m_rootRead.callOnTimeout(this, &X11WindowCache::readPendingRoot);
    // Event masks are per client: what is selected on the root adds to what
    // Qt selected there rather than replacing it.
    xcb_connection_t* c = m_connection->get();
    auto attributes = reply(xcb_get_window_attributes_reply(
        c, xcb_get_window_attributes(c, m_connection->root()), nullptr));
    m_qtRootMask = attributes ? attributes->your_event_mask : 0;
    reload();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11WindowCache::~X11WindowCache()
{
    if (auto* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

void X11WindowCache::reload()
{
    ++m_generation;
    // Everything is read below, the changes waiting to be read too.
    m_rootPending = 0;
    m_clients.clear();
    m_clientOrder.clear();
    m_stacking.clear();
    readWindowManager();
    // Selected before anything is read, so that no change falls in between.
    selectRootEvents();
    if (hasWindowManager()) {
        RootRequests requests;
        requestRoot(AllRootFields, requests);
        readRoot(AllRootFields, requests);
    } else {
        // The desktops and lists a dead window manager left on the root are
        // stale; without one every mapped window is on the one screen.
        m_desktopCount.reset();
        m_currentDesktop = 0;
        setClients(readTopLevels());
        m_stacking = m_clientOrder;
        readActiveFocus();
    }
}

void X11WindowCache::readWindowManager()
{
    m_wmCheck = NoWindow;
    xcb_connection_t* c = m_connection->get();
    const xcb_window_t root = m_connection->root();
    const xcb_atom_t property = m_connection->atom(Atom::NetSupportingWmCheck);
    const auto named = m_connection->cardinals(root, property, XCB_ATOM_WINDOW, 1);
    const xcb_window_t check = named && !named->isEmpty() ? named->first() : NoWindow;
    if (check == NoWindow || check == root)
        return;
    // A window manager that died leaves the root naming a window that is
    // gone; a running one's check window names itself.
    const auto self = m_connection->cardinals(check, property, XCB_ATOM_WINDOW, 1);
    if (!self || self->value(0) != check)
        return;
    // The check window goes with its window manager, however that ends.
    xcb_generic_error_t* gone = nullptr;
    auto attributes =
        reply(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, check), &gone));
    std::free(gone);
    if (!attributes)
        return;
    const uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (xcb_generic_error_t* error = xcb_request_check(
            c, xcb_change_window_attributes_checked(c, check, XCB_CW_EVENT_MASK, &mask))) {
        std::free(error);
        return;
    }
    m_wmCheck = check;
}

void X11WindowCache::selectRootEvents()
{
    // Without a window manager, the window tree's own events tell what is
    // mapped and how it is stacked.
    uint32_t mask = m_qtRootMask | XCB_EVENT_MASK_PROPERTY_CHANGE;
    if (!hasWindowManager())
        mask |= XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection->get(), m_connection->root(), XCB_CW_EVENT_MASK,
                                 &mask);
    m_connection->flush();
}

const X11Client* X11WindowCache::client(xcb_window_t window) const
{
    auto it = m_clients.constFind(window);
    return it == m_clients.cend() ? nullptr : &*it;
}

QList<const X11Client*> X11WindowCache::frontToBack() const
{
    QList<const X11Client*> out;
    QSet<xcb_window_t> seen;
    for (auto it = m_stacking.crbegin(); it != m_stacking.crend(); ++it) {
        const X11Client* c = client(*it);
        if (c && !seen.contains(*it)) {
            out.append(c);
            seen.insert(*it);
        }
    }
    // Windows the stacking list does not name yet go last.
    for (xcb_window_t w : m_clientOrder)
        if (!seen.contains(w))
            if (const X11Client* c = client(w))
                out.append(c);
    return out;
}

QList<const X11Client*> X11WindowCache::inClientOrder() const
{
    QList<const X11Client*> out;
    for (xcb_window_t w : m_clientOrder)
        if (const X11Client* c = client(w))
            out.append(c);
    return out;
}

void X11WindowCache::noteDesktopRequested(xcb_window_t window, quint32 desktop)
{
    auto it = m_clients.find(window);
    if (it != m_clients.end()) {
        it->desktop = desktop;
        ++m_generation;
    }
}

bool X11WindowCache::noteRaised(xcb_window_t window)
{
    const X11Client* c = client(window);
    if (!c || !c->pid)
        return false;
    m_raised.insert(c->pid, window);
    return true;
}

xcb_window_t X11WindowCache::takeRaised(Pid pid)
{
    const xcb_window_t window = m_raised.take(pid);
    const X11Client* c = client(window);
    return c && c->pid == pid ? window : NoWindow;
}

bool X11WindowCache::takePendingRaise(xcb_window_t window)
{
    const X11Client* c = client(window);
    if (!c || !c->pid || m_raised.value(c->pid) != window)
        return false;
    m_raised.remove(c->pid);
    return true;
}

void X11WindowCache::noteFocused(xcb_window_t window)
{
    if (m_active == window || !client(window))
        return;
    m_active = window;
    // Told after the current event, as a window manager's answer would be.
    QMetaObject::invokeMethod(this, &X11WindowCache::activeWindowChanged, Qt::QueuedConnection);
}

void X11WindowCache::setClients(QList<xcb_window_t> windows)
{
    // Any client can write the list: the root, nothing and repeats are no
    // clients.
    QSet<xcb_window_t> present;
    QList<xcb_window_t> order;
    QList<xcb_window_t> added;
    for (xcb_window_t w : windows) {
        if (w == NoWindow || w == m_connection->root() || present.contains(w))
            continue;
        present.insert(w);
        order.append(w);
        if (!m_clients.contains(w)) {
            X11Client c;
            c.id = w;
            m_clients.insert(w, c);
            added.append(w);
        }
    }
    for (auto it = m_clients.begin(); it != m_clients.end();)
        it = present.contains(it.key()) ? std::next(it) : m_clients.erase(it);
    m_clientOrder = std::move(order);
    ++m_generation;
    if (added.isEmpty())
        return;

    // Property changes are selected in addition to what Qt selected on the
    // windows that are this program's own.
    xcb_connection_t* c = m_connection->get();
    QList<xcb_get_window_attributes_cookie_t> attributes;
    for (xcb_window_t w : std::as_const(added))
        attributes.append(xcb_get_window_attributes(c, w));
    QList<xcb_void_cookie_t> selections;
    QList<xcb_window_t> existing;
    for (qsizetype i = 0; i < added.size(); ++i) {
        xcb_generic_error_t* error = nullptr;
        auto a = reply(xcb_get_window_attributes_reply(c, attributes[i], &error));
        std::free(error);
        if (!a) { // no such window (any more)
            m_clients.remove(added[i]);
            m_clientOrder.removeOne(added[i]);
            continue;
        }
        existing.append(added[i]);
        const uint32_t mask = a->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE;
        selections.append(
            xcb_change_window_attributes_checked(c, added[i], XCB_CW_EVENT_MASK, &mask));
    }
    fetch(existing, X11ClientReader::AllFields);
    // A window may be gone already; its error is expected and dropped here
    // rather than reaching Qt's error log.
    for (const auto& cookie : selections)
        std::free(xcb_request_check(c, cookie));
}

void X11WindowCache::requestRoot(unsigned fields, RootRequests& r) const
{
    xcb_connection_t* c = m_connection->get();
    const xcb_window_t root = m_connection->root();
    const auto request = [&](Atom which, xcb_atom_t type, uint32_t maxValues) {
        return xcb_get_property(c, 0, root, m_connection->atom(which), type, 0, maxValues);
    };
    if (fields & ClientListField)
        r.clientList = request(Atom::NetClientList, XCB_ATOM_WINDOW, MaxClients);
    if (fields & StackingField)
        r.stacking = request(Atom::NetClientListStacking, XCB_ATOM_WINDOW, MaxClients);
    if (fields & ActiveField)
        r.active = request(Atom::NetActiveWindow, XCB_ATOM_WINDOW, 1);
    if (fields & DesktopsField) {
        r.desktopCount = request(Atom::NetNumberOfDesktops, XCB_ATOM_CARDINAL, 1);
        r.currentDesktop = request(Atom::NetCurrentDesktop, XCB_ATOM_CARDINAL, 1);
    }
}

std::optional<QList<quint32>> X11WindowCache::rootValues(xcb_get_property_cookie_t cookie,
                                                         xcb_atom_t type) const
{
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(m_connection->get(), cookie, &error));
    std::free(error);
    if (!r || r->type != type || r->format != 32)
        return std::nullopt;
    return values32(r.get());
}

void X11WindowCache::readRoot(unsigned fields, const RootRequests& requests)
{
    // Every request was sent before the first reply is awaited, so that
    // reading several properties costs one round trip. Each one sent is
    // answered here, or its reply would stay queued for good.
    if (fields & DesktopsField) {
        const auto count = rootValues(requests.desktopCount, XCB_ATOM_CARDINAL);
        const auto current = rootValues(requests.currentDesktop, XCB_ATOM_CARDINAL);
        // Any client may write the count; it is bounded before anything is
        // made of it.
        m_desktopCount =
            count && !count->isEmpty() && count->first() > 0
                ? std::optional<quint32>(std::min(count->first(), X11Client::MaxDesktops))
                : std::nullopt;
        m_currentDesktop = current && !current->isEmpty() ? current->first() : 0;
    }
    if (fields & ClientListField)
        setClients(rootValues(requests.clientList, XCB_ATOM_WINDOW).value_or(QList<quint32>{}));
    // After the client list: a root without a stacking list stacks its clients.
    if (fields & StackingField)
        m_stacking = rootValues(requests.stacking, XCB_ATOM_WINDOW).value_or(m_clientOrder);
    if (fields & ActiveField) {
        const auto active = rootValues(requests.active, XCB_ATOM_WINDOW);
        m_active = active && !active->isEmpty() ? active->first() : NoWindow;
    }
}

void X11WindowCache::readRootLater(unsigned fields)
{
    // Asked for once the window manager's burst of changes is over: one
    // request and one answer for the burst, telling of where it ended.
    if (!m_rootPending)
        m_rootRead.start();
    m_rootPending |= fields;
}

void X11WindowCache::readPendingRoot()
{
    const unsigned fields = std::exchange(m_rootPending, 0);
    if (!fields)
        return; // reload() read it all
    RootRequests requests;
    requestRoot(fields, requests);
    readRoot(fields, requests);
    if (fields & ClientListField)
        emit clientsChanged();
    if (fields & ActiveField)
        emit activeWindowChanged();
    if (fields & DesktopsField)
        emit desktopsChanged();
}

void X11WindowCache::readActiveFocus()
{
    xcb_connection_t* c = m_connection->get();
    auto focus = reply(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    m_active = focus && client(focus->focus) ? focus->focus : NoWindow;
}

QList<xcb_window_t> X11WindowCache::readTopLevels()
{
    // The mapped top-level windows that a window manager would manage, in
    // stacking order, bottom first.
    xcb_connection_t* c = m_connection->get();
    auto tree = reply(xcb_query_tree_reply(c, xcb_query_tree(c, m_connection->root()), nullptr));
    if (!tree)
        return {};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    const int first = std::max(0, count - int(MaxClients)); // the topmost ones
    QList<xcb_get_window_attributes_cookie_t> cookies;
    for (int i = first; i < count; ++i)
        cookies.append(xcb_get_window_attributes(c, children[i]));
    QList<xcb_window_t> out;
    for (int i = first; i < count; ++i) {
        xcb_generic_error_t* error = nullptr;
        auto a = reply(xcb_get_window_attributes_reply(c, cookies[i - first], &error));
        std::free(error);
        if (a && a->map_state == XCB_MAP_STATE_VIEWABLE && !a->override_redirect &&
            a->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT)
            out.append(children[i]);
    }
    return out;
}

void X11WindowCache::readTopLevelsLater()
{
    // Events come in bursts (a window mapped, configured, restacked); one
    // reading after the burst does for all of them.
    if (m_topLevelsPending)
        return;
    m_topLevelsPending = true;
    QMetaObject::invokeMethod(this, &X11WindowCache::readTopLevelsNow, Qt::QueuedConnection);
}

void X11WindowCache::readTopLevelsNow()
{
    m_topLevelsPending = false;
    if (hasWindowManager())
        return;
    setClients(readTopLevels());
    m_stacking = m_clientOrder;
    if (!client(m_active))
        m_active = NoWindow;
    emit clientsChanged();
}

void X11WindowCache::fetch(const QList<xcb_window_t>& windows, unsigned fields)
{
    QList<X11Client*> clients;
    clients.reserve(windows.size());
    for (xcb_window_t w : windows) {
        auto it = m_clients.find(w);
        if (it != m_clients.end())
            clients.append(&*it);
    }
    m_reader.read(clients, fields);
    ++m_generation;
    if (hasWindowManager())
        return;
    // The states and desktops a dead window manager left on its windows
    // are stale: every mapped window is shown.
    for (X11Client* c : std::as_const(clients)) {
        c->hidden = false;
        c->desktop.reset();
    }
}

void X11WindowCache::onWindowManagerChanged()
{
    qCDebug(lcX11Cache) << "window manager changed; reading all windows again";
    reload();
    qCDebug(lcX11Cache) << (hasWindowManager() ? "window manager present" : "no window manager");
    emit clientsChanged();
    emit desktopsChanged();
    emit activeWindowChanged();
}

void X11WindowCache::onRootProperty(xcb_atom_t atom)
{
    auto a = [this](Atom which) { return m_connection->atom(which); };
    if (atom == a(Atom::NetSupportingWmCheck)) {
        onWindowManagerChanged();
    } else if (!hasWindowManager()) {
        return; // the EWMH lists are nobody's now
    } else if (atom == a(Atom::NetClientList)) {
        readRootLater(ClientListField | StackingField);
    } else if (atom == a(Atom::NetClientListStacking)) {
        readRootLater(StackingField);
    } else if (atom == a(Atom::NetActiveWindow)) {
        readRootLater(ActiveField);
    } else if (atom == a(Atom::NetCurrentDesktop) || atom == a(Atom::NetNumberOfDesktops)) {
        readRootLater(DesktopsField);
    }
}

void X11WindowCache::onClientProperty(X11Client& client, xcb_atom_t atom)
{
    const unsigned field = m_reader.fieldOf(atom);
    if (!field)
        return;
    fetch({client.id}, field);
    using R = X11ClientReader;
    if (field & (R::PidField | R::ClassField | R::GtkIdField | R::TypeField | R::StateField))
        emit clientsChanged();
}

void X11WindowCache::handleWithoutWindowManager(uint8_t type, xcb_generic_event_t* event)
{
    const xcb_window_t root = m_connection->root();
    switch (type) {
    case XCB_MAP_NOTIFY: {
        auto* e = reinterpret_cast<xcb_map_notify_event_t*>(event);
        // Menus and tooltips (and this program's overlay) are no clients.
        if (e->event == root && !e->override_redirect)
            readTopLevelsLater();
        break;
    }
    case XCB_UNMAP_NOTIFY: {
        auto* e = reinterpret_cast<xcb_unmap_notify_event_t*>(event);
        if (e->event == root && client(e->window))
            readTopLevelsLater();
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        auto* e = reinterpret_cast<xcb_destroy_notify_event_t*>(event);
        if (e->event == root && client(e->window))
            readTopLevelsLater();
        break;
    }
    case XCB_REPARENT_NOTIFY: {
        auto* e = reinterpret_cast<xcb_reparent_notify_event_t*>(event);
        if (e->event == root && (e->parent == root || client(e->window)))
            readTopLevelsLater();
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        auto* e = reinterpret_cast<xcb_configure_notify_event_t*>(event);
        if (e->event == root && client(e->window))
            readTopLevelsLater(); // it may have been restacked
        break;
    }
    default:
        break;
    }
}

bool X11WindowCache::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    const uint8_t type = event->response_type & 0x7f;
    switch (type) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        m_connection->noteTime(reinterpret_cast<xcb_key_press_event_t*>(event)->time);
        break;
    case XCB_PROPERTY_NOTIFY: {
        auto* property = reinterpret_cast<xcb_property_notify_event_t*>(event);
        m_connection->noteTime(property->time);
        if (property->window == m_connection->root()) {
            onRootProperty(property->atom);
        } else {
            auto it = m_clients.find(property->window);
            if (it != m_clients.end())
                onClientProperty(*it, property->atom);
        }
        break;
    }
    case XCB_DESTROY_NOTIFY:
        if (m_wmCheck != NoWindow &&
            reinterpret_cast<xcb_destroy_notify_event_t*>(event)->window == m_wmCheck) {
            onWindowManagerChanged();
            break;
        }
        [[fallthrough]];
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
        if (!hasWindowManager())
            handleWithoutWindowManager(type, event);
        break;
    default:
        break;
    }
    return false; // Qt sees every event as before
}

} // namespace velkor::x11
