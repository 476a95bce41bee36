// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopFiles.h"

#include <QSet>
#include <glib.h>

namespace velkor::x11 {

namespace {

const QLatin1String Suffix(".desktop");

bool isFolder(const QByteArray& path)
{
    return g_file_test(path.constData(), G_FILE_TEST_IS_DIR);
}

bool isFile(const QByteArray& path)
{
    return g_file_test(path.constData(), G_FILE_TEST_IS_REGULAR);
}

// Sub-folders name their entries with dashes: vendor/tool.desktop is
// "vendor-tool".
void walk(const QByteArray& dir, const QString& prefix, QSet<QString>& seen,
          QList<XdgDesktopFile>& out)
{
    GDir* handle = g_dir_open(dir.constData(), 0, nullptr);
    if (!handle)
        return;
    while (const char* name = g_dir_read_name(handle)) {
        const QByteArray path = dir + '/' + name;
        const QString fileName = QString::fromUtf8(name);
        if (isFolder(path)) {
            walk(path, prefix + fileName + QLatin1Char('-'), seen, out);
            continue;
        }
        if (!fileName.endsWith(Suffix))
            continue;
        const QString id = XdgDesktopFiles::idFromFileName(prefix + fileName);
        if (seen.contains(id))
            continue;
        seen.insert(id);
        out.append({id, path});
    }
    g_dir_close(handle);
}

// The rest of an id below dir: either a file of that name, or, at any dash,
// a sub-folder named by what comes before it.
std::optional<QByteArray> probe(const QByteArray& dir, const QByteArray& rest)
{
    const QByteArray file = dir + '/' + rest + ".desktop";
    if (isFile(file))
        return file;
    for (qsizetype dash = rest.indexOf('-'); dash > 0; dash = rest.indexOf('-', dash + 1)) {
        const QByteArray part = rest.left(dash);
        if (part.startsWith('.'))
            continue; // never "..", which would climb out of the folder
        const QByteArray sub = dir + '/' + part;
        if (!isFolder(sub))
            continue;
        if (auto found = probe(sub, rest.mid(dash + 1)))
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

QList<XdgDesktopFile> XdgDesktopFiles::all()
{
    QSet<QString> seen;
    QList<XdgDesktopFile> found;
    for (const QByteArray& folder : folders())
        walk(folder, QString(), seen, found);
    return found;
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
        if (auto found = probe(folder, name))
            return found;
    return std::nullopt;
}

QString XdgDesktopFiles::idFromFileName(const QString& fileName)
{
    QString id = fileName;
    if (id.endsWith(Suffix))
        id.chop(Suffix.size());
    return id;
}

} // namespace velkor::x11
