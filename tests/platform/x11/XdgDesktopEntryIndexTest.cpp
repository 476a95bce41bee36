// SPDX-License-Identifier: MIT
#include "platform/x11/XdgDesktopEntryIndex.h"

#include "platform/x11/GioInstalledAppSource.h"
#include "platform/x11/XdgDesktopFiles.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <future>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace velkor;
using namespace velkor::x11;

// Desktop entries read from a private XDG_DATA_HOME and XDG_DATA_DIRS, set
// before GLib's first look at them.
class XdgDesktopEntryIndexTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_tmp;
    // Deeper than a link to "/" inside the folders is followed.
    QString base() const { return m_tmp.path() + QLatin1String("/deep/er"); }
    QString home() const { return base() + QLatin1String("/home/applications"); }
    QString system() const { return base() + QLatin1String("/system/applications"); }
    std::shared_ptr<XdgDesktopEntryIndex> m_index = std::make_shared<XdgDesktopEntryIndex>();
    int m_socket = -1;

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
        QVERIFY(m_tmp.isValid());
        qputenv("XDG_DATA_HOME", (base() + QLatin1String("/home")).toUtf8());
        // "later" has no applications folder yet.
        qputenv("XDG_DATA_DIRS",
                (base() + QLatin1String("/system:") + base() + QLatin1String("/later")).toUtf8());
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
        write(base() + QLatin1String("/outside.desktop"), "Name=Outside\n");

        // What else anybody can put in a folder of theirs. None of it may
        // hold up the reading, or be read as an entry.
        const QByteArray h = home().toLocal8Bit();
        QCOMPARE(::mkfifo(h + "/fifo.desktop", 0600), 0);
        m_socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray socketPath = h + "/socket.desktop";
        QVERIFY(size_t(socketPath.size()) < sizeof address.sun_path);
        qstrcpy(address.sun_path, socketPath.constData());
        QCOMPARE(::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        QCOMPARE(::symlink("/dev/zero", h + "/zero.desktop"), 0);
        QCOMPARE(::symlink(".", h + "/loop"), 0);
        QCOMPARE(::symlink("..", h + "/up"), 0);
        QCOMPARE(::symlink("/", h + "/root"), 0);
        QCOMPARE(::symlink("nowhere", h + "/dangling.desktop"), 0);
        QFile huge(home() + QLatin1String("/huge.desktop")); // sparse: takes no disk
        QVERIFY(huge.open(QIODevice::WriteOnly));
        QVERIFY(huge.resize(qint64(4) << 30));
        huge.close();
        QByteArray binary;
        for (int i = 0; i < 4096; ++i)
            binary.append(char(i * 7));
        writeRaw(home() + QLatin1String("/binary.desktop"), binary);
        // Entries that are links to files elsewhere are ordinary.
        write(base() + QLatin1String("/target.desktop"), "Name=Linked\n");
        QCOMPARE(::symlink("../../target.desktop", h + "/linked.desktop"), 0);
        // Sub-folders count to a depth.
        write(home() + QLatin1String("/a/b/c/three.desktop"), "Name=Three Deep\n");
        write(home() + QLatin1String("/a/b/c/d/four.desktop"), "Name=Four Deep\n");
    }

    void cleanupTestCase()
    {
        if (m_socket >= 0)
            ::close(m_socket);
    }

    void scanShowsWhatAMenuWouldShowFromAWorkerThread()
    {
        // The folders hold a FIFO, a socket, a device, link loops, a link to
        // "/" and a 4 GiB file: opening or reading any of them would hold
        // the scan for good, or take all memory.
        QSignalSpy classesRead(m_index.get(), &XdgDesktopEntryIndex::changed);
        std::packaged_task<QList<InstalledApp>()> task(
            [index = m_index] { return GioInstalledAppSource(index).scan(); });
        std::future<QList<InstalledApp>> done = task.get_future();
        std::thread worker(std::move(task));
        if (done.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
            worker.detach();
            QFAIL("the scan does not end");
        }
        worker.join();
        const QList<InstalledApp> apps = done.get();
        // The window classes it read reach the index on its own thread.
        QVERIFY(classesRead.wait(5000));

        QMap<QString, QString> byId; // bundle id → name
        for (const InstalledApp& app : apps) {
            QVERIFY(app.bundleId && app.name);
            QVERIFY2(QFile::exists(app.path), qPrintable(app.path));
            QVERIFY(!byId.contains(*app.bundleId));
            // Whatever entries other programs left near "/" count, but are
            // not this test's to know.
            if (!app.bundleId->startsWith(QLatin1String("root-")))
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
            {QStringLiteral("linked"), QStringLiteral("Linked")},
            {QStringLiteral("a-b-c-three"), QStringLiteral("Three Deep")},
        };
        QCOMPARE(byId, expected);

        // A FIFO swapped in where a file was found is not waited on either.
        QCOMPARE(XdgDesktopFiles::read((home() + QLatin1String("/fifo.desktop")).toLocal8Bit()),
                 std::nullopt);
        QCOMPARE(XdgDesktopFiles::read((home() + QLatin1String("/linked.desktop")).toLocal8Bit())
                     .value_or(QByteArray())
                     .contains("Name=Linked"),
                 true);
    }

    void windowsFindTheirEntries()
    {
        XdgDesktopEntryIndex& entries = *m_index;
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
        QCOMPARE(found({}, "Fifo", "fifo"), QStringLiteral("none"));
        QCOMPARE(found({}, "Zero", "zero"), QStringLiteral("none"));

        // Unusable entries name no window: hidden, not an application (nor
        // by its window class), TryExec or Exec not installed, shadowed.
        for (const char* cls : {"Gone", "Link", "LinkWin", "NoTried", "NoProgram", "ShadowWin"})
            QCOMPARE(found({}, cls, QByteArray(cls).toLower().constData()), QStringLiteral("none"));
        QCOMPARE(found({}, "Shared", "shared"), QStringLiteral("Second|second"));

        // An application id follows shadowing and masking, and never leads
        // out of the folders.
        QCOMPARE(found(QStringLiteral("shadowed"), "", ""), QStringLiteral("Mine|shadowed"));
        for (const char* id : {"masked", "vendor-..-..-..-outside", "vendor/../../../outside"})
            QCOMPARE(found(QString::fromLatin1(id), "", ""), QStringLiteral("none"));
    }

    void foldersAreWatchedEvenBeforeTheyExist()
    {
        GioInstalledAppSource source;
        QObject context;
        int changes = 0;
        source.watch(&context, [&] { ++changes; });
        // Apps installed for the user, and a folder of apps that appears.
        write(home() + QLatin1String("/installed.desktop"), "Name=Installed\n");
        QTRY_COMPARE_WITH_TIMEOUT(changes, 1, 10000);
        write(base() + QLatin1String("/later/applications/new.desktop"), "Name=New\n");
        QTRY_VERIFY_WITH_TIMEOUT(changes >= 2, 10000);
    }
};

QTEST_GUILESS_MAIN(XdgDesktopEntryIndexTest)
#include "XdgDesktopEntryIndexTest.moc"
