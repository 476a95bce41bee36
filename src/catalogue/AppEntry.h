// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

#include <QHash>
#include <QString>
#include <QUrl>
#include <optional>

namespace velkor {

// One application, running (pid present) or installed (pid absent).
// Identity: the bundle id; else "pid:<pid>" for a running app and the bundle
// path for an installed one.
struct AppEntry
{
    QString id;
    QString name;
    std::optional<QUrl> url; // the bundle (.app or .desktop file)
    std::optional<QString> bundleId;
    std::optional<Pid> pid;

    // The bundle's file path, absent without a URL.
    std::optional<QString> path() const
    {
        return url ? std::optional<QString>(url->toLocalFile()) : std::nullopt;
    }

    friend bool operator==(const AppEntry&, const AppEntry&) = default;
};

size_t qHash(const AppEntry& entry, size_t seed = 0);

} // namespace velkor
