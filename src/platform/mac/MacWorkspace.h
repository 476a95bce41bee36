// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <memory>

namespace velkor {

// NSWorkspace and NSRunningApplication behind the seam. The launch,
// terminate and activate notifications are observed on the main queue for
// the object's whole life.
class MacWorkspace final : public Workspace
{
    Q_OBJECT
public:
    explicit MacWorkspace(QObject* parent = nullptr);
    ~MacWorkspace() override;

    QList<RunningApp> runningApplications() const override;
    std::optional<Pid> frontmostPid() const override;
    std::optional<QString> ownBundleId() const override;
    bool isRunning(Pid pid) const override;
    bool isHidden(Pid pid) const override;
    void unhide(Pid pid) override;
    void hide(Pid pid) override;
    void terminate(Pid pid) override;
    void activate(Pid pid) override;
    void openApplication(const QString& bundlePath) override;

private:
    // The notification centre's observer tokens; defined in the .mm.
    struct Observers;
    std::unique_ptr<Observers> m_observers;
};

} // namespace velkor
