// SPDX-License-Identifier: MIT
#include "platform/x11/X11WindowCache.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSet>
#include <xcb/res.h>
#include <xcb/xcb_icccm.h>

Q_LOGGING_CATEGORY(lcX11Cache, "velkor.x11.windows", QtInfoMsg)

namespace velkor::x11 {

namespace {

constexpr uint32_t MaxLength = 1024;

struct Cookies
{
    xcb_window_t window;
    std::optional<xcb_get_property_cookie_t> pid, wmClass, gtkId, netName, wmName, type, state,
        desktop, hints;
};

std::optional<xcb_get_property_cookie_t>
request(xcb_connection_t* c, bool wanted, xcb_window_t window, xcb_atom_t property, xcb_atom_t type)
{
    if (!wanted || property == XCB_ATOM_NONE)
        return std::nullopt;
    return xcb_get_property(c, 0, window, property, type, 0, MaxLength);
}

Reply<xcb_get_property_reply_t> take(xcb_connection_t* c,
                                     const std::optional<xcb_get_property_cookie_t>& cookie)
{
    if (!cookie)
        return reply<xcb_get_property_reply_t>(nullptr);
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(c, *cookie, &error));
    std::free(error); // a window that went away meanwhile reads as empty
    return r;
}

} // namespace

X11WindowCache::X11WindowCache(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    m_hasResourceExtension = m_connection->hasExtension("X-Resource");
    watchRoot();
    reload();
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11WindowCache::~X11WindowCache()
{
    if (auto* app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
}

void X11WindowCache::watchRoot()
{
    // Event masks are per client: add to what Qt already selected on the root
    // rather than replacing it.
    xcb_connection_t* c = m_connection->get();
    auto attributes = reply(xcb_get_window_attributes_reply(
        c, xcb_get_window_attributes(c, m_connection->root()), nullptr));
    const uint32_t mask =
        (attributes ? attributes->your_event_mask : 0) | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c, m_connection->root(), XCB_CW_EVENT_MASK, &mask);
    m_connection->flush();
}

void X11WindowCache::reload()
{
    m_clients.clear();
    m_clientOrder.clear();
    readDesktops();
    readClientList();
    readStacking();
    readActive();
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
        if (const X11Client* c = client(*it)) {
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
    if (it != m_clients.end())
        it->desktop = desktop;
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

void X11WindowCache::readClientList()
{
    const auto list = m_connection->cardinals(
        m_connection->root(), m_connection->atom(Atom::NetClientList), XCB_ATOM_WINDOW);
    const QList<xcb_window_t> windows = list.value_or(QList<quint32>{});
    QList<xcb_window_t> added;
    QSet<xcb_window_t> present;
    for (xcb_window_t w : windows) {
        present.insert(w);
        if (!m_clients.contains(w)) {
            X11Client c;
            c.id = w;
            m_clients.insert(w, c);
            added.append(w);
        }
    }
    for (auto it = m_clients.begin(); it != m_clients.end();)
        it = present.contains(it.key()) ? std::next(it) : m_clients.erase(it);
    m_clientOrder = windows;

    if (!added.isEmpty()) {
        xcb_connection_t* c = m_connection->get();
        const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        QList<xcb_void_cookie_t> selections;
        for (xcb_window_t w : added)
            selections.append(xcb_change_window_attributes_checked(c, w, XCB_CW_EVENT_MASK, &mask));
        fetch(added, AllFields);
        // A window may be gone already; its error is expected and dropped here
        // rather than reaching Qt's error log.
        for (const auto& cookie : selections)
            std::free(xcb_request_check(c, cookie));
    }
}

void X11WindowCache::readStacking()
{
    auto stacking = m_connection->cardinals(
        m_connection->root(), m_connection->atom(Atom::NetClientListStacking), XCB_ATOM_WINDOW);
    m_stacking = stacking.value_or(m_clientOrder);
}

void X11WindowCache::readActive()
{
    auto active = m_connection->cardinals(
        m_connection->root(), m_connection->atom(Atom::NetActiveWindow), XCB_ATOM_WINDOW);
    m_active = active && !active->isEmpty() ? active->first() : NoWindow;
}

void X11WindowCache::readDesktops()
{
    const xcb_window_t root = m_connection->root();
    auto count = m_connection->cardinals(root, m_connection->atom(Atom::NetNumberOfDesktops),
                                         XCB_ATOM_CARDINAL);
    auto current = m_connection->cardinals(root, m_connection->atom(Atom::NetCurrentDesktop),
                                           XCB_ATOM_CARDINAL);
    m_desktopCount = count && !count->isEmpty() && count->first() > 0
                         ? std::optional<quint32>(count->first())
                         : std::nullopt;
    m_currentDesktop = current && !current->isEmpty() ? current->first() : 0;
}

void X11WindowCache::fetch(const QList<xcb_window_t>& windows, unsigned fields)
{
    xcb_connection_t* c = m_connection->get();
    auto a = [this](Atom which) { return m_connection->atom(which); };
    QList<Cookies> cookies;
    cookies.reserve(windows.size());
    for (xcb_window_t w : windows) {
        Cookies k{w, {}, {}, {}, {}, {}, {}, {}, {}, {}};
        k.pid = request(c, fields & PidField, w, a(Atom::NetWmPid), XCB_ATOM_CARDINAL);
        k.wmClass = request(c, fields & ClassField, w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
        k.gtkId =
            request(c, fields & GtkIdField, w, a(Atom::GtkApplicationId), a(Atom::Utf8String));
        k.netName = request(c, fields & NameField, w, a(Atom::NetWmName), a(Atom::Utf8String));
        k.wmName = request(c, fields & NameField, w, XCB_ATOM_WM_NAME, XCB_ATOM_ANY);
        k.type = request(c, fields & TypeField, w, a(Atom::NetWmWindowType), XCB_ATOM_ATOM);
        k.state = request(c, fields & StateField, w, a(Atom::NetWmState), XCB_ATOM_ATOM);
        k.desktop = request(c, fields & DesktopField, w, a(Atom::NetWmDesktop), XCB_ATOM_CARDINAL);
        k.hints = request(c, fields & HintsField, w, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS);
        cookies.append(k);
    }

    QList<xcb_window_t> withoutPid;
    for (const Cookies& k : cookies) {
        auto it = m_clients.find(k.window);
        const bool known = it != m_clients.end();
        X11Client scratch;
        X11Client& cl = known ? *it : scratch;
        if (k.pid) {
            const QList<quint32> v = values32(take(c, k.pid).get());
            cl.pid = v.isEmpty() ? 0 : Pid(v.first());
            if (!cl.pid)
                withoutPid.append(k.window);
        }
        if (k.wmClass) {
            const auto raw = text(take(c, k.wmClass).get(), false).value_or(QString());
            const QStringList parts = raw.split(QChar(0));
            cl.instanceName = parts.value(0);
            cl.className = parts.value(1);
        }
        if (k.gtkId) {
            cl.gtkApplicationId = text(take(c, k.gtkId).get(), true);
        }
        if (k.netName) {
            cl.netName = text(take(c, k.netName).get(), true);
            auto r = take(c, k.wmName);
            cl.wmName = text(r.get(), r && r->type == a(Atom::Utf8String));
        }
        if (k.type) {
            cl.kind = X11Client::Kind::Normal;
            for (quint32 t : values32(take(c, k.type).get())) {
                if (t == a(Atom::NetWmWindowTypeNormal) || t == a(Atom::NetWmWindowTypeDialog))
                    break;
                if (t == a(Atom::NetWmWindowTypeUtility)) {
                    cl.kind = X11Client::Kind::Utility;
                    break;
                }
                if (t == a(Atom::NetWmWindowTypeDock) || t == a(Atom::NetWmWindowTypeDesktop) ||
                    t == a(Atom::NetWmWindowTypeSplash) ||
                    t == a(Atom::NetWmWindowTypeNotification)) {
                    cl.kind = X11Client::Kind::Other;
                    break;
                }
            }
        }
        if (k.state) {
            const QList<quint32> states = values32(take(c, k.state).get());
            cl.hidden = states.contains(a(Atom::NetWmStateHidden));
            cl.skipTaskbar = states.contains(a(Atom::NetWmStateSkipTaskbar));
            cl.sticky = states.contains(a(Atom::NetWmStateSticky));
        }
        if (k.desktop) {
            const QList<quint32> v = values32(take(c, k.desktop).get());
            cl.desktop = v.isEmpty() ? std::nullopt : std::optional<quint32>(v.first());
        }
        if (k.hints) {
            auto r = take(c, k.hints);
            xcb_icccm_wm_hints_t hints{};
            cl.acceptsInput = true;
            if (r && xcb_icccm_get_wm_hints_from_reply(&hints, r.get()) &&
                (hints.flags & XCB_ICCCM_WM_HINT_INPUT))
                cl.acceptsInput = hints.input != 0;
        }
    }
    if (!withoutPid.isEmpty())
        resolvePidsFromResources(withoutPid);
}

void X11WindowCache::resolvePidsFromResources(const QList<xcb_window_t>& windows)
{
    // xeyes, xlogo and other plain Xlib clients set no _NET_WM_PID; the
    // X-Resource extension knows the pid of every local client.
    if (!m_hasResourceExtension)
        return;
    xcb_connection_t* c = m_connection->get();
    QList<xcb_res_query_client_ids_cookie_t> cookies;
    for (xcb_window_t w : windows) {
        xcb_res_client_id_spec_t spec{w, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        cookies.append(xcb_res_query_client_ids(c, 1, &spec));
    }
    for (qsizetype i = 0; i < windows.size(); ++i) {
        xcb_generic_error_t* error = nullptr;
        auto r = reply(xcb_res_query_client_ids_reply(c, cookies[i], &error));
        std::free(error);
        if (!r)
            continue;
        for (auto it = xcb_res_query_client_ids_ids_iterator(r.get()); it.rem;
             xcb_res_client_id_value_next(&it)) {
            if (!(it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) ||
                xcb_res_client_id_value_value_length(it.data) < 1)
                continue;
            auto found = m_clients.find(windows[i]);
            if (found != m_clients.end())
                found->pid = Pid(*xcb_res_client_id_value_value(it.data));
        }
    }
}

unsigned X11WindowCache::fieldOf(xcb_atom_t atom) const
{
    auto a = [this](Atom which) { return m_connection->atom(which); };
    if (atom == a(Atom::NetWmPid))
        return PidField;
    if (atom == XCB_ATOM_WM_CLASS)
        return ClassField;
    if (atom == a(Atom::GtkApplicationId))
        return GtkIdField;
    if (atom == a(Atom::NetWmName) || atom == XCB_ATOM_WM_NAME)
        return NameField;
    if (atom == a(Atom::NetWmWindowType))
        return TypeField;
    if (atom == a(Atom::NetWmState))
        return StateField;
    if (atom == a(Atom::NetWmDesktop))
        return DesktopField;
    if (atom == XCB_ATOM_WM_HINTS)
        return HintsField;
    return 0;
}

void X11WindowCache::onRootProperty(xcb_atom_t atom)
{
    auto a = [this](Atom which) { return m_connection->atom(which); };
    if (atom == a(Atom::NetClientList)) {
        readClientList();
        readStacking();
        emit clientsChanged();
    } else if (atom == a(Atom::NetClientListStacking)) {
        readStacking();
    } else if (atom == a(Atom::NetActiveWindow)) {
        readActive();
        emit activeWindowChanged();
    } else if (atom == a(Atom::NetCurrentDesktop) || atom == a(Atom::NetNumberOfDesktops)) {
        readDesktops();
        emit desktopsChanged();
    } else if (atom == a(Atom::NetSupportingWmCheck)) {
        // A (re)started window manager re-manages every window.
        qCDebug(lcX11Cache) << "window manager changed; reading all windows again";
        reload();
        emit clientsChanged();
        emit desktopsChanged();
        emit activeWindowChanged();
    }
}

void X11WindowCache::onClientProperty(X11Client& client, xcb_atom_t atom)
{
    const unsigned field = fieldOf(atom);
    if (!field)
        return;
    fetch({client.id}, field);
    if (field & (PidField | ClassField | GtkIdField | TypeField | StateField))
        emit clientsChanged();
}

bool X11WindowCache::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    auto* event = static_cast<xcb_generic_event_t*>(message);
    switch (event->response_type & 0x7f) {
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
    default:
        break;
    }
    return false; // Qt sees every event as before
}

} // namespace velkor::x11
