// SPDX-License-Identifier: MIT
#include "platform/x11/GioInstalledAppSource.h"

#include "platform/x11/Gio.h"
#include "platform/x11/GioDesktopEntries.h"

namespace velkor::x11 {

QList<InstalledApp> GioInstalledAppSource::scan() const
{
    QList<InstalledApp> apps;
    GList* all = g_app_info_get_all();
    for (GList* it = all; it; it = it->next) {
        auto* info = G_APP_INFO(it->data);
        if (!G_IS_DESKTOP_APP_INFO(info) || !g_app_info_should_show(info))
            continue;
        const char* file = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(info));
        if (!file)
            continue;
        InstalledApp app;
        app.path = QString::fromUtf8(file);
        if (const char* name = g_app_info_get_name(info); name && *name)
            app.name = QString::fromUtf8(name);
        if (const char* id = g_app_info_get_id(info))
            app.bundleId = GioDesktopEntries::idFromFileName(QString::fromUtf8(id));
        apps.append(app);
    }
    g_list_free_full(all, g_object_unref);
    return apps;
}

} // namespace velkor::x11
