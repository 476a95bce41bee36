// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

namespace velkor {

// One release offered by an update feed in Sparkle's appcast format (RSS 2.0
// with the sparkle: namespace).
struct AppcastRelease
{
    QString title;
    QString version;      // sparkle:version, the build number
    QString shortVersion; // sparkle:shortVersionString, shown to people
    QUrl downloadUrl;     // the enclosure's url
    QUrl releaseNotesUrl; // sparkle:releaseNotesLink, else the item's link
    QString os;           // the enclosure's sparkle:os, empty for any

    // The version compared with this build's: the short version when the feed
    // gives one (this build only knows its marketing version), else the build.
    QString comparableVersion() const { return shortVersion.isEmpty() ? version : shortVersion; }
};

// Reading a feed and choosing from it.
class AppcastFeed
{
public:
    // The releases in feed order; absent when the text is not an appcast
    // (not well-formed XML, no rss/channel, or an item without a version).
    static std::optional<QList<AppcastRelease>> parse(const QByteArray& xml);

    // The newest release for the operating system os ("linux", "macos"),
    // counting releases that name no system; absent when there is none.
    static std::optional<AppcastRelease> newest(const QList<AppcastRelease>& releases,
                                                const QString& os);

    // Orders version strings as Sparkle does: runs of digits compare as
    // numbers, other runs as text, a missing part counts as zero, and a
    // letter part (a pre-release such as "b2") sorts before the plain release.
    // <0, 0 or >0.
    static int compareVersions(const QString& a, const QString& b);
};

// What a user-started update check found, and how it is told.
struct UpdateCheckResult
{
    enum class Outcome
    {
        updateAvailable,
        upToDate,
        failed
    };

    Outcome outcome = Outcome::failed;
    QString currentVersion;
    std::optional<AppcastRelease> release; // the newest release, when one was read
    QString error;                         // why the check failed

    // Judges a downloaded feed against this build's version.
    static UpdateCheckResult fromFeed(const QByteArray& xml, const QString& currentVersion,
                                      const QString& os);
    static UpdateCheckResult failure(const QString& currentVersion, const QString& error);

    // The dialog's heading and text.
    QString title() const;
    QString message() const;
};

} // namespace velkor
