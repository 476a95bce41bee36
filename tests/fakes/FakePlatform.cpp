// SPDX-License-Identifier: MIT
#include "fakes/FakePlatform.h"

#include <algorithm>

namespace velkor::fake {

// --- FakeClock --------------------------------------------------------------

Clock::TaskId FakeClock::callAfter(double seconds, std::function<void()> task)
{
    const TaskId id = m_nextId++;
    m_tasks.emplace(id, Task{m_now + std::max(0.0, seconds), 0, std::move(task)});
    return id;
}

Clock::TaskId FakeClock::callEvery(double seconds, std::function<void()> task)
{
    const TaskId id = m_nextId++;
    const double interval = std::max(seconds, 1e-6);
    m_tasks.emplace(id, Task{m_now + interval, interval, std::move(task)});
    return id;
}

void FakeClock::cancel(TaskId id)
{
    m_tasks.erase(id);
}

void FakeClock::advance(double seconds)
{
    const double end = m_now + seconds;
    for (;;) {
        // The earliest due task; ties run in the order they were scheduled.
        auto next = m_tasks.end();
        for (auto it = m_tasks.begin(); it != m_tasks.end(); ++it) {
            if (it->second.due <= end &&
                (next == m_tasks.end() || it->second.due < next->second.due))
                next = it;
        }
        if (next == m_tasks.end())
            break;
        m_now = std::max(m_now, next->second.due);
        std::function<void()> run = next->second.run;
        if (next->second.interval > 0)
            next->second.due += next->second.interval;
        else
            m_tasks.erase(next);
        run(); // may schedule or cancel tasks
    }
    m_now = end;
}

// --- FakeWorkspace ----------------------------------------------------------

bool FakeWorkspace::isRunning(Pid pid) const
{
    return std::any_of(apps.begin(), apps.end(),
                       [pid](const RunningApp& a) { return a.pid == pid; });
}

void FakeWorkspace::unhide(Pid pid)
{
    m_log << QStringLiteral("unhide:%1").arg(pid);
    hidden.remove(pid);
}

void FakeWorkspace::hide(Pid pid)
{
    m_log << QStringLiteral("hide:%1").arg(pid);
    if (isRunning(pid))
        hidden.insert(pid);
}

void FakeWorkspace::terminate(Pid pid)
{
    m_log << QStringLiteral("terminate:%1").arg(pid);
}

void FakeWorkspace::activate(Pid pid)
{
    m_log << QStringLiteral("activate:%1").arg(pid);
    // It makes the app frontmost, as a real workspace would.
    if (isRunning(pid))
        frontmost = pid;
}

void FakeWorkspace::openApplication(const QString& bundlePath)
{
    m_log << QStringLiteral("open:%1").arg(bundlePath);
}

RunningApp& FakeWorkspace::addApp(Pid pid, const QString& name,
                                  const std::optional<QString>& bundleId,
                                  const std::optional<QString>& bundlePath)
{
    apps.append(RunningApp{pid, bundleId, name, bundlePath, true});
    return apps.last();
}

void FakeWorkspace::removeApp(Pid pid)
{
    apps.removeIf([pid](const RunningApp& a) { return a.pid == pid; });
    if (frontmost == pid)
        frontmost.reset();
}

// --- FakeWindowSystem -------------------------------------------------------

QString FakeWindowSystem::keyOf(const WindowHandle& window)
{
    const auto* element = dynamic_cast<const FakeWindowElement*>(window.get());
    return element ? element->key : QStringLiteral("?");
}

FakeWindow* FakeWindowSystem::find(const QString& key)
{
    for (auto& list : windows) {
        if (!list)
            continue;
        for (FakeWindow& w : *list) {
            if (w.key == key)
                return &w;
        }
    }
    return nullptr;
}

std::optional<QList<RawWindow>> FakeWindowSystem::windowsOf(Pid pid)
{
    const auto it = windows.constFind(pid);
    if (it == windows.constEnd())
        return QList<RawWindow>{};
    if (!*it)
        return std::nullopt;
    QList<RawWindow> raw;
    for (const FakeWindow& w : **it)
        raw.append(RawWindow{std::make_shared<FakeWindowElement>(w.key), w.title, w.minimized});
    return raw;
}

WindowHandle FakeWindowSystem::focusedWindowOf(Pid pid)
{
    const QString key = focused.value(pid);
    if (key.isEmpty() || !find(key))
        return nullptr;
    return std::make_shared<FakeWindowElement>(key);
}

void FakeWindowSystem::raise(const WindowHandle& window)
{
    m_log << QStringLiteral("raise:%1").arg(keyOf(window));
}

void FakeWindowSystem::setMinimized(const WindowHandle& window, bool minimized)
{
    m_log << QStringLiteral("setMinimized:%1:%2").arg(keyOf(window)).arg(minimized);
    if (FakeWindow* w = find(keyOf(window)))
        w->minimized = minimized;
}

void FakeWindowSystem::close(const WindowHandle& window)
{
    if (find(keyOf(window)))
        m_log << QStringLiteral("close:%1").arg(keyOf(window));
}

void FakeWindowSystem::setFrontmost(Pid pid)
{
    m_log << QStringLiteral("frontmost:%1").arg(pid);
}

std::optional<QRectF> FakeWindowSystem::frameOf(const WindowHandle& window)
{
    const FakeWindow* w = find(keyOf(window));
    return w ? w->frame : std::nullopt;
}

void FakeWindowSystem::warpPointer(QPointF globalPoint)
{
    m_log << QStringLiteral("warp:%1,%2").arg(globalPoint.x()).arg(globalPoint.y());
    pointer = globalPoint;
}

// --- FakeSpaceSystem --------------------------------------------------------

bool FakeSpaceSystem::setCurrentSpace(const QString& displayId, quint64 spaceId)
{
    if (!canSetCurrent)
        return false;
    m_log << QStringLiteral("setSpace:%1:%2").arg(displayId).arg(spaceId);
    if (layout) {
        const auto index = layout->spaceIds.indexOf(spaceId);
        if (index >= 0)
            layout->currentIndex = int(index);
    }
    return true;
}

bool FakeSpaceSystem::moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId)
{
    if (!canMoveWindows)
        return false;
    QStringList numbers;
    for (quint32 n : windowNumbers)
        numbers << QString::number(n);
    m_log << QStringLiteral("moveWindows:%1:%2").arg(numbers.join(QLatin1Char(','))).arg(spaceId);
    return true;
}

QList<ServerWindow> FakeSpaceSystem::windowList(bool onScreenOnly)
{
    return onScreenOnly ? onScreenWindows : allWindows;
}

bool FakeSpaceSystem::postControlKey(int keyCode)
{
    m_log << QStringLiteral("controlKey:%1").arg(keyCode);
    return true;
}

void FakeSpaceSystem::setSpaces(int count, int currentIndex)
{
    SpaceLayout l;
    for (int i = 0; i < count; ++i)
        l.spaceIds.append(quint64(101 + i));
    l.currentIndex = currentIndex;
    layout = l;
}

// --- FakeKeySource ----------------------------------------------------------

bool FakeKeySource::install(Callback callback)
{
    ++installAttempts;
    if (m_callback)
        return true;
    if (refuseInstall)
        return false;
    m_callback = std::move(callback);
    return true;
}

void FakeKeySource::enable()
{
    ++enableCalls;
    enabled = true;
}

void FakeKeySource::recover()
{
    ++recoverCalls;
    if (!enabled)
        enable();
}

KeyDecision FakeKeySource::send(const KeyEvent& event)
{
    return m_callback ? m_callback(event) : KeyDecision::Pass;
}

// --- services ---------------------------------------------------------------

bool FakeTrustCheck::requestTrust()
{
    ++requestCount;
    return trusted;
}

bool FakeTrustCheck::openTrustSettings()
{
    ++openSettingsCount;
    return true;
}

bool FakeLoginItem::registerItem(QString* error)
{
    ++registerCalls;
    if (!failWith.isEmpty()) {
        if (error)
            *error = failWith;
        return false;
    }
    state = Status::Enabled;
    return true;
}

bool FakeLoginItem::unregisterItem(QString* error)
{
    ++unregisterCalls;
    if (!failWith.isEmpty()) {
        if (error)
            *error = failWith;
        return false;
    }
    state = Status::NotRegistered;
    return true;
}

// --- FakePlatform -----------------------------------------------------------

FakePlatform::FakePlatform()
{
    auto c = std::make_unique<FakeClock>();
    auto ws = std::make_unique<FakeWorkspace>(log);
    auto win = std::make_unique<FakeWindowSystem>(log);
    auto sp = std::make_unique<FakeSpaceSystem>(log);
    auto k = std::make_unique<FakeKeySource>();
    auto inst = std::make_unique<FakeInstalledAppSource>();
    auto t = std::make_unique<FakeTrustCheck>();
    auto li = std::make_unique<FakeLoginItem>();
    auto up = std::make_unique<FakeUpdater>();
    auto sh = std::make_unique<FakeShellIntegration>();
    clock = c.get();
    workspace = ws.get();
    windows = win.get();
    spaces = sp.get();
    keys = k.get();
    installedApps = inst.get();
    trust = t.get();
    loginItem = li.get();
    updater = up.get();
    shell = sh.get();
    m_platform.clock = std::move(c);
    m_platform.workspace = std::move(ws);
    m_platform.windows = std::move(win);
    m_platform.spaces = std::move(sp);
    m_platform.keys = std::move(k);
    m_platform.installedApps = std::move(inst);
    m_platform.trust = std::move(t);
    m_platform.loginItem = std::move(li);
    m_platform.updater = std::move(up);
    m_platform.shell = std::move(sh);
}

} // namespace velkor::fake
