// SPDX-License-Identifier: MIT
#include "app/AppcastFeed.h"

#include <QFile>
#include <QtTest>

using namespace velkor;

namespace {

QByteArray fixture(const char* name)
{
    QFile file(QStringLiteral(VELKOR_APPCAST_FIXTURES "/") + QString::fromLatin1(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", name);
    return file.readAll();
}

} // namespace

class AppcastFeedTest : public QObject
{
    Q_OBJECT
private slots:
    void versionsCompareByParts();
    void readsItemsFromElementsAndEnclosure();
    void rejectsWhatIsNotAnAppcast();
    void judgesTheFeedAgainstThisBuild();
};

void AppcastFeedTest::versionsCompareByParts()
{
    // Numbers not text, an extra part, pre-releases before the release and
    // in order, alpha before beta, build numbers.
    const std::pair<const char*, const char*> olderNewer[] = {
        {"0.9.0", "0.10.0"}, {"1.0", "1.0.1"},   {"1.0b2", "1.0"}, {"1.0b2", "1.0b10"},
        {"2.0a3", "2.0b1"},  {"1.0.1", "1.1b1"}, {"99", "100"}};
    for (const auto& [older, newer] : olderNewer) {
        QVERIFY2(AppcastFeed::compareVersions(older, newer) < 0, older);
        QVERIFY2(AppcastFeed::compareVersions(newer, older) > 0, newer);
        QCOMPARE(AppcastFeed::compareVersions(newer, newer), 0);
    }
    // Trailing zeros and separators do not make a version newer.
    QCOMPARE(AppcastFeed::compareVersions("1.0", "1.0.0"), 0);
    QCOMPARE(AppcastFeed::compareVersions("1-2", "1.2"), 0);
}

void AppcastFeedTest::readsItemsFromElementsAndEnclosure()
{
    const auto releases = AppcastFeed::parse(fixture("newer.xml"));
    QVERIFY(releases);
    QCOMPARE(releases->size(), 3);
    const AppcastRelease& first = releases->at(0);
    QCOMPARE(first.title, QStringLiteral("Version 0.9.0"));
    QCOMPARE(first.version, QStringLiteral("90"));
    QCOMPARE(first.shortVersion, QStringLiteral("0.9.0"));
    QCOMPARE(first.downloadUrl, QUrl("https://velkor.example/velkor-0.9.0.tar.gz"));
    QVERIFY(first.os.isEmpty());
    // Versions given only on the enclosure; the item's link as its notes.
    const AppcastRelease& second = releases->at(1);
    QCOMPARE(second.version, QStringLiteral("100"));
    QCOMPARE(second.shortVersion, QStringLiteral("0.10.0"));
    QCOMPARE(second.os, QStringLiteral("linux"));
    QCOMPARE(second.releaseNotesUrl, QUrl("https://velkor.example/notes/0.10.0"));
    QCOMPARE(releases->at(2).releaseNotesUrl, QUrl("https://velkor.example/notes/2.0.0"));
    // The newest release for a system skips those for others.
    QCOMPARE(AppcastFeed::newest(*releases, "linux")->shortVersion, QStringLiteral("0.10.0"));
    QCOMPARE(AppcastFeed::newest(*releases, "macos")->shortVersion, QStringLiteral("2.0.0"));
    QCOMPARE(AppcastFeed::newest(*releases, "windows")->shortVersion, QStringLiteral("0.9.0"));

    // A channel with no items is a valid, empty feed.
    const auto empty = AppcastFeed::parse("<rss><channel><title>x</title></channel></rss>");
    QVERIFY(empty);
    QVERIFY(empty->isEmpty());
    QVERIFY(!AppcastFeed::newest(*empty, "linux"));
}

void AppcastFeedTest::rejectsWhatIsNotAnAppcast()
{
    QVERIFY(!AppcastFeed::parse(fixture("malformed.xml")));
    QVERIFY(!AppcastFeed::parse(QByteArray()));
    QVERIFY(!AppcastFeed::parse("<html><body>Not found</body></html>"));
    QVERIFY(!AppcastFeed::parse("<rss></rss>"));
    // An item that names no version cannot be compared.
    QVERIFY(!AppcastFeed::parse("<rss><channel><item><title>x</title></item></channel></rss>"));
    // Truncated in transit.
    QVERIFY(!AppcastFeed::parse(fixture("newer.xml").left(600)));

    // A document type would bring entity declarations; an appcast has none,
    // even a harmless one.
    const QByteArray item = "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/"
                            "sparkle\"><channel><item><sparkle:shortVersionString>%1"
                            "</sparkle:shortVersionString></item></channel></rss>";
    QVERIFY(AppcastFeed::parse(QByteArray(item).replace("%1", "1.0")));
    QVERIFY(!AppcastFeed::parse("<!DOCTYPE rss [<!ENTITY v \"1.0\">]>" +
                                QByteArray(item).replace("%1", "&v;")));
    QVERIFY(!AppcastFeed::parse(fixture("entities.xml")));
    // A version is a short line of visible text.
    QVERIFY(!AppcastFeed::parse(QByteArray(item).replace("%1", QByteArray(65, '9'))));
    QVERIFY(!AppcastFeed::parse(QByteArray(item).replace("%1", "1.0&#x202E;")));
    QVERIFY(!AppcastFeed::parse(QByteArray(item).replace("%1", "1.0&#10;2.0")));
}

void AppcastFeedTest::judgesTheFeedAgainstThisBuild()
{
    using Outcome = UpdateCheckResult::Outcome;
    UpdateCheckResult result = UpdateCheckResult::fromFeed(fixture("newer.xml"), "0.1.0", "linux");
    QCOMPARE(result.outcome, Outcome::updateAvailable);
    QCOMPARE(result.release->shortVersion, QStringLiteral("0.10.0"));
    QVERIFY(result.message().contains(QStringLiteral("0.10.0")));
    QVERIFY(result.message().contains(QStringLiteral("0.1.0")));

    // The same version, and a beta of it, are not updates.
    result = UpdateCheckResult::fromFeed(fixture("same.xml"), "0.1.0", "linux");
    QCOMPARE(result.outcome, Outcome::upToDate);
    QCOMPARE(result.title(), QStringLiteral("You're up to date"));

    // This build newer than the feed (a developer build): up to date too.
    result = UpdateCheckResult::fromFeed(fixture("newer.xml"), "1.0.0", "linux");
    QCOMPARE(result.outcome, Outcome::upToDate);

    // A download offered over plain http is not offered at all.
    result = UpdateCheckResult::fromFeed(fixture("http-download.xml"), "0.1.0", "linux");
    QCOMPARE(result.outcome, Outcome::failed);
    QCOMPARE(result.title(), QStringLiteral("Could not check for updates"));
    QCOMPARE(result.message(),
             QStringLiteral("The update feed offers a download that is not https."));
    QVERIFY(!result.release);
}

QTEST_GUILESS_MAIN(AppcastFeedTest)
#include "AppcastFeedTest.moc"
