// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <optional>

namespace velkor::x11 {

// One XDG desktop entry as the switcher names an app.
struct DesktopEntry
{
    QString id;   // desktop id without ".desktop", e.g. org.gnome.Calculator
    QString name; // localised Name
    QString path; // the .desktop file
};

// Finds the desktop entry of a running app's window through GIO. Answers
// are remembered per window class, so only the first window of a class pays
// for the lookup.
class GioDesktopEntries final
{
public:
    // In this order: _GTK_APPLICATION_ID, StartupWMClass, desktop id = the
    // WM_CLASS class or instance (as written, then lower-cased).
    std::optional<DesktopEntry> match(const std::optional<QString>& gtkApplicationId,
                                      const QString& className, const QString& instanceName);

    // The desktop id (".desktop" dropped) for a desktop file name.
    static QString idFromFileName(const QString& desktopFileId);

    static std::optional<DesktopEntry> byId(const QString& id);
    static std::optional<DesktopEntry> byFile(const QString& path);

private:
    std::optional<DesktopEntry> byStartupWmClass(const QString& wmClass);

    QHash<QString, std::optional<DesktopEntry>> m_answers;
    // StartupWMClass → desktop id, read on first need.
    std::optional<QHash<QString, QString>> m_wmClassIndex;
};

} // namespace velkor::x11
