// SPDX-License-Identifier: MIT
#pragma once

#include "app/AppcastFeed.h"
#include "platform/SystemServices.h"

#include <QObject>
#include <QPointer>
#include <QUrl>
#include <functional>

class QNetworkAccessManager;
class QNetworkReply;

namespace velkor::x11 {

// The user-started update check on Linux: downloads the appcast feed named at
// build time, compares its newest release with this build and presents the
// result (in a dialog unless told otherwise). Nothing touches the network
// except checkForUpdates().
class LinuxAppcastUpdater final : public QObject, public Updater
{
    Q_OBJECT
public:
    using Presenter = std::function<void(const UpdateCheckResult&)>;

    static constexpr int TimeoutMs = 15000;

    LinuxAppcastUpdater(QUrl feedUrl, QString currentVersion, Presenter present = showDialog,
                        QObject* parent = nullptr);
    ~LinuxAppcastUpdater() override;

    bool isAvailable() const override { return m_feedUrl.isValid() && !m_feedUrl.isEmpty(); }
    // A check already under way is not started twice.
    void checkForUpdates() override;

    bool isChecking() const { return !m_reply.isNull(); }

    // The message box the result is shown in by default.
    static void showDialog(const UpdateCheckResult& result);

signals:
    void checked(const velkor::UpdateCheckResult& result);

private:
    void finished();

    QUrl m_feedUrl;
    QString m_currentVersion;
    Presenter m_present;
    QNetworkAccessManager* m_network = nullptr; // made on the first check
    QPointer<QNetworkReply> m_reply;
};

} // namespace velkor::x11
