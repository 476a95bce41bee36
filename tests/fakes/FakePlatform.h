// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

#include <QHash>
#include <QMap>
#include <QPointer>
#include <QRectF>
#include <QSet>
#include <QStringList>
#include <map>

// Recording fakes of the platform seam. Every request that changes something
// is appended to one shared call log, in the order it was made, as a short
// line such as "activate:12" or "raise:12:0", so tests can assert on what
// was asked and in which order.
namespace velkor::fake {

using CallLog = QStringList;

// Time moves only when a test says so; due tasks run in time order.
class FakeClock final : public Clock
{
public:
    double now() const override { return m_now; }
    TaskId callAfter(double seconds, std::function<void()> task) override;
    TaskId callEvery(double seconds, std::function<void()> task) override;
    void cancel(TaskId id) override;

    // Moves time forward, running every task that falls due on the way.
    void advance(double seconds);
    int pendingCount() const { return int(m_tasks.size()); }

private:
    struct Task
    {
        double due;
        double interval; // 0 for one-shot tasks
        std::function<void()> run;
    };
    double m_now = 1000.0;
    TaskId m_nextId = 1;
    std::map<TaskId, Task> m_tasks;
};

class FakeWorkspace final : public Workspace
{
public:
    explicit FakeWorkspace(CallLog& log) : m_log(log) {}

    QList<RunningApp> runningApplications() const override { return apps; }
    std::optional<Pid> frontmostPid() const override { return frontmost; }
    std::optional<QString> ownBundleId() const override { return ownId; }
    bool isRunning(Pid pid) const override;
    bool isHidden(Pid pid) const override { return hidden.contains(pid); }
    void unhide(Pid pid) override;
    void hide(Pid pid) override;
    void terminate(Pid pid) override;
    void activate(Pid pid) override;
    void openApplication(const QString& bundlePath) override;

    // Convenience: a regular running app.
    RunningApp& addApp(Pid pid, const QString& name, const std::optional<QString>& bundleId,
                       const std::optional<QString>& bundlePath = std::nullopt);
    void removeApp(Pid pid);

    QList<RunningApp> apps;
    std::optional<Pid> frontmost;
    std::optional<QString> ownId = QStringLiteral("org.velkor.Velkor");
    QSet<Pid> hidden;

private:
    CallLog& m_log;
};

// A window of the fake window system. key names it in the log.
struct FakeWindow
{
    QString key;
    std::optional<QString> title;
    std::optional<bool> minimized = false;
    std::optional<QRectF> frame;
};

class FakeWindowElement final : public WindowElement
{
public:
    explicit FakeWindowElement(QString key) : key(std::move(key)) {}
    QString key;
};

class FakeWindowSystem final : public WindowSystem
{
public:
    explicit FakeWindowSystem(CallLog& log) : m_log(log) {}

    std::optional<QList<RawWindow>> windowsOf(Pid pid) override;
    WindowHandle focusedWindowOf(Pid pid) override;
    void raise(const WindowHandle& window) override;
    void setMinimized(const WindowHandle& window, bool minimized) override;
    void close(const WindowHandle& window) override;
    void setFrontmost(Pid pid) override;
    std::optional<QRectF> frameOf(const WindowHandle& window) override;
    void warpPointer(QPointF globalPoint) override;

    static QString keyOf(const WindowHandle& window);

    // pid → its windows, front first. A pid mapped to nullopt refuses to list.
    QHash<Pid, std::optional<QList<FakeWindow>>> windows;
    // pid → key of its focused window.
    QHash<Pid, QString> focused;
    std::optional<QPointF> pointer;

private:
    FakeWindow* find(const QString& key);
    CallLog& m_log;
};

class FakeSpaceSystem final : public SpaceSystem
{
public:
    explicit FakeSpaceSystem(CallLog& log) : m_log(log) {}

    std::optional<SpaceLayout> mainDisplaySpaces() override { return layout; }
    bool setCurrentSpace(const QString& displayId, quint64 spaceId) override;
    bool moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId) override;
    QList<ServerWindow> windowList(bool onScreenOnly) override;
    bool postControlKey(int keyCode) override;

    // Convenience: n Spaces with ids 101, 102, ..., the given one current.
    void setSpaces(int count, int currentIndex);

    std::optional<SpaceLayout> layout;
    bool canSetCurrent = true;
    bool canMoveWindows = true;
    QList<ServerWindow> onScreenWindows;
    QList<ServerWindow> allWindows;

private:
    CallLog& m_log;
};

class FakeKeySource final : public KeySource
{
public:
    bool install(Callback callback) override;
    bool isInstalled() const override { return bool(m_callback); }
    void watch(const KeyWatch& keys) override { watched = keys; }
    bool isEnabled() const override { return enabled; }
    void enable() override;
    KeyAccess access() const override { return keyAccess; }
    void recover() override;

    // Feeds an event as the platform would; Pass when nothing is installed.
    KeyDecision send(const KeyEvent& event);

    bool refuseInstall = false;
    bool enabled = true;
    KeyAccess keyAccess = KeyAccess::active; // once installed
    int installAttempts = 0;
    int enableCalls = 0;
    int recoverCalls = 0;
    KeyWatch watched;

private:
    Callback m_callback;
};

class FakeInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override { return apps; }
    QList<InstalledApp> apps;
};

class FakeTrustCheck final : public TrustCheck
{
public:
    bool isTrusted() override { return trusted; }
    bool requestTrust() override;
    bool openTrustSettings() override;
    QString missingExplanation() const override { return QStringLiteral("not trusted (fake)"); }
    KeyAccess refusal() const override { return refusedAs; }

    bool trusted = false;
    KeyAccess refusedAs = KeyAccess::notTrusted;
    int requestCount = 0;
    int openSettingsCount = 0;
};

class FakeLoginItem final : public LoginItem
{
public:
    Status status() override { return state; }
    bool registerItem(QString* error) override;
    bool unregisterItem(QString* error) override;

    Status state = Status::NotRegistered;
    QString failWith; // non-empty: register/unregister fail with this message
    int registerCalls = 0;
    int unregisterCalls = 0;
};

class FakeUpdater final : public Updater
{
public:
    bool isAvailable() const override { return available; }
    void checkForUpdates() override { ++checks; }
    bool available = true;
    int checks = 0;
};

class FakeShellIntegration final : public ShellIntegration
{
public:
    void prepareOverlayWindow(QWindow*) override { ++preparedWindows; }
    void orderOverlayFront(QWindow* window) override { orderedFront.append(window); }
    bool isCompositing() const override { return compositing; }
    void watchCompositing(QObject* receiver, std::function<void()> changed) override
    {
        compositingWatchers.append({receiver, std::move(changed)});
    }
    bool hasSystemTray() const override { return tray; }
    void watchSystemTray(QObject* receiver, std::function<void()> changed) override
    {
        trayWatchers.append({receiver, std::move(changed)});
    }
    bool canBlurBehind() const override { return blur; }
    void setBlurBehind(QWindow*, const QRectF& area, qreal) override { blurArea = area; }
    void setRegularPresence(bool regular) override { presence.append(regular); }
    QIcon iconForFile(const QString&) override { return {}; }
    QIcon iconForProcess(Pid) override { return {}; }
    void setReopenHandler(std::function<void()> handler) override { reopen = std::move(handler); }
    bool trayOpensMenuOnClick() const override { return trayOpensMenu; }

    // As a compositing manager starting or stopping would.
    void setCompositing(bool on)
    {
        compositing = on;
        for (const auto& [receiver, changed] : compositingWatchers)
            if (receiver)
                changed();
    }

    // As a tray host starting or stopping would.
    void setTray(bool on)
    {
        tray = on;
        for (const auto& [receiver, changed] : trayWatchers)
            if (receiver)
                changed();
    }

    bool compositing = true;
    QList<std::pair<QPointer<QObject>, std::function<void()>>> compositingWatchers;
    bool tray = true;
    QList<std::pair<QPointer<QObject>, std::function<void()>>> trayWatchers;
    bool blur = false;
    bool trayOpensMenu = false;
    int preparedWindows = 0;
    QList<QWindow*> orderedFront; // every orderOverlayFront call, in order
    std::function<void()> reopen; // the handler the program registered
    QRectF blurArea;
    QList<bool> presence; // every setRegularPresence call, in order
};

// A whole platform of fakes, with typed access to each part.
class FakePlatform
{
public:
    FakePlatform();

    Platform& platform() { return m_platform; }

    CallLog log;
    FakeClock* clock;
    FakeWorkspace* workspace;
    FakeWindowSystem* windows;
    FakeSpaceSystem* spaces;
    FakeKeySource* keys;
    FakeInstalledAppSource* installedApps;
    FakeTrustCheck* trust;
    FakeLoginItem* loginItem;
    FakeUpdater* updater;
    FakeShellIntegration* shell;

private:
    Platform m_platform;
};

} // namespace velkor::fake
