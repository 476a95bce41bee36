// SPDX-License-Identifier: MIT
#include "platform/x11/DBusSingleInstance.h"

#include <QDBusConnectionInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QtTest>

using velkor::SingleInstance;
using velkor::x11::DBusSingleInstance;
using Claim = SingleInstance::Claim;

namespace {

// A session bus of the test's own; with refuseVelkor, one whose policy
// gives no name under org.velkor to anyone.
class PrivateBus
{
public:
    explicit PrivateBus(bool refuseVelkor = false)
    {
        const QString config =
            QStringLiteral(VELKOR_FIXTURES "/dbus/%1")
                .arg(refuseVelkor ? "session-bus-refusing-velkor.conf" : "session-bus.conf");
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {"--config-file=" + config, "--nofork", "--nopidfile", "--print-address=1"});
        if (m_daemon.waitForStarted(5000) && m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    }

    ~PrivateBus()
    {
        for (const QString& name : std::as_const(m_connections))
            QDBusConnection::disconnectFromBus(name);
        m_daemon.terminate();
        m_daemon.waitForFinished(5000);
    }

    bool isUp() const { return !m_address.isEmpty(); }

    // A connection of its own, as another process would have.
    QDBusConnection connect()
    {
        static int n = 0;
        const QString name = QStringLiteral("private-bus-%1").arg(++n);
        m_connections.append(name);
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_connections;
};

} // namespace

class DBusSingleInstanceTest : public QObject
{
    Q_OBJECT

private slots:
    void oneNamePerDisplayHoweverSpelt()
    {
        const QString zero = DBusSingleInstance::serviceNameFor(QStringLiteral(":0"));
        QCOMPARE(zero, QStringLiteral("org.velkor.Velkor.display_0"));
        for (const char* same : {":0.0", ":0.1", "unix:0", "unix:0.0", "unix/:0"})
            QCOMPARE(DBusSingleInstance::serviceNameFor(QString::fromLatin1(same)), zero);
        QCOMPARE(DBusSingleInstance::serviceNameFor(QStringLiteral("LocalHost:10.0")),
                 DBusSingleInstance::serviceNameFor(QStringLiteral("localhost:10")));

        // Other servers keep their own: another number, a remote host, a
        // name xcb cannot read.
        const QStringList others{":1",
                                 ":10",
                                 "localhost:10",
                                 "local_host:10",
                                 "local-host:10",
                                 "hôst.example:0",
                                 "",
                                 "/tmp/x:y",
                                 QString(300, QLatin1Char('h')) + ":0"};
        QSet<QString> names{zero};
        for (const QString& display : others) {
            const QString name = DBusSingleInstance::serviceNameFor(display);
            QVERIFY2(!names.contains(name), qPrintable(display));
            names.insert(name);
        }
    }

    void onlyTheBusOwnerRuns()
    {
        PrivateBus bus;
        if (!bus.isUp())
            QSKIP("dbus-daemon is not installed");

        // The first start owns its display's name; the odd names are valid
        // bus names (the bus checks them).
        DBusSingleInstance first(bus.connect(), QStringLiteral(":7"));
        QCOMPARE(first.claim(), Claim::claimed);
        for (const QString& display :
             {QStringLiteral("hôst.example:0"), QString(300, QLatin1Char('h')) + ":0"}) {
            DBusSingleInstance elsewhere(bus.connect(), display);
            QCOMPARE(elsewhere.claim(), Claim::claimed);
        }

        // The first runs on a thread of its own here, as it would in its own
        // process, so that it can answer while the second start waits.
        QThread running;
        running.start();
        first.moveToThread(&running);
        int asked = 0;
        connect(&first, &SingleInstance::showSettingsRequested, this, [&] { ++asked; });
        {
            DBusSingleInstance second(bus.connect(), QStringLiteral("unix:7.0"));
            QCOMPARE(second.claim(), Claim::anotherRuns);
        }
        QTRY_COMPARE_WITH_TIMEOUT(asked, 1, 5000);
        QMetaObject::invokeMethod(
            &first, [&] { first.moveToThread(thread()); }, Qt::BlockingQueuedConnection);
        running.quit();
        running.wait();

        // A name held by a program that will not take the hand-over still
        // means another copy runs: two would fight for the activation key.
        QDBusConnection holder = bus.connect();
        const QString name = DBusSingleInstance::serviceNameFor(QStringLiteral(":8"));
        QVERIFY(holder.registerService(name));
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("did not show its settings")));
        QCOMPARE(DBusSingleInstance(bus.connect(), QStringLiteral(":8")).claim(),
                 Claim::anotherRuns);
    }

    void withoutAnAnswerFromTheBusItRunsAndSaysWhy()
    {
        PrivateBus refusing(true);
        if (!refusing.isUp())
            QSKIP("dbus-daemon is not installed");
        QTest::ignoreMessage(
            QtWarningMsg,
            QRegularExpression(QStringLiteral(
                "^cannot tell whether Velkor already runs: the session bus refused the name "
                "org\\.velkor\\.Velkor\\.display_7 \\(org\\.freedesktop\\.DBus\\.Error\\."
                "AccessDenied: .*\\); running as the only copy$")));
        QDBusConnection connection = refusing.connect();
        DBusSingleInstance refused(connection, QStringLiteral(":7"));
        QCOMPARE(refused.claim(), Claim::unchecked);
        QVERIFY(!connection.interface()->isServiceRegistered(refused.serviceName()));

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral(
                                               "^cannot tell whether Velkor already runs: no "
                                               "session bus \\(.+\\); running as the only copy$")));
        const QDBusConnection none = QDBusConnection::connectToBus(
            QStringLiteral("unix:path=/nonexistent/velkor-test-bus"), QStringLiteral("none"));
        QCOMPARE(DBusSingleInstance(none, QStringLiteral(":7")).claim(), Claim::unchecked);
        QDBusConnection::disconnectFromBus(QStringLiteral("none"));
    }
};

QTEST_GUILESS_MAIN(DBusSingleInstanceTest)
#include "DBusSingleInstanceTest.moc"
