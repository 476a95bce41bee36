// SPDX-License-Identifier: MIT
#include "Scene.h"

#include "BenchClient.h"
#include "VelkorInstance.h"
#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QDir>
#include <QFile>
#include <cstdio>
#include <random>

namespace velkor::xbench {

using e2e::XDesktop;

namespace {

constexpr int CrowdWindowsPerClient = 25;

} // namespace

QStringList twelveNames()
{
    return {QStringLiteral("Alpha"),  QStringLiteral("Bravo"), QStringLiteral("Charlie"),
            QStringLiteral("Delta"),  QStringLiteral("Echo"),  QStringLiteral("Foxtrot"),
            QStringLiteral("Golf"),   QStringLiteral("Hotel"), QStringLiteral("India"),
            QStringLiteral("Juliet"), QStringLiteral("Kilo"),  QStringLiteral("Lima")};
}

QList<App> launchApps(XDesktop& desktop, const QStringList& names)
{
    QList<App> apps;
    for (const QString& name : names) {
        const xcb_window_t window = desktop.launchTerminal(name);
        if (!window)
            return {};
        apps.append({name, window, e2e::key::of(name.at(0).toLower())});
    }
    return apps;
}

bool launchCrowd(XDesktop& desktop, int total)
{
    const int missing = total - int(desktop.clients().size());
    for (int client = 0; client * CrowdWindowsPerClient < missing; ++client) {
        const QString cls = QStringLiteral("Zulu%1").arg(client + 1, 2, 10, QLatin1Char('0'));
        QStringList args{cls};
        const int windows =
            std::min(CrowdWindowsPerClient, missing - client * CrowdWindowsPerClient);
        for (int w = 0; w < windows; ++w)
            args.append(QStringLiteral("name=%1 window %2").arg(cls).arg(w + 1));
        // launch() returns at the first window; the client maps the rest one
        // by one while the next client starts.
        if (!desktop.launch(QStringLiteral(VELKOR_MULTI_WINDOW_CLIENT), args, cls))
            return false;
    }
    return desktop.waitFor([&] { return desktop.clients().size() >= total; }, 120000);
}

bool writeDesktopEntries(const QString& dataDir, int count)
{
    const QString folder = dataDir + QLatin1String("/applications");
    if (!QDir().mkpath(folder))
        return false;
    static const char* const words[] = {
        "Studio", "Code",     "Photo", "Sound",   "Vista",    "Editor",  "Terminal", "Mail",
        "Notes",  "Calendar", "Music", "Player",  "Viewer",   "Manager", "Browser",  "Office",
        "Writer", "Draw",     "Calc",  "Monitor", "Settings", "Files",   "Disk",     "Maps"};
    constexpr int Words = int(std::size(words));
    std::mt19937 random(5000);
    for (int i = 0; i < count; ++i) {
        QFile f(QStringLiteral("%1/org.bench.Entry%2.desktop").arg(folder).arg(i));
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        const QString name =
            QStringLiteral("%1 %2 %3")
                .arg(QLatin1String(words[random() % Words]), QLatin1String(words[random() % Words]))
                .arg(i);
        QString text = QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\n"
                                      "Comment=An app for the benchmark\nExec=true %%U\n"
                                      "Icon=entry%2\nCategories=Utility;\n")
                           .arg(name)
                           .arg(i);
        if (i % 3 == 0)
            text += QStringLiteral("StartupWMClass=BenchEntry%1\n").arg(i);
        if (f.write(text.toUtf8()) < 0)
            return false;
    }
    return true;
}

std::unique_ptr<e2e::VelkorInstance> makeVelkor(XDesktop& desktop, const QString& home,
                                                const QString& dataDir)
{
    QDir().mkpath(home);
    if (!dataDir.isEmpty()) {
        QDir().mkpath(dataDir + QLatin1String("/applications"));
        QFile::link(dataDir, home + QLatin1String("/data"));
    }
    return std::make_unique<e2e::VelkorInstance>(desktop, home);
}

Stage::Stage() : m_desktop(std::make_unique<XDesktop>()) {}

Stage::~Stage()
{
    if (m_velkor)
        m_velkor->stop();
}

bool Stage::start(const QStringList& appNames, const std::function<void(Preferences&)>& settings,
                  const QString& dataDir)
{
    if (!m_desktop->start()) {
        std::fprintf(stderr, "%s\n", qPrintable(m_desktop->error()));
        return false;
    }
    m_client = std::make_unique<BenchClient>(m_desktop->display());
    m_apps = launchApps(*m_desktop, appNames);
    if (!m_client->isConnected() || m_apps.size() != appNames.size()) {
        std::fprintf(stderr, "the bench client or an app did not come up\n");
        return false;
    }
    m_velkor =
        makeVelkor(*m_desktop, m_desktop->scratchPath() + QLatin1String("/velkor-home"), dataDir);
    if (settings)
        settings(*m_velkor->preferences());
    if (!m_velkor->start()) {
        std::fprintf(stderr, "velkor did not start\n%s\n", qPrintable(m_velkor->log()));
        return false;
    }
    return true;
}

} // namespace velkor::xbench
