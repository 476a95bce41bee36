// SPDX-License-Identifier: MIT
#include "catalogue/AppRegistry.h"

#include "catalogue/NameCollation.h"
#include "platform/InstalledAppSource.h"
#include "platform/Workspace.h"
#include "settings/Preferences.h"

#include <QFileInfo>
#include <QSet>
#include <QTextBoundaryFinder>
#include <QThread>
#include <algorithm>

namespace velkor {

namespace {

// Sorts by name with the names' sort keys, computed once per name rather
// than once per comparison; equal names keep their order.
template <typename KeyOf> void sortByName(QList<AppEntry>& entries, KeyOf keyOf)
{
    QList<std::pair<const QString*, qsizetype>> keyed;
    keyed.reserve(entries.size());
    for (qsizetype i = 0; i < entries.size(); ++i)
        keyed.append({&keyOf(entries[i].name), i});
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first->compare(*b.first) < 0; });
    QList<AppEntry> sorted;
    sorted.reserve(entries.size());
    for (const auto& [key, i] : keyed)
        sorted.append(std::move(entries[i]));
    entries = std::move(sorted);
}

AppEntry installedEntry(const InstalledApp& app)
{
    AppEntry entry;
    entry.name = app.name ? *app.name : QFileInfo(app.path).completeBaseName();
    entry.id = app.bundleId ? *app.bundleId : app.path;
    entry.url = QUrl::fromLocalFile(app.path);
    entry.bundleId = app.bundleId;
    return entry;
}

} // namespace

AppRegistry::AppRegistry(Workspace& workspace, const InstalledAppSource* installed,
                         Preferences& prefs, QObject* parent)
    : QObject(parent), m_workspace(workspace), m_prefs(prefs)
{
    refreshRunning();
    connect(&workspace, &Workspace::applicationLaunched, this, &AppRegistry::refreshRunning);
    connect(&workspace, &Workspace::applicationTerminated, this, &AppRegistry::refreshRunning);
    connect(&workspace, &Workspace::applicationActivated, this, &AppRegistry::refreshRunning);
    if (installed) {
        m_installedSource = installed;
        installed->watch(this, [this] { indexInstalledApps(); });
        indexInstalledApps();
    }
}

AppRegistry::~AppRegistry()
{
    // The scan is asked to stop and waited for, so that it never outlives
    // this registry or the source it reads. A result it already posted is
    // dropped with this object's pending events.
    if (m_scanThread) {
        m_scanThread->requestInterruption();
        m_scanThread->wait();
    }
}

void AppRegistry::refreshRunning()
{
    const std::optional<QString> ownId = m_workspace.ownBundleId();
    const QStringList excludedList = m_prefs.excludedBundleIds();
    const QSet<QString> excluded(excludedList.cbegin(), excludedList.cend());

    QList<AppEntry> entries;
    for (const RunningApp& app : m_workspace.runningApplications()) {
        // An app without an id is refused too when this program has none.
        if (!app.regular || app.bundleId == ownId)
            continue;
        if (app.bundleId && excluded.contains(*app.bundleId))
            continue;
        if (!app.name)
            continue;
        AppEntry entry;
        entry.id = app.bundleId ? *app.bundleId : QStringLiteral("pid:%1").arg(app.pid);
        entry.name = *app.name;
        if (app.bundlePath)
            entry.url = QUrl::fromLocalFile(*app.bundlePath);
        entry.bundleId = app.bundleId;
        entry.pid = app.pid;
        entries.append(std::move(entry));
    }
    // A session starts with a refresh: names seen before reuse their
    // collation and letter keys, and an unchanged result is not rebuilt.
    QHash<QString, NameKeys> keys;
    keys.reserve(entries.size());
    for (const AppEntry& entry : std::as_const(entries)) {
        if (keys.contains(entry.name))
            continue;
        auto known = m_nameKeys.constFind(entry.name);
        keys.insert(entry.name,
                    known != m_nameKeys.cend()
                        ? *known
                        : NameKeys{NameCollation::sortKey(entry.name), letterKey(entry.name)});
    }
    m_nameKeys = std::move(keys);
    sortByName(entries, [this](const QString& name) -> const QString& {
        return m_nameKeys.constFind(name)->sortKey;
    });
    LetterUsage usage = m_prefs.letterUsage();
    if (entries == m_runningApps && usage == m_usageInLetterMap)
        return;
    m_runningApps = std::move(entries);
    emit runningAppsChanged();
    m_usageInLetterMap = std::move(usage);
    rebuildLetterMap();
}

QString AppRegistry::letterKey(const QString& name)
{
    if (name.isEmpty())
        return {};
    const QString lower = name.toLower();
    // Below U+0300 no character joins the one before it (CR LF aside), so
    // the first unit is the whole first character.
    const char16_t first = lower.at(0).unicode();
    if (first < 0x300 && first != u'\r' && (lower.size() == 1 || lower.at(1).unicode() < 0x300))
        return lower.left(1);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, lower);
    const qsizetype end = finder.toNextBoundary();
    return lower.left(end > 0 ? end : lower.size()).normalized(QString::NormalizationForm_C);
}

void AppRegistry::rebuildLetterMap()
{
    // The running apps are in name order already, and so is each letter's
    // list; only the learnt order moves apps.
    LetterMap map;
    for (const AppEntry& entry : std::as_const(m_runningApps))
        map[m_nameKeys.constFind(entry.name)->letter].append(entry);

    for (auto it = map.begin(); it != map.end(); ++it) {
        const QStringList recent = m_usageInLetterMap.value(it.key().toLower());
        const auto rankOf = [&recent](const AppEntry& entry) -> qsizetype {
            return entry.bundleId ? recent.indexOf(*entry.bundleId) : -1;
        };
        std::stable_sort(it->begin(), it->end(), [&](const AppEntry& a, const AppEntry& b) {
            const qsizetype ra = rankOf(a);
            const qsizetype rb = rankOf(b);
            if (ra >= 0 && rb >= 0)
                return ra < rb;
            return ra >= 0 && rb < 0;
        });
    }
    m_letterMap = std::move(map);
    emit letterMapChanged();
}

void AppRegistry::indexInstalledApps()
{
    // One scan at a time; a change seen during it makes one more.
    if (m_scanning) {
        m_scanAgain = true;
        return;
    }
    m_scanning = true;
    if (m_scanThread)
        m_scanThread->wait(); // its result came; it has ended or is about to
    m_scanThread.reset(QThread::create([this, &source = *m_installedSource] {
        QList<AppEntry> entries;
        for (const InstalledApp& app : source.scan())
            entries.append(installedEntry(app));
        // Only the queued call touches the registry, on its own thread.
        QMetaObject::invokeMethod(
            this,
            [this, entries = std::move(entries)]() mutable {
                storeInstalledApps(std::move(entries));
            },
            Qt::QueuedConnection);
    }));
    m_scanThread->setObjectName(QStringLiteral("installed-app scan"));
    m_scanThread->start(QThread::LowPriority);
}

void AppRegistry::storeInstalledApps(QList<AppEntry> entries)
{
    QList<QString> keys;
    keys.reserve(entries.size());
    QHash<QString, qsizetype> keyOfName;
    for (const AppEntry& entry : std::as_const(entries)) {
        if (keyOfName.contains(entry.name))
            continue;
        keyOfName.insert(entry.name, keys.size());
        keys.append(NameCollation::sortKey(entry.name));
    }
    sortByName(entries, [&](const QString& name) -> const QString& {
        return keys.at(keyOfName.value(name));
    });
    QSet<QString> seen;
    QList<AppEntry> unique;
    unique.reserve(entries.size());
    for (AppEntry& entry : entries) {
        if (seen.contains(entry.name))
            continue;
        seen.insert(entry.name);
        unique.append(std::move(entry));
    }
    m_scanning = false;
    if (unique != m_installedApps) {
        m_installedApps = std::move(unique);
        emit installedAppsChanged();
    }
    if (std::exchange(m_scanAgain, false))
        indexInstalledApps();
}

} // namespace velkor
