// SPDX-License-Identifier: MIT
#include "app/AppcastFeed.h"

#include <QXmlStreamReader>
#include <algorithm>

namespace velkor {

namespace {

const QString SparkleNamespace =
    QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

// Longer than any version a person would write.
constexpr qsizetype MaxVersionLength = 64;

// A version is shown to the user and compared in parts: a short line of
// printable characters, nothing that could reorder or hide the text around it.
bool isPlausibleVersion(const QString& version)
{
    if (version.isEmpty() || version.size() > MaxVersionLength)
        return false;
    return std::all_of(version.cbegin(), version.cend(), [](QChar c) { return c.isPrint(); });
}

// A version split into runs: numbers, letter runs; separators dropped.
struct VersionPart
{
    bool numeric;
    qulonglong number;
    QString text;
};

QList<VersionPart> splitVersion(const QString& version)
{
    QList<VersionPart> parts;
    int i = 0;
    while (i < version.size()) {
        const QChar c = version[i];
        if (c.isDigit()) {
            int j = i;
            while (j < version.size() && version[j].isDigit())
                ++j;
            parts.append({true, version.mid(i, j - i).toULongLong(), QString()});
            i = j;
        } else if (c.isLetter()) {
            int j = i;
            while (j < version.size() && version[j].isLetter())
                ++j;
            parts.append({false, 0, version.mid(i, j - i).toLower()});
            i = j;
        } else {
            ++i; // ".", "-", "_", spaces
        }
    }
    return parts;
}

// The value of an element or, on the enclosure, of the attribute.
QString sparkleAttribute(const QXmlStreamAttributes& attributes, const QString& name)
{
    const QStringView value = attributes.value(SparkleNamespace, name);
    return value.toString().trimmed();
}

bool readItem(QXmlStreamReader& reader, AppcastRelease& release)
{
    while (reader.readNextStartElement()) {
        const QStringView name = reader.name();
        const bool sparkle = reader.namespaceUri() == SparkleNamespace;
        if (name == u"enclosure" && !sparkle) {
            const QXmlStreamAttributes attributes = reader.attributes();
            release.downloadUrl =
                QUrl(attributes.value(QStringLiteral("url")).toString().trimmed());
            if (release.version.isEmpty())
                release.version = sparkleAttribute(attributes, QStringLiteral("version"));
            if (release.shortVersion.isEmpty())
                release.shortVersion =
                    sparkleAttribute(attributes, QStringLiteral("shortVersionString"));
            release.os = sparkleAttribute(attributes, QStringLiteral("os"));
            reader.skipCurrentElement();
        } else if (sparkle && name == u"version") {
            release.version = reader.readElementText().trimmed();
        } else if (sparkle && name == u"shortVersionString") {
            release.shortVersion = reader.readElementText().trimmed();
        } else if (sparkle && name == u"releaseNotesLink") {
            release.releaseNotesUrl = QUrl(reader.readElementText().trimmed());
        } else if (!sparkle && name == u"title") {
            release.title = reader.readElementText().trimmed();
        } else if (!sparkle && name == u"link") {
            const QUrl link(reader.readElementText().trimmed());
            if (release.releaseNotesUrl.isEmpty())
                release.releaseNotesUrl = link;
        } else {
            reader.skipCurrentElement();
        }
    }
    return !reader.hasError() && isPlausibleVersion(release.comparableVersion()) &&
           (release.version.isEmpty() || isPlausibleVersion(release.version));
}

// Moves to the document's first element. An appcast has no document type:
// one would bring entity declarations, which a hostile feed can use to grow
// a few bytes into a great deal of text.
bool enterRootElement(QXmlStreamReader& reader)
{
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isDTD())
            return false;
        if (reader.isStartElement())
            return true;
    }
    return false;
}

} // namespace

std::optional<QList<AppcastRelease>> AppcastFeed::parse(const QByteArray& xml)
{
    QXmlStreamReader reader(xml);
    if (!enterRootElement(reader) || reader.name() != u"rss")
        return std::nullopt;
    QList<AppcastRelease> releases;
    bool sawChannel = false;
    while (reader.readNextStartElement()) {
        if (reader.name() != u"channel") {
            reader.skipCurrentElement();
            continue;
        }
        sawChannel = true;
        while (reader.readNextStartElement()) {
            if (reader.name() != u"item") {
                reader.skipCurrentElement();
                continue;
            }
            AppcastRelease release;
            if (!readItem(reader, release))
                return std::nullopt;
            releases.append(release);
        }
    }
    // Drain to the end, so text after a broken tag is still caught.
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError() || !sawChannel)
        return std::nullopt;
    return releases;
}

std::optional<AppcastRelease> AppcastFeed::newest(const QList<AppcastRelease>& releases,
                                                  const QString& os)
{
    std::optional<AppcastRelease> best;
    for (const AppcastRelease& release : releases) {
        if (!release.os.isEmpty() && release.os.compare(os, Qt::CaseInsensitive) != 0)
            continue;
        if (!best || compareVersions(release.comparableVersion(), best->comparableVersion()) > 0)
            best = release;
    }
    return best;
}

int AppcastFeed::compareVersions(const QString& a, const QString& b)
{
    const QList<VersionPart> left = splitVersion(a);
    const QList<VersionPart> right = splitVersion(b);
    const qsizetype count = std::max(left.size(), right.size());
    for (qsizetype i = 0; i < count; ++i) {
        // A missing part is a zero; against a letter part (a pre-release
        // tag) the shorter version is the release and so the newer one.
        const VersionPart zero{true, 0, QString()};
        const VersionPart& l = i < left.size() ? left[i] : zero;
        const VersionPart& r = i < right.size() ? right[i] : zero;
        if (l.numeric && r.numeric) {
            if (l.number != r.number)
                return l.number < r.number ? -1 : 1;
            continue;
        }
        if (l.numeric != r.numeric) {
            // "1.0" (a zero part) against "1.0b1": the release is newer;
            // "1.0.1" against "1.0b1": the number is newer too.
            return l.numeric ? 1 : -1;
        }
        const int text = QString::compare(l.text, r.text);
        if (text != 0)
            return text < 0 ? -1 : 1;
    }
    return 0;
}

UpdateCheckResult UpdateCheckResult::fromFeed(const QByteArray& xml, const QString& currentVersion,
                                              const QString& os)
{
    const std::optional<QList<AppcastRelease>> releases = AppcastFeed::parse(xml);
    if (!releases)
        return failure(currentVersion, QStringLiteral("The update feed could not be read."));
    UpdateCheckResult result;
    result.currentVersion = currentVersion;
    result.release = AppcastFeed::newest(*releases, os);
    const bool newer =
        result.release &&
        AppcastFeed::compareVersions(result.release->comparableVersion(), currentVersion) > 0;
    // The download is offered to the user's browser: only over https.
    const QUrl download = newer ? result.release->downloadUrl : QUrl();
    if (!download.isEmpty() && (!download.isValid() || download.scheme() != u"https"))
        return failure(currentVersion,
                       QStringLiteral("The update feed offers a download that is not https."));
    result.outcome = newer ? Outcome::updateAvailable : Outcome::upToDate;
    return result;
}

UpdateCheckResult UpdateCheckResult::failure(const QString& currentVersion, const QString& error)
{
    UpdateCheckResult result;
    result.outcome = Outcome::failed;
    result.currentVersion = currentVersion;
    result.error = error;
    return result;
}

QString UpdateCheckResult::title() const
{
    switch (outcome) {
    case Outcome::updateAvailable:
        return QStringLiteral("A new version of Velkor is available");
    case Outcome::upToDate:
        return QStringLiteral("You're up to date");
    case Outcome::failed:
        break;
    }
    return QStringLiteral("Could not check for updates");
}

QString UpdateCheckResult::message() const
{
    switch (outcome) {
    case Outcome::updateAvailable:
        return QStringLiteral("Velkor %1 is available; you have %2.")
            .arg(release->comparableVersion(), currentVersion);
    case Outcome::upToDate:
        return QStringLiteral("Velkor %1 is the newest version available.").arg(currentVersion);
    case Outcome::failed:
        break;
    }
    return error;
}

} // namespace velkor
