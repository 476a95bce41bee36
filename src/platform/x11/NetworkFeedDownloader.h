// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/FeedDownloader.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>

class QNetworkReply;

namespace velkor::x11 {

// The downloader of the module, on Qt Network.
class NetworkFeedDownloader final : public QObject, public FeedDownloader
{
public:
    NetworkFeedDownloader() = default;
    ~NetworkFeedDownloader() override;

    void get(const QUrl& url, const QString& userAgent, int timeoutMs, Done done) override;
    void abort() override;

private:
    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
};

} // namespace velkor::x11
