// SPDX-License-Identifier: MIT
#include "platform/x11/XdgAutostartLoginItem.h"

#include "app/LaunchAtLogin.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

using namespace velkor;
using velkor::x11::XdgAutostartLoginItem;

class XdgAutostartLoginItemTest : public QObject
{
    Q_OBJECT
private slots:
    void registersAndUnregistersIdempotently();
    void followsXdgConfigHome();
    void quotesExecutablePaths();
    void startsTheInstalledExecutableWhenRunFromIt();
    void failureIsReportedAndLogged();
};

void XdgAutostartLoginItemTest::registersAndUnregistersIdempotently()
{
    QTemporaryDir home;
    XdgAutostartLoginItem item(QStringLiteral("/opt/velkor/bin/velkor"), home.path());
    QCOMPARE(item.entryPath(), home.filePath("autostart/velkor.desktop"));
    QCOMPARE(item.status(), LoginItem::Status::NotRegistered);
    QString error;
    QVERIFY(item.unregisterItem(&error)); // nothing to remove is fine

    QVERIFY(item.registerItem(&error));
    QCOMPARE(item.status(), LoginItem::Status::Enabled);
    QSettings entry(item.entryPath(), QSettings::IniFormat);
    entry.beginGroup("Desktop Entry");
    QCOMPARE(entry.value("Type").toString(), QStringLiteral("Application"));
    QCOMPARE(entry.value("Name").toString(), QStringLiteral("Velkor"));
    QCOMPARE(entry.value("Exec").toString(), QStringLiteral("/opt/velkor/bin/velkor"));

    // Through the settings toggle's path: the second enable writes nothing
    // (a line added to the entry survives it).
    {
        QFile file(item.entryPath());
        QVERIFY(file.open(QIODevice::Append));
        file.write("# kept\n");
    }
    LaunchAtLogin::set(item, true);
    {
        QFile file(item.entryPath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().endsWith("# kept\n"));
    }

    // The session's own settings switched it off; enabling again brings
    // back an entry that starts.
    {
        QFile file(item.entryPath());
        QVERIFY(file.open(QIODevice::Append));
        file.write("Hidden=true\n");
    }
    QCOMPARE(item.status(), LoginItem::Status::NotRegistered);
    LaunchAtLogin::set(item, true);
    QCOMPARE(item.status(), LoginItem::Status::Enabled);

    LaunchAtLogin::set(item, false);
    QVERIFY(!QFileInfo::exists(item.entryPath()));
    QCOMPARE(item.status(), LoginItem::Status::NotRegistered);
}

void XdgAutostartLoginItemTest::followsXdgConfigHome()
{
    const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
    const QByteArray savedHome = qgetenv("HOME");
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
    QCOMPARE(XdgAutostartLoginItem::defaultConfigHome(), config.path());
    XdgAutostartLoginItem item(QStringLiteral("/usr/bin/velkor"));
    QString error;
    QVERIFY(item.registerItem(&error));
    QVERIFY(QFileInfo::exists(config.filePath("autostart/velkor.desktop")));

    // Unset, or relative (which the base directory rules ignore): ~/.config.
    qputenv("HOME", "/home/someone");
    qputenv("XDG_CONFIG_HOME", "relative/config");
    QCOMPARE(XdgAutostartLoginItem::defaultConfigHome(), QStringLiteral("/home/someone/.config"));
    qunsetenv("XDG_CONFIG_HOME");
    QCOMPARE(XdgAutostartLoginItem::defaultConfigHome(), QStringLiteral("/home/someone/.config"));

    qputenv("HOME", savedHome);
    if (saved.isNull())
        qunsetenv("XDG_CONFIG_HOME");
    else
        qputenv("XDG_CONFIG_HOME", saved);
}

void XdgAutostartLoginItemTest::quotesExecutablePaths()
{
    QCOMPARE(XdgAutostartLoginItem::execLine("/usr/bin/velkor"), QStringLiteral("/usr/bin/velkor"));
    QCOMPARE(XdgAutostartLoginItem::execLine("/home/a b/velkor"),
             QStringLiteral("\"/home/a b/velkor\""));
    QCOMPARE(XdgAutostartLoginItem::execLine("/opt/100%/velkor"),
             QStringLiteral("/opt/100%%/velkor"));
    // Inside quotes $ is escaped, and the backslash itself once more for the
    // key file's own unescaping.
    QCOMPARE(XdgAutostartLoginItem::execLine("/tmp/$x y/velkor"),
             QStringLiteral("\"/tmp/\\\\$x y/velkor\""));
}

void XdgAutostartLoginItemTest::startsTheInstalledExecutableWhenRunFromIt()
{
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath("usr/bin") && QDir(root.path()).mkpath("build/src/app"));
    const QString installed = root.filePath("usr/bin/velkor");
    const QString built = root.filePath("build/src/app/velkor");
    for (const QString& path : {installed, built}) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    // /bin -> usr/bin as on a merged-/usr system, and a link in a folder on
    // the user's PATH: the process sees where the links led.
    QVERIFY(QFile::link(root.filePath("usr/bin"), root.filePath("bin")));
    QVERIFY(QDir(root.path()).mkpath("home/bin"));
    QVERIFY(QFile::link(installed, root.filePath("home/bin/velkor")));

    const auto entryExec = [&](const QString& running, const QString& installedPath) {
        QTemporaryDir config;
        XdgAutostartLoginItem item(running, config.path(), installedPath);
        if (!item.registerItem(nullptr))
            return QStringLiteral("(not written)");
        QSettings entry(item.entryPath(), QSettings::IniFormat);
        return entry.value("Desktop Entry/Exec").toString();
    };
    QCOMPARE(entryExec(installed, installed), installed);
    QCOMPARE(entryExec(root.filePath("bin/velkor"), installed), installed);
    QCOMPARE(entryExec(root.filePath("home/bin/velkor"), installed), installed);
    // Run from a build tree, installed or not: the entry starts that build.
    QCOMPARE(entryExec(built, installed), built);
    QCOMPARE(entryExec(built, root.filePath("opt/velkor/bin/velkor")), built);
}

void XdgAutostartLoginItemTest::failureIsReportedAndLogged()
{
    QTemporaryDir home;
    // A file where the autostart folder should be: nothing can be written.
    QFile blocker(home.filePath("autostart"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    XdgAutostartLoginItem item(QStringLiteral("/usr/bin/velkor"), home.path());
    QString error;
    QVERIFY(!item.registerItem(&error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(item.status(), LoginItem::Status::NotRegistered);
}

QTEST_GUILESS_MAIN(XdgAutostartLoginItemTest)
#include "XdgAutostartLoginItemTest.moc"
