// SPDX-License-Identifier: MIT
#include "catalogue/AppRegistry.h"

#include "fakes/FakePlatform.h"
#include "settings/Preferences.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QPointer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>

using namespace velkor;
using velkor::fake::FakeInstalledAppSource;
using velkor::fake::FakeWorkspace;

namespace {

QStringList namesOf(const QList<AppEntry>& entries)
{
    QStringList names;
    for (const AppEntry& e : entries)
        names.append(e.name);
    return names;
}

InstalledApp installed(const char* name)
{
    return {QStringLiteral("/apps/%1.app").arg(QLatin1String(name)), QString::fromLatin1(name),
            std::nullopt};
}

// Folders whose contents change while the registry runs. A scan reads them,
// then waits for the test to let it finish.
class ChangingInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override
    {
        QList<InstalledApp> found;
        {
            QMutexLocker lock(&m_mutex);
            found = m_apps;
        }
        ++scans;
        finish.acquire();
        return found;
    }
    void watch(QObject* context, std::function<void()> onChange) const override
    {
        m_watchers.append({context, std::move(onChange)});
    }

    void setApps(const QList<InstalledApp>& apps)
    {
        QMutexLocker lock(&m_mutex);
        m_apps = apps;
    }
    // The folders tell of a change.
    void change()
    {
        for (const auto& [context, onChange] : std::as_const(m_watchers))
            if (context)
                onChange();
    }

    mutable QSemaphore finish;
    mutable std::atomic<int> scans = 0;

private:
    mutable QMutex m_mutex;
    QList<InstalledApp> m_apps;
    mutable QList<std::pair<QPointer<QObject>, std::function<void()>>> m_watchers;
};

// A scan that never ends unless it is asked to stop.
class EndlessInstalledAppSource final : public InstalledAppSource
{
public:
    QList<InstalledApp> scan() const override
    {
        started.release();
        // Bounded only so that a registry that never asks does not hang the
        // suite; the test fails then.
        QDeadlineTimer safety(30000);
        while (!QThread::currentThread()->isInterruptionRequested() && !safety.hasExpired())
            QThread::msleep(1);
        stopped = QThread::currentThread()->isInterruptionRequested();
        return {installed("Late")};
    }

    mutable QSemaphore started;
    mutable std::atomic<bool> stopped = false;
};

} // namespace

class AppRegistryTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    fake::CallLog m_log;
    std::unique_ptr<FakeWorkspace> m_workspace;
    std::unique_ptr<Preferences> m_prefs;

private slots:
    void init()
    {
        static int n = 0;
        m_prefs = std::make_unique<Preferences>(std::make_unique<QSettings>(
            m_dir.filePath(QStringLiteral("prefs%1.conf").arg(++n)), QSettings::IniFormat));
        m_workspace = std::make_unique<FakeWorkspace>(m_log);
    }

    void cleanup()
    {
        m_workspace.reset();
        m_prefs.reset();
    }

    void admitsOnlyRegularForeignNamedUnexcludedApps()
    {
        m_workspace->addApp(1, "Mail", QStringLiteral("com.mail"),
                            QStringLiteral("/apps/Mail.app"));
        m_workspace->addApp(2, "Helper", QStringLiteral("com.helper")).regular = false;
        m_workspace->addApp(3, "Velkor", QStringLiteral("org.velkor.Velkor"));
        m_workspace->addApp(4, "Tool", std::nullopt);
        m_workspace->addApp(5, "Hidden", QStringLiteral("com.excluded"));
        m_workspace->addApp(6, "Nameless", QStringLiteral("com.nameless")).name.reset();
        m_workspace->addApp(7, "Case", QStringLiteral("com.Excluded"));
        m_prefs->setExcludedBundleIds({QStringLiteral("com.excluded")});

        AppRegistry registry(*m_workspace, nullptr, *m_prefs);
        const QList<AppEntry>& apps = registry.runningApps();
        QCOMPARE(namesOf(apps), (QStringList{"Case", "Mail", "Tool"}));

        const AppEntry& mail = apps.at(1);
        QCOMPARE(mail.id, QStringLiteral("com.mail"));
        QCOMPARE(mail.pid, std::optional<Pid>(1));
        QCOMPARE(mail.path(), std::optional<QString>(QStringLiteral("/apps/Mail.app")));
        const AppEntry& tool = apps.at(2);
        QCOMPARE(tool.id, QStringLiteral("pid:4"));
        QCOMPARE(tool.bundleId, std::nullopt);
        QCOMPARE(tool.url, std::nullopt);

        // Without an own id, apps without one count as this program.
        m_workspace->ownId.reset();
        registry.refreshRunning();
        QCOMPARE(namesOf(registry.runningApps()), (QStringList{"Case", "Mail", "Velkor"}));
    }

    void sortsByNameIgnoringCaseAndKeepsPlatformOrderForEqualNames()
    {
        m_workspace->addApp(1, "beta", QStringLiteral("b"));
        m_workspace->addApp(2, "Mail Merge", QStringLiteral("mm"));
        m_workspace->addApp(3, "Alpha", QStringLiteral("a1"));
        m_workspace->addApp(4, "mail", QStringLiteral("m"));
        m_workspace->addApp(5, "alpha", QStringLiteral("a2"));
        m_workspace->addApp(6, "Zebra", QStringLiteral("z"));
        // A composed and a decomposed É share a letter.
        m_workspace->addApp(7, "E\u0301tude", QStringLiteral("etude"));
        m_workspace->addApp(8, "École", QStringLiteral("ecole"));
        AppRegistry registry(*m_workspace, nullptr, *m_prefs);
        QCOMPARE(namesOf(registry.runningApps()),
                 (QStringList{"Alpha", "alpha", "beta", "École", "E\u0301tude", "mail",
                              "Mail Merge", "Zebra"}));
        QCOMPARE(registry.runningApps().at(0).pid, std::optional<Pid>(3));
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("m"))),
                 (QStringList{"mail", "Mail Merge"}));
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("é"))),
                 (QStringList{"École", "E\u0301tude"}));
        QCOMPARE(registry.letterMap().size(), 5);
    }

    void letterKeysAreLowerCasedFirstCharacters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("key");
        const auto row = [](const char* title, const QString& name, const QString& key) {
            QTest::newRow(title) << name << key;
        };
        row("plain", "Safari", "s");
        row("digit", "1Password", "1");
        row("accented capital", "\u00C9diteur", "\u00E9");
        row("decomposed capital", "E\u0301diteur", "\u00E9");
        row("dotted capital I", "\u0130zmir", "i\u0307");
        row("emoji with skin tone", "\U0001F44D\U0001F3FD Likes", "\U0001F44D\U0001F3FD");
        row("letter with emoji modifier", "a\U0001F3FDb", "a\U0001F3FD");
        row("empty", "", "");
    }

    void letterKeysAreLowerCasedFirstCharacters()
    {
        QFETCH(QString, name);
        QFETCH(QString, key);
        QCOMPARE(AppRegistry::letterKey(name), key);
    }

    void cyclingOrderFollowsTheUsageHistory()
    {
        m_workspace->addApp(1, "xa", QStringLiteral("a"));
        m_workspace->addApp(2, "xb", QStringLiteral("b"));
        m_workspace->addApp(3, "xc", QStringLiteral("c"));
        m_workspace->addApp(4, "xaa", std::nullopt);
        m_prefs->setLetterUsage(
            {{QStringLiteral("x"), {QStringLiteral("b"), QStringLiteral("a")}}});
        AppRegistry registry(*m_workspace, nullptr, *m_prefs);
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("x"))),
                 (QStringList{"xb", "xa", "xaa", "xc"}));

        // Recording takes effect at the next refresh, and the id-less app
        // can never be ranked.
        m_prefs->recordLetterUsage(QStringLiteral("X"), QStringLiteral("c"));
        m_prefs->recordLetterUsage(QStringLiteral("x"), std::nullopt);
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("x"))).first(),
                 QStringLiteral("xb"));
        registry.refreshRunning();
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("x"))),
                 (QStringList{"xc", "xb", "xa", "xaa"}));
    }

    void followsTheWorkspaceAndExclusions()
    {
        AppRegistry registry(*m_workspace, nullptr, *m_prefs);
        QSignalSpy running(&registry, &AppRegistry::runningAppsChanged);
        QSignalSpy letters(&registry, &AppRegistry::letterMapChanged);

        m_workspace->addApp(1, "Mail", QStringLiteral("com.mail"));
        emit m_workspace->applicationLaunched();
        QCOMPARE(namesOf(registry.runningApps()), QStringList{"Mail"});
        m_workspace->addApp(2, "Music", QStringLiteral("com.music"));
        emit m_workspace->applicationActivated();
        QCOMPARE(registry.letterMap().value(QStringLiteral("m")).size(), 2);
        m_workspace->removeApp(1);
        emit m_workspace->applicationTerminated();
        QCOMPARE(namesOf(registry.runningApps()), QStringList{"Music"});
        QCOMPARE(running.count(), 3);
        QCOMPARE(letters.count(), 3);

        // Nothing changed: nothing is rebuilt or announced. A renamed app
        // moves to its new letter, not the one its old name had.
        registry.refreshRunning();
        QCOMPARE(running.count(), 3);
        QCOMPARE(letters.count(), 3);
        m_workspace->apps.first().name = QStringLiteral("Zither");
        registry.refreshRunning();
        QCOMPARE(letters.count(), 4);
        QVERIFY(!registry.letterMap().contains(QStringLiteral("m")));
        QCOMPARE(namesOf(registry.letterMap().value(QStringLiteral("z"))), QStringList{"Zither"});
        m_workspace->apps.first().name = QStringLiteral("Music");

        m_prefs->setExcluded(true, QStringLiteral("com.music"));
        registry.refreshRunning();
        QVERIFY(registry.runningApps().isEmpty());
        QVERIFY(!registry.letterMap().contains(QStringLiteral("m")));
    }

    void installedScanSortsAndKeepsTheFirstOfEachName()
    {
        FakeInstalledAppSource source;
        source.apps = {
            {QStringLiteral("/Applications/Zed.app"), QStringLiteral("Zed"), QStringLiteral("z1")},
            {QStringLiteral("/Applications/Notes.app"), QStringLiteral("Notes"),
             QStringLiteral("n1")},
            {QStringLiteral("/Applications/Utilities/My.Tool.app"), std::nullopt, std::nullopt},
            {QStringLiteral("/System/Applications/Notes.app"), QStringLiteral("Notes"),
             QStringLiteral("n2")},
            {QStringLiteral("/System/Applications/notes.app"), QStringLiteral("notes"),
             QStringLiteral("n3")},
        };
        AppRegistry registry(*m_workspace, &source, *m_prefs);
        QSignalSpy installed(&registry, &AppRegistry::installedAppsChanged);
        QVERIFY(installed.wait(5000));

        const QList<AppEntry>& apps = registry.installedApps();
        QCOMPARE(namesOf(apps), (QStringList{"My.Tool", "Notes", "notes", "Zed"}));
        QCOMPARE(apps.at(0).id, QStringLiteral("/Applications/Utilities/My.Tool.app"));
        QCOMPARE(apps.at(0).bundleId, std::nullopt);
        QCOMPARE(apps.at(1).id, QStringLiteral("n1"));
        QCOMPARE(apps.at(1).path(),
                 std::optional<QString>(QStringLiteral("/Applications/Notes.app")));
        QCOMPARE(apps.at(1).pid, std::nullopt);
    }

    void installedAppsAreScannedAgainWhenTheFoldersChange()
    {
        ChangingInstalledAppSource source;
        source.setApps({installed("Atlas")});
        source.finish.release();
        AppRegistry registry(*m_workspace, &source, *m_prefs);
        QSignalSpy stored(&registry, &AppRegistry::installedAppsChanged);
        QVERIFY(stored.wait(5000));
        QCOMPARE(namesOf(registry.installedApps()), QStringList{"Atlas"});

        // An app installed later is seen, one that went is gone.
        source.setApps({installed("Boreal")});
        source.change();
        QTRY_COMPARE(source.scans.load(), 2); // and waits to finish
        // Changes during that scan are seen by one more scan after it.
        source.setApps({installed("Boreal"), installed("Cirrus")});
        source.change();
        source.change();
        source.finish.release(10);
        QTRY_COMPARE(namesOf(registry.installedApps()), (QStringList{"Boreal", "Cirrus"}));
        QCOMPARE(source.scans.load(), 3);
    }

    void destroyingTheRegistryDuringOrAfterAScanIsSafe()
    {
        EndlessInstalledAppSource endless;
        {
            AppRegistry registry(*m_workspace, &endless, *m_prefs);
            endless.started.acquire();
        } // destroyed during the scan, which is asked to stop
        QVERIFY(endless.stopped);

        // A result already posted but not yet delivered is dropped with the
        // registry; nothing arrives afterwards.
        FakeInstalledAppSource fast;
        fast.apps = {{QStringLiteral("/apps/A.app"), QStringLiteral("A"), std::nullopt}};
        auto registry = std::make_unique<AppRegistry>(*m_workspace, &fast, *m_prefs);
        QSignalSpy installed(registry.get(), &AppRegistry::installedAppsChanged);
        QThread::msleep(50);
        registry.reset();
        QCoreApplication::processEvents();
        QCOMPARE(installed.count(), 0);
    }
};

QTEST_GUILESS_MAIN(AppRegistryTest)
#include "AppRegistryTest.moc"
