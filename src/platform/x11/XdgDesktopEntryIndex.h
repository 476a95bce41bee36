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

// Finds the desktop entry of a running app's window by reading desktop
// files with GLib's key-file parser. GIO's app-info machinery would answer
// the same, but loading it costs a thread, folder monitors and a megabyte
// that an idle switcher keeps for good. Answers are remembered per window
// identity, so only the first window of an app pays for the lookup.
class XdgDesktopEntryIndex final
{
public:
    // In this order: _GTK_APPLICATION_ID as a desktop id, StartupWMClass =
    // the WM_CLASS class, then = its instance, then a desktop id equal to the
    // class or the instance (as written, then lower-cased).
    std::optional<DesktopEntry> match(const std::optional<QString>& gtkApplicationId,
                                      const QString& className, const QString& instanceName);

private:
    std::optional<DesktopEntry> byStartupWmClass(const QString& wmClass);
    const QHash<QString, DesktopEntry>& wmClassIndex();

    QHash<QString, std::optional<DesktopEntry>> m_answers;
    // StartupWMClass → entry, read on first need.
    std::optional<QHash<QString, DesktopEntry>> m_wmClassIndex;
};

} // namespace velkor::x11
