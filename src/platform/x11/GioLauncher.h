// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QLibrary>
#include <QString>

namespace velkor::x11 {

// Starts the app of a desktop entry through GIO, which it loads on the first
// launch. Linked into the executable, GIO and what it pulls in (GObject,
// libmount, libblkid, SELinux) would stay mapped, over a megabyte resident,
// for the whole life of a switcher that launches an app now and then.
class GioLauncher final
{
public:
    // An empty string once the launch is under way, or what went wrong.
    QString launch(const QByteArray& desktopFile);

private:
    bool load();

    QLibrary m_gio{QStringLiteral("gio-2.0"), 0};
    bool m_loaded = false;
};

} // namespace velkor::x11
