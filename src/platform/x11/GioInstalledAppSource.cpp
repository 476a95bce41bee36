// SPDX-License-Identifier: MIT
#include "platform/x11/GioInstalledAppSource.h"

#include "platform/x11/GLibOwned.h"
#include "platform/x11/XdgApplicationCheck.h"
#include "platform/x11/XdgDesktopFiles.h"

#include <thread>
#include <vector>

namespace velkor::x11 {

namespace {

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
        KeyFile file(g_key_file_new());
        if (!g_key_file_load_from_file(file.get(), found.path.constData(), G_KEY_FILE_NONE,
                                       nullptr))
            return std::nullopt;
        GKeyFile* k = file.get();
        if (!m_applications.accepts(k) ||
            g_key_file_get_boolean(k, Group, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY, nullptr) ||
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

    const QList<QByteArray> m_desktops = currentDesktops();
    XdgApplicationCheck m_applications;
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
