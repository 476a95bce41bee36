// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/GLibOwned.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace velkor::x11 {

class XdgApplicationCheck;

// One XDG desktop entry as the switcher names an app.
struct DesktopEntry
{
    QString id;   // desktop id without ".desktop", e.g. org.gnome.Calculator
    QString name; // localised Name
    QString path; // the .desktop file

    bool operator==(const DesktopEntry&) const = default;
};

// GLib's key-file reading of a desktop file's contents; null when the bytes
// are no key file.
KeyFile parseDesktopFile(const QByteArray& contents);

// The entry, when it names an application GIO would load. NoDisplay is no
// reason to refuse: a running app whose entry stays out of menus is still
// that app.
std::optional<DesktopEntry> applicationEntry(GKeyFile* file, const QString& id,
                                             const QByteArray& path, XdgApplicationCheck& check);

} // namespace velkor::x11
