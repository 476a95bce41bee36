// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopScan.h"

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

// What one desktop file contributes.
struct FileReading
{
    std::optional<InstalledApp> app;
    QString windowClass;
    std::optional<DesktopEntry> entry; // set with windowClass
};

// Reads the handful of keys the switcher needs. GIO's own per-file objects
// parse far more (icons, actions, every localised key) and cost several
// times as much.
class EntryReader
{
public:
    FileReading read(const XdgDesktopFile& found)
    {
        FileReading reading;
        const std::optional<QByteArray> contents = XdgDesktopFiles::read(found.path);
        if (!contents)
            return reading;
        KeyFile file = parseDesktopFile(*contents);
        GKeyFile* k = file.get();
        if (!k || !m_applications.accepts(k))
            return reading;
        OwnedString localName(
            g_key_file_get_locale_string(k, Group, G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
        const QString name =
            localName && *localName ? QString::fromUtf8(localName.get()) : QString();
        // Few entries name a window class; only they are indexed by it,
        // whether or not they are shown in menus.
        if (contents->contains("StartupWMClass")) {
            OwnedString wmClass(
                g_key_file_get_string(k, Group, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS, nullptr));
            if (wmClass && *wmClass) {
                reading.entry = DesktopEntry{found.id, name.isEmpty() ? found.id : name,
                                             QString::fromUtf8(found.path)};
                reading.windowClass = QString::fromUtf8(wmClass.get());
            }
        }
        if (g_key_file_get_boolean(k, Group, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY, nullptr) ||
            !shownHere(k))
            return reading;
        InstalledApp app;
        app.path = QString::fromUtf8(found.path);
        app.bundleId = found.id;
        if (!name.isEmpty())
            app.name = name;
        reading.app = std::move(app);
        return reading;
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

// Reads found[begin, end) into out, in order, until cancelled.
void readRange(const QList<XdgDesktopFile>& found, qsizetype begin, qsizetype end,
               const std::function<bool()>& cancelled, std::vector<FileReading>& out)
{
    EntryReader reader;
    for (qsizetype i = begin; i < end && !(cancelled && cancelled()); ++i)
        out[size_t(i)] = reader.read(found[i]);
}

} // namespace

XdgDesktopScan XdgDesktopScan::run(const std::function<bool()>& cancelled)
{
    const QList<XdgDesktopFile> found = XdgDesktopFiles::all(cancelled);
    std::vector<FileReading> readings(size_t(found.size()));
    // Parsing is most of the work; a second thread takes half of it.
    const qsizetype half = found.size() / 2;
    std::thread second(readRange, std::cref(found), half, found.size(), std::cref(cancelled),
                       std::ref(readings));
    readRange(found, 0, half, cancelled, readings);
    second.join();

    XdgDesktopScan scan;
    scan.apps.reserve(found.size());
    for (FileReading& reading : readings) {
        if (reading.app)
            scan.apps.append(std::move(*reading.app));
        if (reading.entry && !scan.windowClasses.contains(reading.windowClass))
            scan.windowClasses.insert(reading.windowClass, std::move(*reading.entry));
    }
    return scan;
}

} // namespace velkor::x11
