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
// build time, compares its newest release with this build and presents the
// result (in a dialog unless told otherwise). Nothing touches the network
// except checkForUpdates(), and the download module is loaded on the first one.
class LinuxAppcastUpdater final : public QObject, public Updater
{
    Q_OBJECT
public:
    using Presenter = std::function<void(const UpdateCheckResult&)>;

    static constexpr int TimeoutMs = 15000;

    // The download module is looked for next to the executable, then in
    // moduleDirectory when one is given.
    LinuxAppcastUpdater(QUrl feedUrl, QString currentVersion, Presenter present = showDialog,
                        QString moduleDirectory = QString(), QObject* parent = nullptr);
    ~LinuxAppcastUpdater() override;

    bool isAvailable() const override { return m_feedUrl.isValid() && !m_feedUrl.isEmpty(); }
    // A check already under way is not started twice.
    void checkForUpdates() override;

    bool isChecking() const { return m_checking; }

    // The message box the result is shown in by default.
    static void showDialog(const UpdateCheckResult& result);

signals:
    void checked(const velkor::UpdateCheckResult& result);

private:
    bool loadDownloader();
    void finish(const UpdateCheckResult& result);

    QUrl m_feedUrl;
    QString m_currentVersion;
    Presenter m_present;
    QString m_moduleDirectory;
    std::unique_ptr<FeedDownloader> m_downloader; // loaded on the first check
    bool m_checking = false;
};

} // namespace velkor::x11
