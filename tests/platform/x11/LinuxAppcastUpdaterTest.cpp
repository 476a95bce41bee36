// SPDX-License-Identifier: MIT
#include "platform/x11/LinuxAppcastUpdater.h"

#include <QFile>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

using namespace velkor;
using velkor::x11::LinuxAppcastUpdater;
using Outcome = UpdateCheckResult::Outcome;
Q_DECLARE_METATYPE(velkor::UpdateCheckResult::Outcome)

namespace {

// Where the build puts the download module; the test's own directory has none.
const QString ModuleDirectory = QStringLiteral(VELKOR_FEED_DOWNLOADER_DIR);

QByteArray fixture(const QString& name)
{
    QFile file(QStringLiteral(VELKOR_APPCAST_FIXTURES "/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Answers every request with the fixture named by its path ("/newer.xml"),
// or 404, and counts the requests.
class FeedServer : public QObject
{
public:
    FeedServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection())
                serve(socket);
        });
    }

    QUrl url(const QString& name) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/%2").arg(m_server.serverPort()).arg(name));
    }

    int requests = 0;
    QByteArray userAgent; // of the last request

private:
    void serve(QTcpSocket* socket)
    {
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
            const QByteArray request = socket->readAll();
            if (!request.contains("\r\n\r\n"))
                return;
            ++requests;
            const int agent = request.indexOf("User-Agent: ");
            userAgent = agent < 0
                            ? QByteArray()
                            : request.mid(agent + 12, request.indexOf("\r\n", agent) - agent - 12);
            const QByteArray path = request.split(' ').value(1);
            const QByteArray body = fixture(QString::fromLatin1(path.mid(1)));
            const QByteArray status = body.isEmpty() ? "404 Not Found" : "200 OK";
            socket->write("HTTP/1.1 " + status + "\r\nContent-Type: application/xml\r\n" +
                          "Content-Length: " + QByteArray::number(body.size()) +
                          "\r\nConnection: close\r\n\r\n" + body);
            socket->disconnectFromHost();
        });
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    QTcpServer m_server;
};

} // namespace

class LinuxAppcastUpdaterTest : public QObject
{
    Q_OBJECT
private slots:
    void reportsEachFeedOutcome_data();
    void reportsEachFeedOutcome();
    void unreachableFeedFails();
    void withoutAFeedNothingIsRequested();
    void oneCheckAtATime();
    void unloadableModuleFailsTheCheck_data();
    void unloadableModuleFailsTheCheck();
    void destroyedMidTransferTellsNothing();
};

void LinuxAppcastUpdaterTest::reportsEachFeedOutcome_data()
{
    QTest::addColumn<QString>("feed");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("offered");
    QTest::newRow("newer") << "newer.xml" << Outcome::updateAvailable << "0.10.0";
    QTest::newRow("same") << "same.xml" << Outcome::upToDate << "0.1.0";
    QTest::newRow("malformed") << "malformed.xml" << Outcome::failed << "";
    QTest::newRow("missing") << "gone.xml" << Outcome::failed << "";
}

void LinuxAppcastUpdaterTest::reportsEachFeedOutcome()
{
    QFETCH(QString, feed);
    QFETCH(Outcome, outcome);
    QFETCH(QString, offered);

    FeedServer server;
    QList<UpdateCheckResult> shown;
    LinuxAppcastUpdater updater(
        server.url(feed), QStringLiteral("0.1.0"),
        [&](const UpdateCheckResult& r) { shown.append(r); }, ModuleDirectory);
    QVERIFY(updater.isAvailable());
    QCOMPARE(server.requests, 0); // nothing is fetched before the user asks
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 1, 10000);
    QCOMPARE(server.requests, 1);
    QCOMPARE(server.userAgent, QByteArray("Velkor/0.1.0"));
    QCOMPARE(shown[0].outcome, outcome);
    QCOMPARE(shown[0].currentVersion, QStringLiteral("0.1.0"));
    if (!offered.isEmpty())
        QCOMPARE(shown[0].release->comparableVersion(), offered);
    QVERIFY(!updater.isChecking());
}

void LinuxAppcastUpdaterTest::unreachableFeedFails()
{
    // A port that was just free: the connection is refused.
    quint16 port = 0;
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        port = probe.serverPort();
    }
    QList<UpdateCheckResult> shown;
    LinuxAppcastUpdater updater(
        QUrl(QStringLiteral("http://127.0.0.1:%1/feed.xml").arg(port)), QStringLiteral("0.1.0"),
        [&](const UpdateCheckResult& r) { shown.append(r); }, ModuleDirectory);
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 1, 10000);
    QCOMPARE(shown[0].outcome, Outcome::failed);
    QVERIFY(shown[0].message().contains(QStringLiteral("could not be reached")));
}

void LinuxAppcastUpdaterTest::withoutAFeedNothingIsRequested()
{
    int shown = 0;
    LinuxAppcastUpdater updater(
        QUrl(), QStringLiteral("0.1.0"), [&](const UpdateCheckResult&) { ++shown; },
        ModuleDirectory);
    QVERIFY(!updater.isAvailable());
    updater.checkForUpdates();
    QVERIFY(!updater.isChecking());
    QTest::qWait(50);
    QCOMPARE(shown, 0);
}

void LinuxAppcastUpdaterTest::oneCheckAtATime()
{
    FeedServer server;
    int shown = 0;
    LinuxAppcastUpdater updater(
        server.url("newer.xml"), QStringLiteral("0.1.0"),
        [&](const UpdateCheckResult&) { ++shown; }, ModuleDirectory);
    updater.checkForUpdates();
    updater.checkForUpdates();
    QVERIFY(updater.isChecking());
    QTRY_COMPARE_WITH_TIMEOUT(shown, 1, 10000);
    QTest::qWait(50);
    QCOMPARE(shown, 1);
    QCOMPARE(server.requests, 1);

    // Once done, the menu item checks again.
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown, 2, 10000);
    QCOMPARE(server.requests, 2);
}

void LinuxAppcastUpdaterTest::unloadableModuleFailsTheCheck_data()
{
    QTest::addColumn<QByteArray>("moduleFile"); // empty: no module file at all
    QTest::addColumn<QString>("reason");
    QTest::newRow("absent") << QByteArray() << "was not found in";
    QTest::newRow("not a library") << QByteArray("not an ELF file") << "velkor-feed-downloader.so";
}

void LinuxAppcastUpdaterTest::unloadableModuleFailsTheCheck()
{
    QFETCH(QByteArray, moduleFile);
    QFETCH(QString, reason);

    QTemporaryDir directory;
    QVERIFY(directory.isValid());
    if (!moduleFile.isEmpty()) {
        QFile file(directory.filePath(QStringLiteral("velkor-feed-downloader.so")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(moduleFile);
    }
    FeedServer server;
    QList<UpdateCheckResult> shown;
    LinuxAppcastUpdater updater(
        server.url("newer.xml"), QStringLiteral("0.1.0"),
        [&](const UpdateCheckResult& r) { shown.append(r); }, directory.path());
    QSignalSpy checked(&updater, &LinuxAppcastUpdater::checked);
    updater.checkForUpdates();
    updater.checkForUpdates();
    QVERIFY(updater.isChecking());
    QCOMPARE(shown.size(), 0); // told from the event loop, like a failed transfer

    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 1, 5000);
    QCOMPARE(checked.size(), 1);
    QCOMPARE(shown[0].outcome, Outcome::failed);
    QVERIFY2(shown[0].message().contains(QStringLiteral("The update checker could not be loaded")),
             qPrintable(shown[0].message()));
    QVERIFY2(shown[0].message().contains(reason), qPrintable(shown[0].message()));
    QVERIFY(!updater.isChecking());
    QCOMPARE(server.requests, 0);

    // The next check tries the module again.
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 2, 5000);
    QCOMPARE(shown[1].outcome, Outcome::failed);
}

void LinuxAppcastUpdaterTest::destroyedMidTransferTellsNothing()
{
    // A server that takes the request and never answers.
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QList<QTcpSocket*> held;
    connect(&silent, &QTcpServer::newConnection, this, [&] {
        while (QTcpSocket* socket = silent.nextPendingConnection())
            held.append(socket);
    });
    int shown = 0;
    {
        LinuxAppcastUpdater updater(
            QUrl(QStringLiteral("http://127.0.0.1:%1/feed.xml").arg(silent.serverPort())),
            QStringLiteral("0.1.0"), [&](const UpdateCheckResult&) { ++shown; }, ModuleDirectory);
        updater.checkForUpdates();
        QTRY_COMPARE_WITH_TIMEOUT(held.size(), 1, 5000);
        QVERIFY(updater.isChecking());
    }
    QTRY_COMPARE_WITH_TIMEOUT(held[0]->state(), QAbstractSocket::UnconnectedState, 5000);
    QTest::qWait(50);
    QCOMPARE(shown, 0);
}

QTEST_GUILESS_MAIN(LinuxAppcastUpdaterTest)
#include "LinuxAppcastUpdaterTest.moc"
