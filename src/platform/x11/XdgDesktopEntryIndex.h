// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/XdgDesktopEntry.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <optional>

namespace velkor::x11 {

// Finds the desktop entry of a running app's window. A desktop id is looked
// up by probing the few files it can name, as windows appear; the window
// classes entries name (StartupWMClass) come from the last scan of the
// folders, which reads every file and so runs on a worker, never holding up
// the main thread. GIO's app-info machinery would answer the same, but
// loading it costs a thread, folder monitors and a megabyte that an idle
// switcher keeps for good. Answers are remembered per window identity until
// the next scan.
class XdgDesktopEntryIndex final : public QObject
{
    Q_OBJECT
public:
    // In this order: _GTK_APPLICATION_ID as a desktop id, StartupWMClass =
    // the WM_CLASS class, then = its instance, then a desktop id equal to the
    // class or the instance (as written, then lower-cased).
    std::optional<DesktopEntry> match(const std::optional<QString>& gtkApplicationId,
                                      const QString& className, const QString& instanceName);

    // The window classes a scan found; answers given before are dropped.
    void setWindowClasses(QHash<QString, DesktopEntry> classes);

signals:
    // Answers given before may have changed.
    void changed();

private:
    QHash<QString, std::optional<DesktopEntry>> m_answers;
    QHash<QString, DesktopEntry> m_windowClasses;
};

} // namespace velkor::x11
