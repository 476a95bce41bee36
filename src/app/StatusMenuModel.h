// SPDX-License-Identifier: MIT
#pragma once

#include "settings/PlatformTraits.h"

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
// line shows the current state of keyboard access. The tray widget draws the
// entries and reports choices back through trigger().
class StatusMenuModel
{
public:
    // Shows this build's version; says it in the platform's words.
    StatusMenuModel(PermissionsManager& permissions, KeyNaming naming);

    // Asks for the trust state again and returns the entries, in menu order.
    QList<StatusMenuEntry> rebuild();

    // The entries for the state last read.
    QList<StatusMenuEntry> entries() const;

    // The tray icon's tool tip for the state last read.
    QString toolTip() const;

    PermissionsManager& permissions() const { return m_permissions; }

    void trigger(StatusMenuAction action) const;

    // Whether this build can check for updates; the entry is disabled if not.
    void setUpdatesAvailable(bool available) { m_updatesAvailable = available; }

    void setVersion(const QString& version) { m_version = version; }

    // "Velkor <version>", with a fallback version when there is none.
    static QString versionTitle(const QString& version);

    StatusMenuCallbacks callbacks;

private:
    PermissionsManager& m_permissions;
    KeyNaming m_naming;
    QString m_version;
    bool m_updatesAvailable = true;
};

} // namespace velkor
