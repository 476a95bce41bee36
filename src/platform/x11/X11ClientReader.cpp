// SPDX-License-Identifier: MIT
#include "platform/x11/X11ClientReader.h"

#include "platform/x11/X11Connection.h"

#include <limits>
#include <xcb/res.h>
#include <xcb/xcb_icccm.h>

namespace velkor::x11 {

namespace {

// In 32-bit units: 4 KiB of text, 1,024 atoms. Titles longer than that are
// cut, and lists longer than that are not what the properties are for.
constexpr uint32_t MaxLength = 1024;

using Cookie = std::optional<xcb_get_property_cookie_t>;

struct Cookies
{
    X11Client* client;
    Cookie pid, wmClass, gtkId, netName, wmName, type, state, desktop, hints, protocols;
};

Cookie request(xcb_connection_t* c, bool wanted, xcb_window_t window, xcb_atom_t property,
               xcb_atom_t type)
{
    if (!wanted || property == XCB_ATOM_NONE)
        return std::nullopt;
    return xcb_get_property(c, 0, window, property, type, 0, MaxLength);
}

Reply<xcb_get_property_reply_t> take(xcb_connection_t* c, const Cookie& cookie)
{
    if (!cookie)
        return reply<xcb_get_property_reply_t>(nullptr);
    xcb_generic_error_t* error = nullptr;
    auto r = reply(xcb_get_property_reply(c, *cookie, &error));
    std::free(error); // a window that went away meanwhile reads as empty
    return r;
}

// A pid is a positive 32-bit number; anything else is nobody's.
Pid pidFrom(quint32 raw)
{
    return raw <= quint32(std::numeric_limits<Pid>::max()) ? Pid(raw) : 0;
}

// A title ends at its first NUL: what follows is not shown by anyone.
std::optional<QString> title(std::optional<QString> text)
{
    if (text) {
        const qsizetype nul = text->indexOf(QChar(0));
        if (nul >= 0)
            text->truncate(nul);
    }
    return text;
}

} // namespace

X11ClientReader::X11ClientReader(X11Connection& connection)
    : m_connection(connection), m_hasResourceExtension(connection.hasExtension("X-Resource"))
{}

unsigned X11ClientReader::fieldOf(xcb_atom_t atom) const
{
    auto a = [this](Atom which) { return m_connection.atom(which); };
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
    if (atom == a(Atom::WmProtocols))
        return ProtocolsField;
    return 0;
}

void X11ClientReader::read(const QList<X11Client*>& clients, unsigned fields)
{
    xcb_connection_t* c = m_connection.get();
    auto a = [this](Atom which) { return m_connection.atom(which); };
    QList<Cookies> cookies;
    cookies.reserve(clients.size());
    for (X11Client* client : clients) {
        const xcb_window_t w = client->id;
        Cookies k{client, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}};
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
        k.protocols = request(c, fields & ProtocolsField, w, a(Atom::WmProtocols), XCB_ATOM_ATOM);
        cookies.append(k);
    }

    QList<X11Client*> withoutPid;
    for (const Cookies& k : cookies) {
        X11Client& cl = *k.client;
        if (k.pid) {
            const QList<quint32> v = values32(take(c, k.pid).get());
            cl.pid = v.isEmpty() ? 0 : pidFrom(v.first());
            if (!cl.pid)
                withoutPid.append(&cl);
        }
        if (k.wmClass) {
            const QString raw =
                m_connection.text(take(c, k.wmClass).get(), XCB_ATOM_STRING).value_or(QString());
            const QStringList parts = raw.split(QChar(0));
            cl.instanceName = parts.value(0);
            cl.className = parts.value(1);
        }
        if (k.gtkId)
            cl.gtkApplicationId = m_connection.text(take(c, k.gtkId).get(), a(Atom::Utf8String));
        if (k.netName) {
            // A _NET_WM_NAME that is not UTF-8 text is no title; WM_NAME is
            // the one legacy and careless clients keep right.
            cl.netName = title(m_connection.text(take(c, k.netName).get(), a(Atom::Utf8String)));
            cl.wmName = title(m_connection.text(take(c, k.wmName).get(), XCB_ATOM_ANY));
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
            // A number past any real desktop is a client's mistake: no desktop.
            const QList<quint32> v = values32(take(c, k.desktop).get());
            cl.desktop.reset();
            if (!v.isEmpty() &&
                (v.first() < X11Client::MaxDesktops || v.first() == X11Client::AllDesktops))
                cl.desktop = v.first();
        }
        if (k.hints) {
            auto r = take(c, k.hints);
            xcb_icccm_wm_hints_t hints{};
            cl.acceptsInput = true;
            if (r && xcb_icccm_get_wm_hints_from_reply(&hints, r.get()) &&
                (hints.flags & XCB_ICCCM_WM_HINT_INPUT))
                cl.acceptsInput = hints.input != 0;
        }
        if (k.protocols) {
            const QList<quint32> protocols = values32(take(c, k.protocols).get());
            cl.takesFocus = protocols.contains(a(Atom::WmTakeFocus));
            cl.deletesWindow = protocols.contains(a(Atom::WmDeleteWindow));
        }
    }
    if (!withoutPid.isEmpty())
        resolvePidsFromResources(withoutPid);
}

void X11ClientReader::resolvePidsFromResources(const QList<X11Client*>& clients)
{
    // xeyes, xlogo and other plain Xlib clients set no _NET_WM_PID; the
    // X-Resource extension knows the pid of every local client.
    if (!m_hasResourceExtension)
        return;
    xcb_connection_t* c = m_connection.get();
    QList<xcb_res_query_client_ids_cookie_t> cookies;
    for (const X11Client* client : clients) {
        xcb_res_client_id_spec_t spec{client->id, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        cookies.append(xcb_res_query_client_ids(c, 1, &spec));
    }
    for (qsizetype i = 0; i < clients.size(); ++i) {
        xcb_generic_error_t* error = nullptr;
        auto r = reply(xcb_res_query_client_ids_reply(c, cookies[i], &error));
        std::free(error);
        if (!r)
            continue;
        for (auto it = xcb_res_query_client_ids_ids_iterator(r.get()); it.rem;
             xcb_res_client_id_value_next(&it)) {
            if ((it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) &&
                xcb_res_client_id_value_value_length(it.data) >= 1)
                clients[i]->pid = pidFrom(*xcb_res_client_id_value_value(it.data));
        }
    }
}

} // namespace velkor::x11
