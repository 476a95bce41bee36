// SPDX-License-Identifier: MIT
#include "platform/x11/X11Workspace.h"

#include "platform/x11/X11WindowCache.h"
#include "platform/x11/X11WindowRequests.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <sys/stat.h>
#include <xcb/xcb_icccm.h>

Q_LOGGING_CATEGORY(lcX11Workspace, "velkor.x11.workspace", QtInfoMsg)

namespace velkor::x11 {

X11Workspace::X11Workspace(std::shared_ptr<X11WindowCache> cache,
                           std::shared_ptr<XdgDesktopEntryIndex> entries, Pid ownPid,
                           QObject* parent)
    : Workspace(parent), m_owner(cache), m_cache(*cache), m_entries(std::move(entries)),
      m_ownPid(ownPid)
{
    // Connected first: whoever hears of new entries finds the apps made
    // again from them.
    connect(m_entries.get(), &XdgDesktopEntryIndex::changed, this,
            [this] { m_appsGeneration.reset(); });
    m_lastApps = runningApplications();
    m_lastFrontmost = frontmostPid();
    connect(&m_cache, &X11WindowCache::clientsChanged, this, &X11Workspace::onClientsChanged);
    connect(m_entries.get(), &XdgDesktopEntryIndex::changed, this, &X11Workspace::onClientsChanged);
    connect(&m_cache, &X11WindowCache::activeWindowChanged, this,
            &X11Workspace::onActiveWindowChanged);
}

QList<const X11Client*> X11Workspace::windowsOf(Pid pid) const
{
    QList<const X11Client*> out;
    for (const X11Client* c : m_cache.frontToBack())
        if (c->pid == pid)
            out.append(c);
    return out;
}

RunningApp X11Workspace::describe(Pid pid, const QList<const X11Client*>& windows) const
{
    RunningApp app;
    app.pid = pid;
    app.regular = false;
    const X11Client* named = windows.first();
    for (const X11Client* c : windows) {
        if (c->isTaskbarWindow()) {
            if (!app.regular)
                named = c;
            app.regular = true;
        }
    }
    if (auto entry =
            m_entries->match(named->gtkApplicationId, named->className, named->instanceName)) {
        app.bundleId = entry->id;
        app.name = entry->name;
        app.bundlePath = entry->path;
    } else {
        const QString identity =
            named->className.isEmpty() ? named->instanceName : named->className;
        if (!identity.isEmpty()) {
            app.bundleId = identity;
            app.name = identity;
        }
    }
    return app;
}

QList<RunningApp> X11Workspace::runningApplications() const
{
    // Asked at every session and every activation, while the clients
    // rarely change in between.
    if (m_appsGeneration != m_cache.generation()) {
        m_apps = readRunningApplications();
        m_appsGeneration = m_cache.generation();
    }
    return m_apps;
}

QList<RunningApp> X11Workspace::readRunningApplications() const
{
    QList<Pid> order;
    QHash<Pid, QList<const X11Client*>> byPid;
    for (const X11Client* c : m_cache.inClientOrder()) {
        if (!c->pid || c->pid == m_ownPid)
            continue;
        if (!byPid.contains(c->pid))
            order.append(c->pid);
        byPid[c->pid].append(c);
    }
    QList<RunningApp> apps;
    apps.reserve(order.size());
    for (Pid pid : order)
        apps.append(describe(pid, byPid.value(pid)));
    return apps;
}

std::optional<Pid> X11Workspace::frontmostPid() const
{
    const X11Client* active = m_cache.client(m_cache.activeWindow());
    if (!active || !active->pid)
        return std::nullopt;
    return active->pid;
}

std::optional<QString> X11Workspace::ownBundleId() const
{
    const QString id = QGuiApplication::desktopFileName();
    return id.isEmpty() ? QStringLiteral("velkor") : id;
}

bool X11Workspace::isRunning(Pid pid) const
{
    return pid && !windowsOf(pid).isEmpty();
}

bool X11Workspace::isHidden(Pid pid) const
{
    const auto windows = windowsOf(pid);
    if (windows.isEmpty())
        return false;
    return std::all_of(windows.cbegin(), windows.cend(),
                       [](const X11Client* c) { return c->hidden || !c->isTaskbarWindow(); }) &&
           std::any_of(windows.cbegin(), windows.cend(),
                       [](const X11Client* c) { return c->hidden; });
}

void X11Workspace::unhide(Pid pid)
{
    // Mapping an iconic window asks the window manager to de-iconify it.
    X11Connection& x = m_cache.connection();
    for (const X11Client* c : windowsOf(pid))
        if (c->hidden)
            xcb_map_window(x.get(), c->id);
    x.flush();
}

void X11Workspace::hide(Pid pid)
{
    X11Connection& x = m_cache.connection();
    for (const X11Client* c : windowsOf(pid))
        if (!c->hidden && c->kind != X11Client::Kind::Other)
            x.sendRootMessage(c->id, Atom::WmChangeState, {XCB_ICCCM_WM_STATE_ICONIC, 0, 0, 0, 0});
    x.flush();
}

void X11Workspace::terminate(Pid pid)
{
    for (const X11Client* c : windowsOf(pid))
        X11WindowRequests::close(m_cache, c->id);
}

void X11Workspace::activate(Pid pid)
{
    xcb_window_t target = m_cache.takeRaised(pid);
    if (!target) {
        const auto windows = windowsOf(pid);
        for (const X11Client* c : windows) {
            if (c->isTaskbarWindow() && !c->hidden) {
                target = c->id;
                break;
            }
        }
        if (!target && !windows.isEmpty())
            target = windows.first()->id;
    }
    qCDebug(lcX11Workspace) << "activate pid" << pid << "window" << Qt::hex << target;
    if (!target)
        return;
    const X11Client* client = m_cache.client(target);
    const bool here =
        !m_cache.desktopCount() || (client && client->onDesktop(m_cache.currentDesktop()));
    const bool queued = m_pendingActivation != 0;
    m_pendingActivation = target;
    if (here && !queued) {
        sendPendingActivation();
        return;
    }
    // A window on another desktop is activated once the current event is
    // handled: one gathered to this desktop right after the activation must
    // not drag the user to the desktop it came from.
    if (!queued)
        QMetaObject::invokeMethod(this, &X11Workspace::sendPendingActivation, Qt::QueuedConnection);
}

void X11Workspace::sendPendingActivation()
{
    const xcb_window_t window = std::exchange(m_pendingActivation, 0);
    const X11Client* c = m_cache.client(window);
    if (!c)
        return;
    X11Connection& x = m_cache.connection();
    // openbox ignores activating a window on another desktop.
    if (m_cache.desktopCount() && !c->onDesktop(m_cache.currentDesktop()))
        x.sendRootMessage(x.root(), Atom::NetCurrentDesktop, {*c->desktop, x.time(), 0, 0, 0});
    // Windows that take no input focus are raised but never become active;
    // nobody waits for it.
    X11WindowRequests::activate(m_cache, window);
}

void X11Workspace::openApplication(const QString& bundlePath)
{
    // GIO opens the file as it is: it must still be a regular file, or the
    // open could hold the main thread (a FIFO put in its place).
    const QByteArray path = bundlePath.toUtf8();
    struct stat st;
    if (::stat(path.constData(), &st) != 0 || !S_ISREG(st.st_mode)) {
        qCWarning(lcX11Workspace) << "no desktop entry at" << bundlePath;
        return;
    }
    const QString error = m_launcher.launch(path);
    if (!error.isEmpty())
        qCWarning(lcX11Workspace) << "launching" << bundlePath << "failed:" << error;
}

void X11Workspace::onClientsChanged()
{
    QList<RunningApp> apps = runningApplications();
    if (apps == m_lastApps)
        return;
    QSet<Pid> before, after;
    for (const RunningApp& a : m_lastApps)
        before.insert(a.pid);
    for (const RunningApp& a : apps)
        after.insert(a.pid);
    m_lastApps = std::move(apps);
    const bool gone = !(before - after).isEmpty();
    const bool added = !(after - before).isEmpty();
    if (gone)
        emit applicationTerminated();
    // New apps, or a known one that changed its name or kind.
    if (added || !gone)
        emit applicationLaunched();
}

void X11Workspace::onActiveWindowChanged()
{
    const auto front = frontmostPid();
    if (front == m_lastFrontmost)
        return;
    m_lastFrontmost = front;
    emit applicationActivated();
}

} // namespace velkor::x11
