// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SpaceSystem.h"

#include <QString>
#include <QVariant>
#include <limits>

namespace velkor {

// The names under which the window server's window-information entries hold
// a window's number, its owner's process id and its layer.
struct WindowInfoKeys
{
    QString number;
    QString ownerPid;
    QString layer;
};

// Given to a window whose layer cannot be read, so it never passes for a
// normal (layer 0) window.
inline constexpr int UnknownWindowLayer = std::numeric_limits<int>::min();

// The window server's window list, once converted to Qt types (a list of
// maps), front to back as listed. Entries without a readable window number
// or owner are left out.
QList<ServerWindow> readServerWindows(const QVariant& windowInfo, const WindowInfoKeys& keys);

} // namespace velkor
