// SPDX-License-Identifier: MIT
#pragma once

#include "app/AppcastFeed.h"
#include "platform/SystemServices.h"

#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>

namespace velkor::x11 {

class FeedDownloader;

// The user-started update check on Linux: downloads the appcast feed named at
// build time, over https only, compares its newest release with this build and
// presents the result (in a dialog unless told otherwise). Nothing touches the
// network except checkForUpdates(), and the download module is loaded on the
// first one. A feed that is slow, endless, malformed or hostile ends the check
// with one "could not check" result.
class LinuxAppcastUpdater final : public QObject, public Updater
{
    Q_OBJECT
public:
    using Presenter = std::function<void(const UpdateCheckResult&)>;

    // The whole download, and the feed's size: an appcast is a few kilobytes.
    static constexpr int TimeoutMs = 15000;
    static constexpr qint64 MaxFeedBytes = 1024 * 1024;

    // The download module is looked for next to the executable, then in
    // moduleDirectory when one is given.
    LinuxAppcastUpdater(QUrl feedUrl, QString currentVersion, Presenter present = showDialog,
                        QString moduleDirectory = QString(), QObject* parent = nullptr);
    ~LinuxAppcastUpdater() override;

    bool isAvailable() const override { return m_feedUrl.isValid() && !m_feedUrl.isEmpty(); }
    // A check already under way is not started twice.
    void checkForUpdates() override;

    bool isChecking() const { return m_checking; }

    void setLimits(int timeoutMs, qint64 maxFeedBytes);

    // The message box the result is shown in by default. The feed's strings
    // in it are plain text, never markup or links.
    static void showDialog(const UpdateCheckResult& result);

signals:
    void checked(const velkor::UpdateCheckResult& result);

private:
    bool loadDownloader();
    void finish(const UpdateCheckResult& result);
    // Ends the check from the event loop, after checkForUpdates() has returned.
    void finishLater(const QString& error);

    QUrl m_feedUrl;
    QString m_currentVersion;
    Presenter m_present;
    QString m_moduleDirectory;
    std::unique_ptr<FeedDownloader> m_downloader; // loaded on the first check
    int m_timeoutMs = TimeoutMs;
    qint64 m_maxFeedBytes = MaxFeedBytes;
    bool m_checking = false;
};

} // namespace velkor::x11
