// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopEntry.h"

#include "platform/x11/XdgApplicationCheck.h"

namespace velkor::x11 {

KeyFile parseDesktopFile(const QByteArray& contents)
{
    KeyFile file(g_key_file_new());
    if (!g_key_file_load_from_data(file.get(), contents.constData(), gsize(contents.size()),
                                   G_KEY_FILE_NONE, nullptr))
        return nullptr;
    return file;
}

std::optional<DesktopEntry> applicationEntry(GKeyFile* file, const QString& id,
                                             const QByteArray& path, XdgApplicationCheck& check)
{
    if (!file || !check.accepts(file))
        return std::nullopt;
    DesktopEntry entry;
    entry.id = id;
    entry.path = QString::fromUtf8(path);
    OwnedString name(g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP,
                                                  G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
    entry.name = name && *name ? QString::fromUtf8(name.get()) : id;
    return entry;
}

} // namespace velkor::x11
