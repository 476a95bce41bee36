// SPDX-License-Identifier: MIT
#include "platform/x11/XdgAutostartLoginItem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>
#include <algorithm>

namespace velkor::x11 {

namespace {

const QString EntryName = QStringLiteral("velkor.desktop");

// installedExecutable when running is that file, else running itself (as from
// a build tree). The process knows itself by the path the links led to; the
// installed path is the one the user and the package know.
QString executableToStart(const QString& running, const QString& installedExecutable)
{
    const QString installed = QFileInfo(installedExecutable).canonicalFilePath();
    if (!installed.isEmpty() && QFileInfo(running).canonicalFilePath() == installed)
        return installedExecutable;
    return running;
}

} // namespace

XdgAutostartLoginItem::XdgAutostartLoginItem(QString runningExecutable, QString configHome,
                                             QString installedExecutable)
    : m_executable(executableToStart(runningExecutable, installedExecutable)),
      m_configHome(configHome.isEmpty() ? defaultConfigHome() : std::move(configHome))
{}

QString XdgAutostartLoginItem::defaultInstalledExecutable()
{
    return QStringLiteral(VELKOR_INSTALLED_EXECUTABLE);
}

QString XdgAutostartLoginItem::defaultConfigHome()
{
    const QString xdg = qEnvironmentVariable("XDG_CONFIG_HOME");
    // The base directory spec ignores relative values.
    if (!xdg.isEmpty() && QDir::isAbsolutePath(xdg))
        return xdg;
    return QDir::homePath() + QStringLiteral("/.config");
}

QString XdgAutostartLoginItem::entryPath() const
{
    return m_configHome + QStringLiteral("/autostart/") + EntryName;
}

QString XdgAutostartLoginItem::execLine(const QString& path)
{
    // Reserved characters force quoting; inside quotes ", `, $ and \ are
    // escaped with a backslash, and % is doubled everywhere (field codes).
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    QString escaped = path;
    escaped.replace(QLatin1Char('%'), QStringLiteral("%%"));
    const bool quote =
        std::any_of(escaped.cbegin(), escaped.cend(), [](QChar c) { return reserved.contains(c); });
    if (!quote)
        return escaped;
    QString quoted;
    for (const QChar c : std::as_const(escaped)) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    // The key file format unescapes backslashes once more when reading.
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

LoginItem::Status XdgAutostartLoginItem::status()
{
    const QString path = entryPath();
    if (!QFileInfo::exists(path))
        return Status::NotRegistered;
    // A session honours Hidden=true and X-GNOME-Autostart-enabled=false as
    // "do not start"; the user may have set them in their session settings.
    QSettings entry(path, QSettings::IniFormat);
    entry.beginGroup(QStringLiteral("Desktop Entry"));
    if (entry.value(QStringLiteral("Hidden")).toString() == QLatin1String("true") ||
        entry.value(QStringLiteral("X-GNOME-Autostart-enabled")).toString() ==
            QLatin1String("false"))
        return Status::NotRegistered;
    return Status::Enabled;
}

bool XdgAutostartLoginItem::registerItem(QString* error)
{
    const QString path = entryPath();
    if (!QDir().mkpath(QFileInfo(path).path())) {
        if (error)
            *error = QStringLiteral("cannot create %1").arg(QFileInfo(path).path());
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Velkor\n"
                                         "Comment=Keyboard-driven app and window switcher\n"
                                         "Exec=%1\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(execLine(m_executable));
    file.write(entry.toUtf8());
    if (!file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

bool XdgAutostartLoginItem::unregisterItem(QString* error)
{
    QFile file(entryPath());
    if (!file.exists() || file.remove())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}

} // namespace velkor::x11
