// SPDX-License-Identifier: MIT
#include "platform/x11/X11Environment.h"

#include "platform/NativePlatform.h"

#include <QDir>
#include <QLibrary>
#include <QLibraryInfo>
#include <xcb/xcb.h>

namespace velkor {

namespace {

// Qt aborts when its platform plugin cannot start; every reason it would is
// looked for here first, so that the user gets one line instead of a core.
std::optional<QString> missingXcbPlugin()
{
    QStringList dirs =
        qEnvironmentVariable("QT_PLUGIN_PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts);
    dirs.append(QLibraryInfo::path(QLibraryInfo::PluginsPath));
    for (const QString& dir : dirs) {
        const QString path = dir + QLatin1String("/platforms/libqxcb.so");
        if (!QFile::exists(path))
            continue;
        QLibrary plugin(path);
        if (plugin.load()) {
            plugin.unload();
            return std::nullopt;
        }
        return QStringLiteral("Velkor cannot load Qt's X11 platform plugin: %1")
            .arg(plugin.errorString());
    }
    return QStringLiteral("Velkor needs Qt's X11 platform plugin (libqxcb.so, Debian package "
                          "qt6-qpa-plugins), and it is not installed.");
}

} // namespace

bool x11::isWaylandSession()
{
    return qEnvironmentVariable("XDG_SESSION_TYPE")
                   .compare(QLatin1String("wayland"), Qt::CaseInsensitive) == 0 ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

std::optional<QString> prepareNativeEnvironment()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        if (x11::isWaylandSession())
            return QStringLiteral("Velkor needs an X11 session; this Wayland session offers no "
                                  "X server (DISPLAY is not set).");
        return QStringLiteral("Velkor needs an X11 display, and DISPLAY is not set.");
    }
    xcb_connection_t* probe = xcb_connect(display.constData(), nullptr);
    const bool reachable = probe && !xcb_connection_has_error(probe);
    xcb_disconnect(probe);
    if (!reachable)
        return QStringLiteral("Velkor cannot open the X display \"%1\": is the X server running, "
                              "and may this user connect to it?")
            .arg(QString::fromLocal8Bit(display));
    if (auto missing = missingXcbPlugin())
        return missing;
    // The backend is X11 only: never let Qt pick Wayland under Xwayland.
    qputenv("QT_QPA_PLATFORM", "xcb");
    return std::nullopt;
}

} // namespace velkor
