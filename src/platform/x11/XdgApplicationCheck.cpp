// SPDX-License-Identifier: MIT
#include "platform/x11/XdgApplicationCheck.h"

#include "platform/x11/GLibOwned.h"

namespace velkor::x11 {

bool XdgApplicationCheck::accepts(GKeyFile* entry)
{
    OwnedString type(g_key_file_get_string(entry, G_KEY_FILE_DESKTOP_GROUP,
                                           G_KEY_FILE_DESKTOP_KEY_TYPE, nullptr));
    if (!type || qstrcmp(type.get(), G_KEY_FILE_DESKTOP_TYPE_APPLICATION) != 0)
        return false;
    if (g_key_file_get_boolean(entry, G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_HIDDEN,
                               nullptr))
        return false;
    return programExists(entry, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, false) &&
           programExists(entry, G_KEY_FILE_DESKTOP_KEY_EXEC, true);
}

bool XdgApplicationCheck::programExists(GKeyFile* entry, const char* key, bool commandLine)
{
    OwnedString value(g_key_file_get_string(entry, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
    if (!value || !*value)
        return true;
    QByteArray program = value.get();
    if (commandLine) {
        gchar** argv = nullptr;
        if (!g_shell_parse_argv(value.get(), nullptr, &argv, nullptr))
            return false;
        OwnedStrv owned(argv);
        program = argv[0];
    }
    auto known = m_programs.constFind(program);
    if (known != m_programs.cend())
        return *known;
    const bool exists = OwnedString(g_find_program_in_path(program.constData())) != nullptr;
    m_programs.insert(program, exists);
    return exists;
}

} // namespace velkor::x11
