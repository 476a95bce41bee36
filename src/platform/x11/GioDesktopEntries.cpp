// SPDX-License-Identifier: MIT
#include "platform/x11/GioDesktopEntries.h"

#include "platform/x11/Gio.h"

#include <QFileInfo>
#include <memory>

namespace velkor::x11 {

namespace {

struct GObjectUnref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using DesktopInfo = std::unique_ptr<GDesktopAppInfo, GObjectUnref>;

std::optional<DesktopEntry> entryOf(GDesktopAppInfo* info)
{
    if (!info)
        return std::nullopt;
    DesktopEntry entry;
    const char* id = g_app_info_get_id(G_APP_INFO(info));
    const char* file = g_desktop_app_info_get_filename(info);
    entry.path = QString::fromUtf8(file ? file : "");
    entry.id = GioDesktopEntries::idFromFileName(id ? QString::fromUtf8(id)
                                                    : QFileInfo(entry.path).fileName());
    entry.name = QString::fromUtf8(g_app_info_get_name(G_APP_INFO(info)));
    return entry;
}

} // namespace

QString GioDesktopEntries::idFromFileName(const QString& desktopFileId)
{
    QString id = desktopFileId;
    if (id.endsWith(QLatin1String(".desktop")))
        id.chop(8);
    return id;
}

std::optional<DesktopEntry> GioDesktopEntries::byId(const QString& id)
{
    if (id.isEmpty())
        return std::nullopt;
    const QByteArray fileId = (id + QLatin1String(".desktop")).toUtf8();
    DesktopInfo info(g_desktop_app_info_new(fileId.constData()));
    return entryOf(info.get());
}

std::optional<DesktopEntry> GioDesktopEntries::byFile(const QString& path)
{
    DesktopInfo info(g_desktop_app_info_new_from_filename(path.toUtf8().constData()));
    return entryOf(info.get());
}

std::optional<DesktopEntry> GioDesktopEntries::byStartupWmClass(const QString& wmClass)
{
    if (!m_wmClassIndex) {
        m_wmClassIndex.emplace();
        GList* all = g_app_info_get_all();
        for (GList* it = all; it; it = it->next) {
            auto* info = G_DESKTOP_APP_INFO(it->data);
            if (const char* cls = g_desktop_app_info_get_startup_wm_class(info)) {
                const char* id = g_app_info_get_id(G_APP_INFO(info));
                if (id && !m_wmClassIndex->contains(QString::fromUtf8(cls)))
                    m_wmClassIndex->insert(QString::fromUtf8(cls),
                                           idFromFileName(QString::fromUtf8(id)));
            }
        }
        g_list_free_full(all, g_object_unref);
    }
    auto it = m_wmClassIndex->constFind(wmClass);
    return it == m_wmClassIndex->cend() ? std::nullopt : byId(*it);
}

std::optional<DesktopEntry> GioDesktopEntries::match(const std::optional<QString>& gtkApplicationId,
                                                     const QString& className,
                                                     const QString& instanceName)
{
    const QString key =
        gtkApplicationId.value_or(QString()) + QChar(0) + className + QChar(0) + instanceName;
    auto known = m_answers.constFind(key);
    if (known != m_answers.cend())
        return *known;

    std::optional<DesktopEntry> found;
    if (gtkApplicationId)
        found = byId(*gtkApplicationId);
    if (!found && !className.isEmpty())
        found = byStartupWmClass(className);
    if (!found && !instanceName.isEmpty())
        found = byStartupWmClass(instanceName);
    for (const QString& candidate :
         {className, className.toLower(), instanceName, instanceName.toLower()}) {
        if (found)
            break;
        found = byId(candidate);
    }
    m_answers.insert(key, found);
    return found;
}

} // namespace velkor::x11
