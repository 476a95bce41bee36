// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <functional>

namespace velkor {

class PermissionsManager;

// What choosing a status-menu entry does.
enum class StatusMenuAction
{
    none,
    openPermissions,
    openSettings,
    checkForUpdates,
    quit
};

// One line of the status menu; a separator has no title and no action.
struct StatusMenuEntry
{
    bool separator = false;
    QString title;
    bool enabled = false;
    StatusMenuAction action = StatusMenuAction::none;

    friend bool operator==(const StatusMenuEntry&, const StatusMenuEntry&) = default;
};

// Where the status menu's choices go. An unset callback makes its entry do
// nothing.
struct StatusMenuCallbacks
{
    std::function<void()> openSettings;
    std::function<void()> openPermissions;
    std::function<void()> checkForUpdates;
    std::function<void()> quit;
};

// The contents of the status menu, rebuilt each time it opens so its first
// line shows the current permission state. The tray widget draws the entries
// and reports choices back through trigger().
class StatusMenuModel
{
public:
    // Shows this build's version.
    explicit StatusMenuModel(PermissionsManager& permissions);

    // Asks for the trust state again and returns the entries, in menu order.
    QList<StatusMenuEntry> rebuild();

    // The entries for the trust state last read.
    QList<StatusMenuEntry> entries() const;

    void trigger(StatusMenuAction action) const;

    // Whether this build can check for updates; the entry is disabled if not.
    void setUpdatesAvailable(bool available) { m_updatesAvailable = available; }

    void setVersion(const QString& version) { m_version = version; }

    // "Velkor <version>", with a fallback version when there is none.
    static QString versionTitle(const QString& version);

    StatusMenuCallbacks callbacks;

private:
    PermissionsManager& m_permissions;
    QString m_version;
    bool m_updatesAvailable = true;
};

} // namespace velkor
