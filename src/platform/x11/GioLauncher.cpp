// SPDX-License-Identifier: MIT
#include "platform/x11/GioLauncher.h"

#include "platform/x11/Gio.h"

#include <memory>

namespace velkor::x11 {

namespace {

// GIO's functions, typed by its own declarations; GObject's come from
// GIO's dependencies. One library for the whole process: a second launcher
// resolves the same addresses again.
struct GioFunctions
{
    decltype(&g_desktop_app_info_new_from_filename) appInfoFromFile = nullptr;
    decltype(&g_app_launch_context_new) newLaunchContext = nullptr;
    decltype(&g_app_info_launch) launch = nullptr;
    decltype(&g_object_unref) unref = nullptr;
};
GioFunctions gio;

template <typename Function> bool resolve(QLibrary& library, const char* name, Function& out)
{
    out = reinterpret_cast<Function>(library.resolve(name));
    return out != nullptr;
}

} // namespace

bool GioLauncher::load()
{
    if (!m_loaded)
        m_loaded = m_gio.load() &&
                   resolve(m_gio, "g_desktop_app_info_new_from_filename", gio.appInfoFromFile) &&
                   resolve(m_gio, "g_app_launch_context_new", gio.newLaunchContext) &&
                   resolve(m_gio, "g_app_info_launch", gio.launch) &&
                   resolve(m_gio, "g_object_unref", gio.unref);
    return m_loaded;
}

QString GioLauncher::launch(const QByteArray& desktopFile)
{
    if (!load())
        return QStringLiteral("GIO could not be loaded: %1").arg(m_gio.errorString());
    using Unref = decltype(gio.unref);
    std::unique_ptr<GDesktopAppInfo, Unref> info(gio.appInfoFromFile(desktopFile.constData()),
                                                 gio.unref);
    if (!info)
        return QStringLiteral("not a desktop entry GIO can start");
    std::unique_ptr<GAppLaunchContext, Unref> context(gio.newLaunchContext(), gio.unref);
    // What G_APP_INFO() does, without the type check that would link GIO.
    auto* app = reinterpret_cast<GAppInfo*>(info.get());
    GError* error = nullptr;
    if (gio.launch(app, nullptr, context.get(), &error))
        return {};
    const QString message =
        error ? QString::fromUtf8(error->message) : QStringLiteral("unknown error");
    g_clear_error(&error);
    return message;
}

} // namespace velkor::x11
