// SPDX-License-Identifier: MIT
#include "platform/x11/GioInstalledAppSource.h"

#include "platform/x11/XdgDesktopFiles.h"

#include <QHash>
#include <glib.h>
#include <memory>
#include <thread>
#include <vector>

namespace velkor::x11 {

namespace {

struct GFree
{
    void operator()(gpointer p) const { g_free(p); }
};
using OwnedString = std::unique_ptr<gchar, GFree>;

struct KeyFileFree
{
    void operator()(GKeyFile* k) const { g_key_file_free(k); }
};

struct StrvFree
{
    void operator()(gchar** v) const { g_strfreev(v); }
};
using OwnedStrv = std::unique_ptr<gchar*, StrvFree>;

constexpr const char* Group = G_KEY_FILE_DESKTOP_GROUP;

// The desktops this session names, as XDG_CURRENT_DESKTOP lists them.
QList<QByteArray> currentDesktops()
{
    QList<QByteArray> out;
    for (const QByteArray& d : qgetenv("XDG_CURRENT_DESKTOP").split(':'))
        if (!d.isEmpty())
            out.append(d);
    return out;
}

bool listNames(GKeyFile* file, const char* key, const QByteArray& desktop)
{
    OwnedStrv list(g_key_file_get_string_list(file, Group, key, nullptr, nullptr));
    for (gchar** it = list.get(); it && *it; ++it)
        if (desktop == *it)
            return true;
    return false;
}

// Reads the handful of keys a menu needs, with GIO's rules for what it
// offers: an application whose programs exist, not Hidden, not NoDisplay,
// and shown in this desktop. GIO's own per-file objects parse far more
// (icons, actions, every localised key) and cost several times as much.
class EntryReader
{
public:
    std::optional<InstalledApp> read(const XdgDesktopFile& found)
    {
        std::unique_ptr<GKeyFile, KeyFileFree> file(g_key_file_new());
        if (!g_key_file_load_from_file(file.get(), found.path.constData(), G_KEY_FILE_NONE,
                                       nullptr))
            return std::nullopt;
        GKeyFile* k = file.get();
        OwnedString type(g_key_file_get_string(k, Group, G_KEY_FILE_DESKTOP_KEY_TYPE, nullptr));
        if (!type || qstrcmp(type.get(), G_KEY_FILE_DESKTOP_TYPE_APPLICATION) != 0)
            return std::nullopt;
        if (!programExists(k, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, false) ||
            !programExists(k, G_KEY_FILE_DESKTOP_KEY_EXEC, true))
            return std::nullopt;
        if (flag(k, G_KEY_FILE_DESKTOP_KEY_HIDDEN) || flag(k, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) ||
            !shownHere(k))
            return std::nullopt;
        InstalledApp app;
        app.path = QString::fromUtf8(found.path);
        app.bundleId = found.id;
        OwnedString name(
            g_key_file_get_locale_string(k, Group, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
        if (name && *name)
            app.name = QString::fromUtf8(name.get());
        return app;
    }

private:
    static bool flag(GKeyFile* k, const char* key)
    {
        return g_key_file_get_boolean(k, Group, key, nullptr);
    }

    bool shownHere(GKeyFile* k) const
    {
        for (const QByteArray& desktop : m_desktops) {
            if (listNames(k, G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN, desktop))
                return true;
            if (listNames(k, G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN, desktop))
                return false;
        }
        return !g_key_file_has_key(k, Group, G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN, nullptr);
    }

    // An empty or missing key passes; Exec names its program first.
    bool programExists(GKeyFile* k, const char* key, bool commandLine)
    {
        OwnedString value(g_key_file_get_string(k, Group, key, nullptr));
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
        // Many entries share their program; PATH is searched once for each.
        auto known = m_programs.constFind(program);
        if (known != m_programs.cend())
            return *known;
        const bool exists = OwnedString(g_find_program_in_path(program.constData())) != nullptr;
        m_programs.insert(program, exists);
        return exists;
    }

    const QList<QByteArray> m_desktops = currentDesktops();
    QHash<QByteArray, bool> m_programs;
};

// Reads found[begin, end) into out, in order.
void readRange(const QList<XdgDesktopFile>& found, qsizetype begin, qsizetype end,
               std::vector<std::optional<InstalledApp>>& out)
{
    EntryReader reader;
    for (qsizetype i = begin; i < end; ++i)
        out[size_t(i)] = reader.read(found[i]);
}

} // namespace

QList<InstalledApp> GioInstalledAppSource::scan() const
{
    const QList<XdgDesktopFile> found = XdgDesktopFiles::all();
    std::vector<std::optional<InstalledApp>> read(size_t(found.size()));
    // Parsing is most of the work; a second thread takes half of it.
    const qsizetype half = found.size() / 2;
    std::thread second(readRange, std::cref(found), half, found.size(), std::ref(read));
    readRange(found, 0, half, read);
    second.join();
    QList<InstalledApp> apps;
    apps.reserve(found.size());
    for (std::optional<InstalledApp>& app : read)
        if (app)
            apps.append(std::move(*app));
    return apps;
}

} // namespace velkor::x11
