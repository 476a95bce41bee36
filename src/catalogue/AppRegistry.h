// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/AppEntry.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <memory>

class QThread;

namespace velkor {

class Preferences;
class Workspace;
class InstalledAppSource;

// Letter key → running apps with that key, in cycling order.
using LetterMap = QHash<QString, QList<AppEntry>>;

// The running apps the switcher works on, the per-letter map with its learnt
// order, and the installed apps that search can offer.
class AppRegistry : public QObject
{
    Q_OBJECT
public:
    // Reads the running apps at once, follows the workspace's notifications
    // and, when a source is given, scans the installed apps on a worker
    // thread: once now, and again whenever the source tells of a change.
    AppRegistry(Workspace& workspace, const InstalledAppSource* installed, Preferences& prefs,
                QObject* parent = nullptr);
    ~AppRegistry() override;

    const QList<AppEntry>& runningApps() const { return m_runningApps; }
    const LetterMap& letterMap() const { return m_letterMap; }
    const QList<AppEntry>& installedApps() const { return m_installedApps; }

    // Rebuilds the running apps from the platform, then the letter map.
    void refreshRunning();

    // The full lower-casing of name, first grapheme cluster; "" for "". The
    // cluster is in composed form (NFC), so canonically equivalent names
    // share their key.
    static QString letterKey(const QString& name);

signals:
    void runningAppsChanged();
    void letterMapChanged();
    void installedAppsChanged();

private:
    void rebuildLetterMap();
    void indexInstalledApps();
    void storeInstalledApps(QList<AppEntry> entries);

    Workspace& m_workspace;
    Preferences& m_prefs;
    QList<AppEntry> m_runningApps;
    LetterMap m_letterMap;
    QList<AppEntry> m_installedApps;
    const InstalledAppSource* m_installedSource = nullptr;
    std::unique_ptr<QThread> m_scanThread;
    bool m_scanning = false;
    bool m_scanAgain = false; // the folders changed during the scan

    struct NameKeys
    {
        QString sortKey;
        QString letter;
    };
    // The keys of the running apps' names, kept from one refresh to the next.
    QHash<QString, NameKeys> m_nameKeys;
    // The learnt order the letter map was built with.
    QMap<QString, QStringList> m_usageInLetterMap;
};

} // namespace velkor
