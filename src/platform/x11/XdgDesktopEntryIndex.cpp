// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopEntryIndex.h"

#include "platform/x11/GLibOwned.h"
#include "platform/x11/XdgApplicationCheck.h"
#include "platform/x11/XdgDesktopFiles.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcDesktopEntries, "velkor.x11.desktopentries", QtInfoMsg)

namespace velkor::x11 {

namespace {

constexpr const char* Group = G_KEY_FILE_DESKTOP_GROUP;

KeyFile parse(const char* data, gsize length)
{
    KeyFile file(g_key_file_new());
    if (!g_key_file_load_from_data(file.get(), data, length, G_KEY_FILE_NONE, nullptr))
        return nullptr;
    return file;
}

KeyFile load(const QByteArray& path)
{
    gchar* data = nullptr;
    gsize length = 0;
    if (!g_file_get_contents(path.constData(), &data, &length, nullptr))
        return nullptr;
    OwnedString owned(data);
    return parse(data, length);
}

OwnedString string(GKeyFile* k, const char* key)
{
    return OwnedString(g_key_file_get_string(k, Group, key, nullptr));
}

// Entries GIO refuses to load name no app either. NoDisplay is no reason to
// refuse: a running app whose entry stays out of menus is still that app.
std::optional<DesktopEntry> entryOf(GKeyFile* k, const QString& id, const QByteArray& path,
                                    XdgApplicationCheck& check)
{
    if (!k || !check.accepts(k))
        return std::nullopt;
    DesktopEntry entry;
    entry.id = id;
    entry.path = QString::fromUtf8(path);
    OwnedString name(
        g_key_file_get_locale_string(k, Group, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
    entry.name = name && *name ? QString::fromUtf8(name.get()) : id;
    return entry;
}

std::optional<DesktopEntry> byId(const QString& id)
{
    const std::optional<QByteArray> path = XdgDesktopFiles::find(id);
    if (!path)
        return std::nullopt;
    XdgApplicationCheck check;
    return entryOf(load(*path).get(), id, *path, check);
}

} // namespace

const QHash<QString, DesktopEntry>& XdgDesktopEntryIndex::wmClassIndex()
{
    if (m_wmClassIndex)
        return *m_wmClassIndex;
    QElapsedTimer clock;
    clock.start();
    m_wmClassIndex.emplace();
    const QList<XdgDesktopFile> files = XdgDesktopFiles::all();
    XdgApplicationCheck check;
    for (const XdgDesktopFile& file : files) {
        gchar* data = nullptr;
        gsize length = 0;
        if (!g_file_get_contents(file.path.constData(), &data, &length, nullptr))
            continue;
        OwnedString owned(data);
        // Few entries name a window class; parsing only those keeps the
        // first lookup, made on the main thread as windows appear, short.
        if (!QByteArrayView(data, qsizetype(length)).contains("StartupWMClass"))
            continue;
        KeyFile k = parse(data, length);
        if (!k)
            continue;
        OwnedString wmClass = string(k.get(), G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS);
        if (!wmClass || !*wmClass)
            continue;
        const QString key = QString::fromUtf8(wmClass.get());
        if (m_wmClassIndex->contains(key))
            continue;
        if (auto entry = entryOf(k.get(), file.id, file.path, check))
            m_wmClassIndex->insert(key, *entry);
    }
    qCDebug(lcDesktopEntries) << "window classes of" << files.size() << "desktop files read in"
                              << clock.nsecsElapsed() / 1000 << "µs:" << m_wmClassIndex->size();
    return *m_wmClassIndex;
}

std::optional<DesktopEntry> XdgDesktopEntryIndex::byStartupWmClass(const QString& wmClass)
{
    const QHash<QString, DesktopEntry>& index = wmClassIndex();
    auto it = index.constFind(wmClass);
    return it == index.cend() ? std::nullopt : std::optional<DesktopEntry>(*it);
}

std::optional<DesktopEntry>
XdgDesktopEntryIndex::match(const std::optional<QString>& gtkApplicationId,
                            const QString& className, const QString& instanceName)
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
