// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <optional>

namespace velkor {

using Pid = qint32;

// One running application as the platform reports it, before any admission
// rule is applied.
struct RunningApp
{
    Pid pid = 0;
    std::optional<QString> bundleId;   // macOS bundle id; X11: desktop id or WM_CLASS class
    std::optional<QString> name;       // localised display name
    std::optional<QString> bundlePath; // .app bundle or .desktop file
    bool regular = true;               // an ordinary app that owns normal windows

    friend bool operator==(const RunningApp&, const RunningApp&) = default;
};

// Running applications, the frontmost one, and what can be done to an
// application as a whole. Notifications arrive on the main thread.
class Workspace : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~Workspace() override = default;

    // Every running application, in the platform's own order.
    virtual QList<RunningApp> runningApplications() const = 0;

    // The process id of the frontmost application, absent when there is none.
    virtual std::optional<Pid> frontmostPid() const = 0;

    // This program's own bundle identifier, absent when it has none.
    virtual std::optional<QString> ownBundleId() const = 0;

    // Whether a process with this id is a running application.
    virtual bool isRunning(Pid pid) const = 0;

    virtual bool isHidden(Pid pid) const = 0;
    virtual void unhide(Pid pid) = 0;
    virtual void hide(Pid pid) = 0;
    virtual void terminate(Pid pid) = 0;

    // Makes the application the active one (no "all windows" flag).
    virtual void activate(Pid pid) = 0;

    // Launches (or activates) the application at bundlePath; fire and forget.
    virtual void openApplication(const QString& bundlePath) = 0;

signals:
    void applicationLaunched();
    void applicationTerminated();
    void applicationActivated();
};

} // namespace velkor
