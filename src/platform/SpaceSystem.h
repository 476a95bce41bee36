// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QList>
#include <QString>
#include <optional>

namespace velkor {

// The virtual desktops ("Spaces") of the main display as the platform
// reports them, before the layout rules are applied.
struct SpaceLayout
{
    QString displayId = QStringLiteral("Main");
    QList<quint64> spaceIds; // in the platform's order: Space n is spaceIds[n - 1]
    int currentIndex = 0;    // 0 when the current Space is not in the list

    friend bool operator==(const SpaceLayout&, const SpaceLayout&) = default;
};

// A window-server window as listed front to back.
struct ServerWindow
{
    quint32 number = 0;
    Pid ownerPid = 0;
    int layer = 0; // 0 for normal application windows
};

// Reading and changing virtual desktops. Calls answer false or absent when
// the platform has no such entry point.
class SpaceSystem
{
public:
    virtual ~SpaceSystem() = default;

    // The main display's layout; absent when it cannot be read.
    virtual std::optional<SpaceLayout> mainDisplaySpaces() = 0;

    // Makes the Space current; false when the platform cannot do it.
    virtual bool setCurrentSpace(const QString& displayId, quint64 spaceId) = 0;

    // Moves the windows to the Space; false when the platform cannot do it.
    virtual bool moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId) = 0;

    // Windows front to back. onScreenOnly: only those on the current Space
    // and not minimised; otherwise every window on every Space.
    virtual QList<ServerWindow> windowList(bool onScreenOnly) = 0;

    // Posts Control + the key with this (macOS virtual) key code, down then up.
    virtual bool postControlKey(int keyCode) = 0;
};

} // namespace velkor
