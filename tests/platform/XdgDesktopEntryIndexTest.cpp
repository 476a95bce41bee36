// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopEntryIndex.h"

#include "platform/x11/GioInstalledAppSource.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <thread>

using namespace velkor;
using namespace velkor::x11;

// Desktop entries read from a private XDG_DATA_HOME and XDG_DATA_DIRS, set
// before GLib's first look at them.
class XdgDesktopEntryIndexTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

    QString home() const { return m_root.path() + QLatin1String("/home/applications"); }
    QString system() const { return m_root.path() + QLatin1String("/system/applications"); }

    static void writeRaw(const QString& path, const QByteArray& contents)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    static void write(const QString& path, const QByteArray& keys)
    {
        writeRaw(path, "[Desktop Entry]\nType=Application\nExec=true\n" + keys);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.isValid());
        qputenv("XDG_DATA_HOME", (m_root.path() + QLatin1String("/home")).toUtf8());
        qputenv("XDG_DATA_DIRS", (m_root.path() + QLatin1String("/system")).toUtf8());
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        qputenv("LANGUAGE", "de");

        write(home() + QLatin1String("/org.example.Alpha.desktop"), "Name=Alpha\n");
        write(home() + QLatin1String("/quiet.desktop"), "Name=Quiet\nNoDisplay=true\n");
        write(home() + QLatin1String("/gone.desktop"), "Name=Gone\nHidden=true\n");
        write(home() + QLatin1String("/kdeonly.desktop"), "Name=Kde Only\nOnlyShowIn=KDE;\n");
        write(home() + QLatin1String("/notgnome.desktop"), "Name=Not Gnome\nNotShowIn=GNOME;\n");
        // A sub-folder makes a dashed desktop id.
        write(home() + QLatin1String("/vendor/tool.desktop"),
              "Name=Vendor Tool\nStartupWMClass=VendorWin\n");
        // The user's entry shadows the system's entry of the same id, and
        // the window class only the system's entry names.
        write(home() + QLatin1String("/shadowed.desktop"), "Name=Mine\n");
        write(system() + QLatin1String("/shadowed.desktop"),
              "Name=System\nStartupWMClass=ShadowWin\n");
        write(system() + QLatin1String("/org.gnome.Calculator.desktop"),
              "Name=Calculator\nStartupWMClass=gnome-calculator\n");
        write(system() + QLatin1String("/xeyes.desktop"), "Name=Eyes\n");
        // Hidden removes the entry, and with it the system's entry of that id.
        write(home() + QLatin1String("/masked.desktop"), "Name=Masked\nHidden=true\n");
        write(system() + QLatin1String("/masked.desktop"), "Name=Unmasked\n");
        write(home() + QLatin1String("/gnomeonly.desktop"), "Name=Gnome Only\nOnlyShowIn=GNOME;\n");
        // Programs that are not installed: GIO offers neither entry.
        write(home() + QLatin1String("/notried.desktop"),
              "Name=Not Tried\nTryExec=velkor-no-such-program\n");
        writeRaw(home() + QLatin1String("/noprogram.desktop"),
                 "[Desktop Entry]\nType=Application\nName=No Program\n"
                 "Exec=velkor-no-such-program --flag %U\n");
        writeRaw(home() + QLatin1String("/quoted.desktop"),
                 "[Desktop Entry]\nType=Application\nName=Quoted\nExec=\"true\" %F\n");
        writeRaw(home() + QLatin1String("/link.desktop"),
                 "[Desktop Entry]\nType=Link\nName=Link\nURL=https://example.org\n");
        writeRaw(home() + QLatin1String("/broken.desktop"), "Name=No Group\n");
        write(home() + QLatin1String("/readme.txt"), "Name=Not An Entry\n");

        // Cases only window matching looks at.
        write(home() + QLatin1String("/localised.desktop"), "Name=Hello\nName[de]=Hallo\n");
        write(home() + QLatin1String("/acme/suite/big-editor.desktop"), "Name=Big Editor\n");
        write(system() + QLatin1String("/term.desktop"), "Name=Term\n");
        write(system() + QLatin1String("/myterm.desktop"), "Name=My Term\nStartupWMClass=term\n");
        // The first usable entry of a class wins; unusable ones step aside.
        write(home() + QLatin1String("/ghost.desktop"), "Name=Ghost\nHidden=true\n"
                                                        "StartupWMClass=Shared\n");
        write(system() + QLatin1String("/second.desktop"), "Name=Second\nStartupWMClass=Shared\n");
        write(system() + QLatin1String("/othervendor.desktop"),
              "Name=Other Vendor\nStartupWMClass=VendorWin\n");
        writeRaw(home() + QLatin1String("/linkwin.desktop"),
                 "[Desktop Entry]\nType=Link\nName=Link Win\nURL=https://example.org\n"
                 "StartupWMClass=LinkWin\n");
        // Reachable only by climbing out of the folders.
        write(m_root.path() + QLatin1String("/outside.desktop"), "Name=Outside\n");
    }

    void scanShowsWhatAMenuWouldShowFromAWorkerThread()
    {
        QList<InstalledApp> apps;
        std::thread worker([&] { apps = GioInstalledAppSource().scan(); });
        worker.join();

        QMap<QString, QString> byId; // bundle id → name
        for (const InstalledApp& app : apps) {
            QVERIFY(app.bundleId && app.name);
            QVERIFY2(QFile::exists(app.path), qPrintable(app.path));
            QVERIFY(!byId.contains(*app.bundleId));
            byId.insert(*app.bundleId, *app.name);
        }
        const QMap<QString, QString> expected = {
            {QStringLiteral("org.example.Alpha"), QStringLiteral("Alpha")},
            {QStringLiteral("vendor-tool"), QStringLiteral("Vendor Tool")},
            {QStringLiteral("shadowed"), QStringLiteral("Mine")},
            {QStringLiteral("org.gnome.Calculator"), QStringLiteral("Calculator")},
            {QStringLiteral("xeyes"), QStringLiteral("Eyes")},
            {QStringLiteral("gnomeonly"), QStringLiteral("Gnome Only")},
            {QStringLiteral("quoted"), QStringLiteral("Quoted")},
            {QStringLiteral("localised"), QStringLiteral("Hallo")},
            {QStringLiteral("acme-suite-big-editor"), QStringLiteral("Big Editor")},
            {QStringLiteral("term"), QStringLiteral("Term")},
            {QStringLiteral("myterm"), QStringLiteral("My Term")},
            {QStringLiteral("second"), QStringLiteral("Second")},
            {QStringLiteral("othervendor"), QStringLiteral("Other Vendor")},
        };
        QCOMPARE(byId, expected);
    }

    void windowsFindTheirEntries()
    {
        XdgDesktopEntryIndex entries;
        const auto found = [&](std::optional<QString> gtkId, const char* cls,
                               const char* instance) {
            const auto entry =
                entries.match(gtkId, QString::fromLatin1(cls), QString::fromLatin1(instance));
            if (!entry)
                return QStringLiteral("none");
            if (!QFile::exists(entry->path))
                return QStringLiteral("no file at ") + entry->path;
            return entry->name + QLatin1Char('|') + entry->id;
        };
        // _GTK_APPLICATION_ID wins over everything else.
        QCOMPARE(found(QStringLiteral("org.example.Alpha"), "xeyes", "xeyes"),
                 QStringLiteral("Alpha|org.example.Alpha"));
        // Answers are remembered per identity, the application id included.
        QCOMPARE(found({}, "xeyes", "xeyes"), QStringLiteral("Eyes|xeyes"));
        // StartupWMClass, by class or by instance name.
        QCOMPARE(found({}, "VendorWin", "x"), QStringLiteral("Vendor Tool|vendor-tool"));
        QCOMPARE(found({}, "Gnome-calculator", "gnome-calculator"),
                 QStringLiteral("Calculator|org.gnome.Calculator"));
        // ...even by instance, before a desktop id equal to the lower-cased class.
        QCOMPARE(found({}, "Term", "term"), QStringLiteral("My Term|myterm"));
        // Desktop id equal to the class, as written or lower-cased.
        QCOMPARE(found({}, "XEyes", "xeyes"), QStringLiteral("Eyes|xeyes"));
        // Entries hidden from menus still name their running windows.
        QCOMPARE(found({}, "Quiet", "quiet"), QStringLiteral("Quiet|quiet"));
        QCOMPARE(found({}, "Nothing", "nothing"), QStringLiteral("none"));
        QCOMPARE(found({}, "Localised", "localised"), QStringLiteral("Hallo|localised"));
    }

    void idsFollowFoldersAndShadowing()
    {
        XdgDesktopEntryIndex entries;
        const auto found = [&](const char* id) {
            const auto entry = entries.match(QString::fromLatin1(id), QString(), QString());
            return entry ? entry->name + QLatin1Char('|') + entry->id : QStringLiteral("none");
        };
        QCOMPARE(found("vendor-tool"), QStringLiteral("Vendor Tool|vendor-tool"));
        QCOMPARE(found("acme-suite-big-editor"),
                 QStringLiteral("Big Editor|acme-suite-big-editor"));
        QCOMPARE(found("shadowed"), QStringLiteral("Mine|shadowed"));
        QCOMPARE(found("masked"), QStringLiteral("none"));
        QCOMPARE(found("vendor-..-..-..-outside"), QStringLiteral("none"));
        QCOMPARE(found("vendor/../../../outside"), QStringLiteral("none"));
    }

    void unusableEntriesNameNoWindow()
    {
        XdgDesktopEntryIndex entries;
        const auto found = [&](const char* cls) {
            const auto entry =
                entries.match({}, QString::fromLatin1(cls), QString::fromLatin1(cls).toLower());
            return entry ? entry->name : QStringLiteral("none");
        };
        QCOMPARE(found("Gone"), QStringLiteral("none"));      // Hidden
        QCOMPARE(found("Link"), QStringLiteral("none"));      // not an application
        QCOMPARE(found("LinkWin"), QStringLiteral("none"));   // nor by its window class
        QCOMPARE(found("NoTried"), QStringLiteral("none"));   // TryExec not installed
        QCOMPARE(found("NoProgram"), QStringLiteral("none")); // Exec not installed
        QCOMPARE(found("Shared"), QStringLiteral("Second"));
        QCOMPARE(found("ShadowWin"), QStringLiteral("none"));
    }
};

QTEST_GUILESS_MAIN(XdgDesktopEntryIndexTest)
#include "XdgDesktopEntryIndexTest.moc"
