// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"

namespace velkor {

// Backend pieces that report nothing and do nothing: the whole backend on a
// Qt platform without one, and the parts a backend does not offer yet.

// Not final: tools start from it and list a few apps of their own.
class NullWorkspace : public Workspace
{
public:
    using Workspace::Workspace;
    QList<RunningApp> runningApplications() const override { return {}; }
    std::optional<Pid> frontmostPid() const override { return std::nullopt; }
    std::optional<QString> ownBundleId() const override { return QStringLiteral("velkor"); }
    bool isRunning(Pid) const override { return false; }
    bool isHidden(Pid) const override { return false; }
    void unhide(Pid) override {}
    void hide(Pid) override {}
    void terminate(Pid) override {}
    void activate(Pid) override {}
    void openApplication(const QString&) override {}
};

class NullWindowSystem final : public WindowSystem
{
public:
    std::optional<QList<RawWindow>> windowsOf(Pid) override { return std::nullopt; }
    WindowHandle focusedWindowOf(Pid) override { return nullptr; }
    void raise(const WindowHandle&) override {}
    void setMinimized(const WindowHandle&, bool) override {}
    void close(const WindowHandle&) override {}
    void setFrontmost(Pid) override {}
    std::optional<QRectF> frameOf(const WindowHandle&) override { return std::nullopt; }
    void warpPointer(QPointF) override {}
};

class NullSpaceSystem final : public SpaceSystem
{
public:
    std::optional<SpaceLayout> mainDisplaySpaces() override { return std::nullopt; }
    bool setCurrentSpace(const QString&, quint64) override { return false; }
    bool moveWindows(const QList<quint32>&, quint64) override { return false; }
    QList<ServerWindow> windowList(bool) override { return {}; }
    bool postControlKey(int) override { return false; }
};

// Refuses to install: the key monitor then logs its failure line.
class NullKeySource final : public KeySource
{
public:
    bool install(Callback) override { return false; }
    bool isInstalled() const override { return false; }
    void watch(const KeyWatch&) override {}
    bool isEnabled() const override { return false; }
    void enable() override {}
};

class NullInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override { return {}; }
};

class NullTrustCheck final : public TrustCheck
{
public:
    explicit NullTrustCheck(QString explanation, KeyAccess refusal = KeyAccess::notTrusted)
        : m_explanation(std::move(explanation)), m_refusal(refusal)
    {}
    bool isTrusted() override { return false; }
    bool requestTrust() override { return false; }
    bool openTrustSettings() override { return false; }
    QString missingExplanation() const override { return m_explanation; }
    KeyAccess refusal() const override { return m_refusal; }

private:
    QString m_explanation;
    KeyAccess m_refusal;
};

class NullLoginItem final : public LoginItem
{
public:
    Status status() override { return Status::NotFound; }
    bool registerItem(QString* error) override;
    bool unregisterItem(QString* error) override;
};

class NullUpdater final : public Updater
{
public:
    bool isAvailable() const override { return false; }
    void checkForUpdates() override {}
};

class NullShellIntegration final : public ShellIntegration
{
public:
    void prepareOverlayWindow(QWindow*) override {}
    bool canBlurBehind() const override { return false; }
    void setBlurBehind(QWindow*, const QRectF&, qreal) override {}
    void setRegularPresence(bool) override {}
    QIcon iconForFile(const QString&) override { return QIcon(); }
    QIcon iconForProcess(Pid) override { return QIcon(); }
};

// A complete backend of null parts with a real clock; explanation says why
// nothing works.
std::unique_ptr<Platform> createNullPlatform(const QString& explanation);

} // namespace velkor
