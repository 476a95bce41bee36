// SPDX-License-Identifier: MIT
#include "platform/x11/LinuxAppcastUpdater.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QSignalSpy>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QtTest>

using namespace velkor;
using velkor::x11::LinuxAppcastUpdater;
using Outcome = UpdateCheckResult::Outcome;
Q_DECLARE_METATYPE(velkor::UpdateCheckResult::Outcome)

namespace {

// Where the build puts the download module; the test's own directory has none.
const QString ModuleDirectory = QStringLiteral(VELKOR_FEED_DOWNLOADER_DIR);
const QString Fixtures = QStringLiteral(VELKOR_FIXTURES);

QByteArray fixture(const QString& name)
{
    QFile file(Fixtures + QStringLiteral("/appcast/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray response(const QByteArray& status, const QByteArray& headers, const QByteArray& body)
{
    return "HTTP/1.1 " + status + "\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

// An update server on 127.0.0.1, over TLS with a certificate of the test's
// own (trusted by the test alone), or over plain http. It answers each path:
//   /<fixture>   the fixture, or 404
//   /endless     a body that never ends, as fast as it is taken
//   /declared    a header announcing ten gigabytes
//   /trickle     a body that never ends, a byte at a time
//   /to-http     a redirect to plain http
// It counts the requests and notes when a client hangs up.
class FeedServer : public QObject
{
public:
    explicit FeedServer(bool tls = true) : m_tls(tls)
    {
        QTcpServer* server = &m_plain;
        if (tls) {
            QSslConfiguration config = QSslConfiguration::defaultConfiguration();
            config.setLocalCertificate(certificate());
            QFile key(Fixtures + QStringLiteral("/tls/feed-server.key"));
            key.open(QIODevice::ReadOnly);
            config.setPrivateKey(QSslKey(&key, QSsl::Ec));
            m_tlsServer.setSslConfiguration(config);
            server = &m_tlsServer;
        }
        server->listen(QHostAddress::LocalHost);
        QObject::connect(server, &QTcpServer::pendingConnectionAvailable, this, [this, server] {
            while (QTcpSocket* socket = server->nextPendingConnection())
                serve(socket);
        });
    }

    static QSslCertificate certificate()
    {
        QFile file(Fixtures + QStringLiteral("/tls/feed-server.crt"));
        file.open(QIODevice::ReadOnly);
        return QSslCertificate(&file);
    }

    QUrl url(const QString& path) const
    {
        const quint16 port = m_tls ? m_tlsServer.serverPort() : m_plain.serverPort();
        return QUrl(QStringLiteral("%1://127.0.0.1:%2/%3")
                        .arg(m_tls ? "https" : "http")
                        .arg(port)
                        .arg(path));
    }

    QUrl redirectTarget; // where /to-http sends the client
    int requests = 0;
    int hangUps = 0;
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
            answer(socket, request.split(' ').value(1).mid(1));
        });
        QObject::connect(socket, &QTcpSocket::disconnected, socket, [this, socket] {
            ++hangUps;
            socket->deleteLater();
        });
    }

    void answer(QTcpSocket* socket, const QByteArray& path)
    {
        const QByteArray streamed = "HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\n";
        if (path == "endless") {
            socket->write(streamed + "Connection: close\r\n\r\n<rss><channel><title>");
            // As fast as the client takes it, and no faster: TLS holds what it
            // has encrypted apart from what waits to be.
            auto* tls = qobject_cast<QSslSocket*>(socket);
            const auto more = [socket, tls] {
                const qint64 waiting =
                    socket->bytesToWrite() + (tls ? tls->encryptedBytesToWrite() : 0);
                if (waiting < 256 * 1024)
                    socket->write(QByteArray(64 * 1024, 'x'));
            };
            QObject::connect(socket, &QTcpSocket::bytesWritten, socket, more);
            if (tls)
                QObject::connect(tls, &QSslSocket::encryptedBytesWritten, socket, more);
            more();
        } else if (path == "declared") {
            socket->write(streamed + "Content-Length: 10000000000\r\n\r\n<rss>");
        } else if (path == "trickle") {
            socket->write(streamed + "Connection: close\r\n\r\n<rss>");
            auto* drip = new QTimer(socket);
            QObject::connect(drip, &QTimer::timeout, socket, [socket] { socket->write(" "); });
            drip->start(50);
        } else if (path == "to-http") {
            socket->write(response("302 Found", "Location: " + redirectTarget.toEncoded() + "\r\n",
                                   QByteArray()));
            socket->disconnectFromHost();
        } else {
            const QByteArray body = fixture(QString::fromLatin1(path));
            socket->write(response(body.isEmpty() ? "404 Not Found" : "200 OK",
                                   "Content-Type: application/xml\r\n", body));
            socket->disconnectFromHost();
        }
    }

    bool m_tls;
    QSslServer m_tlsServer;
    QTcpServer m_plain;
};

LinuxAppcastUpdater::Presenter into(QList<UpdateCheckResult>& shown)
{
    return [&shown](const UpdateCheckResult& r) { shown.append(r); };
}

} // namespace

class LinuxAppcastUpdaterTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void reportsEachFeedOutcome_data();
    void reportsEachFeedOutcome();
    void aHostileFeedEndsInOneCouldNotCheck_data();
    void aHostileFeedEndsInOneCouldNotCheck();
    void theDialogShowsTheFeedsTextAsPlainText();
    void unloadableModuleFailsTheCheck_data();
    void unloadableModuleFailsTheCheck();
    void destroyedMidTransferTellsNothing();
};

void LinuxAppcastUpdaterTest::initTestCase()
{
    // The test's server certificate, trusted here and nowhere else.
    const QSslCertificate certificate = FeedServer::certificate();
    QVERIFY(!certificate.isNull());
    QSslConfiguration config = QSslConfiguration::defaultConfiguration();
    config.addCaCertificate(certificate);
    QSslConfiguration::setDefaultConfiguration(config);
}

void LinuxAppcastUpdaterTest::reportsEachFeedOutcome_data()
{
    QTest::addColumn<QString>("feed");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("offered");
    QTest::newRow("newer") << "newer.xml" << Outcome::updateAvailable << "0.10.0";
    QTest::newRow("same") << "same.xml" << Outcome::upToDate << "0.1.0";
}

void LinuxAppcastUpdaterTest::reportsEachFeedOutcome()
{
    QFETCH(QString, feed);
    QFETCH(Outcome, outcome);
    QFETCH(QString, offered);

    FeedServer server;
    QList<UpdateCheckResult> shown;
    LinuxAppcastUpdater updater(server.url(feed), QStringLiteral("0.1.0"), into(shown),
                                ModuleDirectory);
    QVERIFY(updater.isAvailable());
    QCOMPARE(server.requests, 0); // nothing is fetched before the user asks
    updater.checkForUpdates();
    updater.checkForUpdates(); // one check at a time
    QVERIFY(updater.isChecking());
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 1, 10000);
    QTest::qWait(50);
    QCOMPARE(shown.size(), 1);
    QCOMPARE(server.requests, 1);
    QCOMPARE(server.userAgent, QByteArray("Velkor/0.1.0"));
    QCOMPARE(shown[0].outcome, outcome);
    QCOMPARE(shown[0].currentVersion, QStringLiteral("0.1.0"));
    QCOMPARE(shown[0].release->comparableVersion(), offered);
    QVERIFY(!updater.isChecking());
    // Once done, the menu item checks again.
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 2, 10000);
    QCOMPARE(server.requests, 2);

    // Without an address there is nothing to check.
    LinuxAppcastUpdater none(QUrl(), QStringLiteral("0.1.0"), into(shown), ModuleDirectory);
    QVERIFY(!none.isAvailable());
    none.checkForUpdates();
    QVERIFY(!none.isChecking());
}

void LinuxAppcastUpdaterTest::aHostileFeedEndsInOneCouldNotCheck_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    // What the feed's reader rejects is its own test's; one such feed shows
    // that a rejection ends the check.
    QTest::newRow("malformed") << "malformed.xml"
                               << "could not be read";
    QTest::newRow("missing") << "gone.xml"
                             << "could not be downloaded";
    QTest::newRow("endless") << "endless"
                             << "larger than 65536 bytes";
    QTest::newRow("declared too large") << "declared"
                                        << "larger than 65536 bytes";
    QTest::newRow("never done") << "trickle"
                                << "took longer than 1 s";
    QTest::newRow("redirected to http") << "to-http"
                                        << "could not be downloaded";
    QTest::newRow("feed over http") << "http"
                                    << "only checked over https";
    QTest::newRow("nobody listening") << "closed"
                                      << "could not be downloaded";
}

void LinuxAppcastUpdaterTest::aHostileFeedEndsInOneCouldNotCheck()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);

    FeedServer server;
    FeedServer plain(false);
    server.redirectTarget = plain.url(QStringLiteral("newer.xml"));
    QUrl feed = server.url(path);
    if (path == QLatin1String("http"))
        feed = plain.url(QStringLiteral("newer.xml"));
    if (path == QLatin1String("closed")) {
        QTcpServer probe; // a port that was just free: the connection is refused
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        feed.setPort(probe.serverPort());
    }
    QList<UpdateCheckResult> shown;
    LinuxAppcastUpdater updater(feed, QStringLiteral("0.1.0"), into(shown), ModuleDirectory);
    updater.setLimits(1000, 64 * 1024);
    updater.checkForUpdates();
    QTRY_COMPARE_WITH_TIMEOUT(shown.size(), 1, 10000);
    const UpdateCheckResult& result = shown[0];
    QCOMPARE(result.outcome, Outcome::failed);
    QCOMPARE(result.title(), QStringLiteral("Could not check for updates"));
    QVERIFY2(result.message().contains(reason), qPrintable(result.message()));
    QVERIFY(!result.release);
    // Nothing plain was fetched, and a transfer cut short was hung up on.
    QCOMPARE(plain.requests, 0);
    if (path == QLatin1String("endless") || path == QLatin1String("trickle"))
        QTRY_COMPARE_WITH_TIMEOUT(server.hangUps, 1, 5000);
    QTest::qWait(100);
    QCOMPARE(shown.size(), 1);
    QVERIFY(!updater.isChecking());
}

void LinuxAppcastUpdaterTest::theDialogShowsTheFeedsTextAsPlainText()
{
    UpdateCheckResult result;
    result.outcome = Outcome::updateAvailable;
    result.currentVersion = QStringLiteral("0.1.0");
    result.release = AppcastRelease{};
    result.release->shortVersion = QStringLiteral("<a href='https://elsewhere.example'>9</a>");
    result.release->downloadUrl = QUrl(QStringLiteral("https://velkor.example/velkor.tar.gz"));
    LinuxAppcastUpdater::showDialog(result);

    QMessageBox* box = nullptr;
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            for (QWidget* widget : QApplication::topLevelWidgets())
                if (auto* found = qobject_cast<QMessageBox*>(widget); found && found->isVisible())
                    box = found;
            return box != nullptr;
        }(),
        5000);
    bool markupShown = false;
    for (const QLabel* label : box->findChildren<QLabel*>()) {
        QCOMPARE(label->textFormat(), Qt::PlainText);
        markupShown = markupShown || label->text().contains(result.release->shortVersion);
    }
    QVERIFY(markupShown);
    box->close();
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
    LinuxAppcastUpdater updater(server.url("newer.xml"), QStringLiteral("0.1.0"), into(shown),
                                directory.path());
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
    // A server that takes the connection and never answers, not even the
    // TLS handshake.
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    QList<QTcpSocket*> held;
    connect(&silent, &QTcpServer::newConnection, this, [&] {
        while (QTcpSocket* socket = silent.nextPendingConnection())
            held.append(socket);
    });
    QList<UpdateCheckResult> shown;
    {
        LinuxAppcastUpdater updater(
            QUrl(QStringLiteral("https://127.0.0.1:%1/feed.xml").arg(silent.serverPort())),
            QStringLiteral("0.1.0"), into(shown), ModuleDirectory);
        updater.checkForUpdates();
        QTRY_COMPARE_WITH_TIMEOUT(held.size(), 1, 5000);
        QVERIFY(updater.isChecking());
    }
    QTRY_COMPARE_WITH_TIMEOUT(held[0]->state(), QAbstractSocket::UnconnectedState, 5000);
    QTest::qWait(50);
    QCOMPARE(shown.size(), 0);
}

QTEST_MAIN(LinuxAppcastUpdaterTest)
#include "LinuxAppcastUpdaterTest.moc"
