// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopFiles.h"

#include <QLoggingCategory>
#include <QSet>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

Q_DECLARE_LOGGING_CATEGORY(lcDesktopEntries)

namespace velkor::x11 {

namespace {

const QLatin1String Suffix(".desktop");

// Directory entries looked at per applications folder: far more than any
// real one holds, few enough that a link to "/" ends soon.
constexpr qsizetype MaxEntriesPerFolder = 100000;

struct Stat
{
    struct stat st;
    bool ok;
};

Stat statOf(const char* path)
{
    Stat s{};
    s.ok = ::stat(path, &s.st) == 0; // follows links; a loop of them fails with ELOOP
    return s;
}

// One walk of the applications folders, with what it has seen so far.
class Walk
{
public:
    explicit Walk(const std::function<bool()>& cancelled) : m_cancelled(cancelled) {}

    void folder(const QByteArray& path)
    {
        m_entriesLeft = MaxEntriesPerFolder;
        walk(path, QString(), 0);
        if (m_entriesLeft < 0)
            qCWarning(lcDesktopEntries).noquote()
                << "stopped reading" << QString::fromLocal8Bit(path) << "after"
                << MaxEntriesPerFolder << "entries";
    }

    bool cancelled() const { return m_cancelled && m_cancelled(); }
    QList<XdgDesktopFile> take() { return std::move(m_found); }

private:
    // Sub-folders name their entries with dashes: vendor/tool.desktop is
    // "vendor-tool".
    void walk(const QByteArray& dir, const QString& prefix, int depth)
    {
        // O_NONBLOCK: whatever dir has become since it was looked at, opening
        // it returns at once.
        const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            return;
        struct stat self;
        if (::fstat(fd, &self) != 0 || !enter(self)) {
            ::close(fd);
            return;
        }
        DIR* handle = ::fdopendir(fd);
        if (!handle) {
            ::close(fd);
            return;
        }
        while (const dirent* e = ::readdir(handle)) {
            if (--m_entriesLeft < 0 || cancelled())
                break;
            const QByteArray name(e->d_name);
            if (name == "." || name == "..")
                continue;
            const QString fileName = QString::fromUtf8(name);
            const bool entry = fileName.endsWith(Suffix);
            // Only what could be a sub-folder or an entry is looked at.
            const bool folder =
                depth < XdgDesktopFiles::MaxDepth &&
                (e->d_type == DT_DIR || e->d_type == DT_LNK || e->d_type == DT_UNKNOWN);
            if (!entry && !folder)
                continue;
            const QByteArray path = dir + '/' + name;
            // A regular file needs no look of its own: reading it checks
            // again what it is and how large, and a folder of thousands of
            // entries is walked without a stat for each.
            if (entry && e->d_type == DT_REG) {
                found(prefix + fileName, path);
                continue;
            }
            const Stat s = statOf(path.constData());
            if (!s.ok)
                continue;
            if (S_ISDIR(s.st.st_mode)) {
                if (depth < XdgDesktopFiles::MaxDepth)
                    walk(path, prefix + fileName + QLatin1Char('-'), depth + 1);
                continue;
            }
            // FIFOs, sockets and devices are never opened.
            if (!entry || !S_ISREG(s.st.st_mode) || s.st.st_size > XdgDesktopFiles::MaxFileSize)
                continue;
            found(prefix + fileName, path);
        }
        ::closedir(handle);
    }

    // The first entry of an id counts; later folders' ones are shadowed.
    void found(const QString& relativeName, const QByteArray& path)
    {
        const QString id = XdgDesktopFiles::idFromFileName(relativeName);
        if (m_ids.contains(id))
            return;
        m_ids.insert(id);
        m_found.append({id, path});
    }

    // Each folder once: links that lead back up, or to a folder walked
    // already, lead nowhere new.
    bool enter(const struct stat& folder)
    {
        const std::pair<quint64, quint64> key(folder.st_dev, folder.st_ino);
        if (m_folders.contains(key))
            return false;
        m_folders.insert(key);
        return true;
    }

    const std::function<bool()>& m_cancelled;
    QSet<std::pair<quint64, quint64>> m_folders;
    QSet<QString> m_ids;
    QList<XdgDesktopFile> m_found;
    qsizetype m_entriesLeft = 0;
};

bool isFolder(const QByteArray& path)
{
    const Stat s = statOf(path.constData());
    return s.ok && S_ISDIR(s.st.st_mode);
}

bool isFile(const QByteArray& path)
{
    const Stat s = statOf(path.constData());
    return s.ok && S_ISREG(s.st.st_mode);
}

// The rest of an id below dir: either a file of that name, or, at any dash,
// a sub-folder named by what comes before it.
std::optional<QByteArray> probe(const QByteArray& dir, const QByteArray& rest, int depth)
{
    const QByteArray file = dir + '/' + rest + ".desktop";
    if (isFile(file))
        return file;
    if (depth >= XdgDesktopFiles::MaxDepth)
        return std::nullopt;
    for (qsizetype dash = rest.indexOf('-'); dash > 0; dash = rest.indexOf('-', dash + 1)) {
        const QByteArray part = rest.left(dash);
        if (part.startsWith('.'))
            continue; // never "..", which would climb out of the folder
        const QByteArray sub = dir + '/' + part;
        if (!isFolder(sub))
            continue;
        if (auto found = probe(sub, rest.mid(dash + 1), depth + 1))
            return found;
    }
    return std::nullopt;
}

} // namespace

QList<QByteArray> XdgDesktopFiles::folders()
{
    QList<QByteArray> out{QByteArray(g_get_user_data_dir()) + "/applications"};
    for (const gchar* const* d = g_get_system_data_dirs(); *d; ++d) {
        const QByteArray apps = QByteArray(*d) + "/applications";
        if (!out.contains(apps))
            out.append(apps);
    }
    return out;
}

QList<XdgDesktopFile> XdgDesktopFiles::all(const std::function<bool()>& cancelled)
{
    Walk walk(cancelled);
    for (const QByteArray& folder : folders()) {
        if (walk.cancelled())
            break;
        walk.folder(folder);
    }
    return walk.take();
}

std::optional<QByteArray> XdgDesktopFiles::find(const QString& id)
{
    // Ids come from other programs' window properties: nothing that could
    // step out of the folders.
    if (id.isEmpty() || id.startsWith(QLatin1Char('.')) || id.contains(QLatin1Char('/')) ||
        id.contains(QChar(0)))
        return std::nullopt;
    const QByteArray name = id.toUtf8();
    for (const QByteArray& folder : folders())
        if (auto found = probe(folder, name, 0))
            return found;
    return std::nullopt;
}

std::optional<QByteArray> XdgDesktopFiles::read(const QByteArray& path)
{
    // The file was a regular one when it was found; O_NONBLOCK keeps a FIFO
    // put in its place since from holding the open, and fstat tells.
    const int fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return std::nullopt;
    std::optional<QByteArray> contents;
    struct stat st;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= MaxFileSize) {
        // Read to the end, which a file still being written may have moved.
        QByteArray data;
        data.reserve(qsizetype(st.st_size));
        char buffer[16384];
        bool whole = true;
        for (;;) {
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            data.append(buffer, n);
            if (data.size() > MaxFileSize) {
                whole = false;
                break;
            }
        }
        if (whole)
            contents = std::move(data);
    }
    ::close(fd);
    return contents;
}

QString XdgDesktopFiles::idFromFileName(const QString& fileName)
{
    QString id = fileName;
    if (id.endsWith(Suffix))
        id.chop(Suffix.size());
    return id;
}

} // namespace velkor::x11
