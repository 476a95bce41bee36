// SPDX-License-Identifier: MIT
#include "app/StatusMenuModel.h"

#include "app/PermissionsManager.h"

namespace velkor {

namespace {

StatusMenuEntry item(const QString& title, StatusMenuAction action, bool enabled = true)
{
    return StatusMenuEntry{false, title, enabled, action};
}

StatusMenuEntry label(const QString& title)
{
    return StatusMenuEntry{false, title, false, StatusMenuAction::none};
}

StatusMenuEntry separator()
{
    return StatusMenuEntry{true, QString(), false, StatusMenuAction::none};
}

} // namespace

StatusMenuModel::StatusMenuModel(PermissionsManager& permissions, KeyNaming naming)
    : m_permissions(permissions), m_naming(naming), m_version(QStringLiteral(VELKOR_VERSION))
{}

QList<StatusMenuEntry> StatusMenuModel::rebuild()
{
    m_permissions.refresh();
    return entries();
}

QString StatusMenuModel::toolTip() const
{
    return describeKeyAccess(m_permissions.keyAccess(), m_naming).toolTip;
}

QList<StatusMenuEntry> StatusMenuModel::entries() const
{
    const KeyAccess access = m_permissions.keyAccess();
    const QString state = describeKeyAccess(access, m_naming).stateLine;
    StatusMenuEntry stateEntry = label(state);
    if (access == KeyAccess::notTrusted || access == KeyAccess::waylandSession)
        stateEntry = item(state, StatusMenuAction::openPermissions);
    else if (access != KeyAccess::active)
        // Another activation key is chosen in the settings window.
        stateEntry = item(state, StatusMenuAction::openSettings);
    return {
        stateEntry,
        separator(),
        item(QStringLiteral("Settings…"), StatusMenuAction::openSettings),
        item(QStringLiteral("Check for Updates…"), StatusMenuAction::checkForUpdates,
             m_updatesAvailable),
        separator(),
        item(QStringLiteral("Quit Velkor"), StatusMenuAction::quit),
        separator(),
        label(versionTitle(m_version)),
    };
}

void StatusMenuModel::trigger(StatusMenuAction action) const
{
    const std::function<void()>* callback = nullptr;
    switch (action) {
    case StatusMenuAction::none:
        return;
    case StatusMenuAction::openPermissions:
        callback = &callbacks.openPermissions;
        break;
    case StatusMenuAction::openSettings:
        callback = &callbacks.openSettings;
        break;
    case StatusMenuAction::checkForUpdates:
        callback = &callbacks.checkForUpdates;
        break;
    case StatusMenuAction::quit:
        callback = &callbacks.quit;
        break;
    }
    if (callback && *callback)
        (*callback)();
}

QString StatusMenuModel::versionTitle(const QString& version)
{
    return QStringLiteral("Velkor ") + (version.isEmpty() ? QStringLiteral("0.1.0") : version);
}

} // namespace velkor
