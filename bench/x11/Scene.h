// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <xcb/xcb.h>

namespace velkor {
class Preferences;
}

namespace velkor::e2e {
class XDesktop;
class VelkorInstance;
} // namespace velkor::e2e

// What the X11 benchmarks set on the desktop: named apps to switch between,
// a crowd of windows nobody switches to, generated desktop entries, and
// Velkor itself with settings of the benchmark's choosing.
namespace velkor::xbench {

// One app of the desktop: an xterm whose class, instance and title are its
// name, and the X keycode of its name's first letter.
struct App
{
    QString name;
    xcb_window_t window = 0;
    int letterKey = 0;
};

class BenchClient;

// Twelve names with twelve different first letters (a to l): the issue's
// twelve windows, one letter each.
QStringList twelveNames();

// Starts an xterm per name; empty when any of them does not come up.
QList<App> launchApps(e2e::XDesktop& desktop, const QStringList& names);

// Adds windows in multi-window clients (25 each, class Zulu01, Zulu02, …,
// so their letter z is nobody else's) until the window manager lists
// `total` windows; false when it does not in time.
bool launchCrowd(e2e::XDesktop& desktop, int total);

// Writes count desktop entries into dataDir/applications: varied names
// built from a word list, a third of them with StartupWMClass, all with
// Exec=true so that nothing real starts if one is launched.
bool writeDesktopEntries(const QString& dataDir, int count);

// A Velkor with a fresh home (and so fresh settings) under home, whose data
// folder is dataDir when given (shared between starts, so that thousands of
// entries are written once). Not started: settings go in through its
// preferences() first.
std::unique_ptr<e2e::VelkorInstance> makeVelkor(e2e::XDesktop& desktop, const QString& home,
                                                const QString& dataDir = QString());

// What most figures start from: a private desktop, apps on it, a running
// Velkor, and the benchmark's own client. Torn down in reverse.
class Stage final
{
public:
    Stage();
    ~Stage();

    // Desktop and apps, then Velkor with the given settings and data
    // folder; false, with the reason on stderr, when any part fails.
    bool start(const QStringList& appNames, const std::function<void(Preferences&)>& settings = {},
               const QString& dataDir = QString());

    e2e::XDesktop& desktop() const { return *m_desktop; }
    BenchClient& client() const { return *m_client; }
    e2e::VelkorInstance& velkor() const { return *m_velkor; }
    const QList<App>& apps() const { return m_apps; }

private:
    std::unique_ptr<e2e::XDesktop> m_desktop;
    std::unique_ptr<BenchClient> m_client;
    QList<App> m_apps;
    std::unique_ptr<e2e::VelkorInstance> m_velkor;
};

} // namespace velkor::xbench
