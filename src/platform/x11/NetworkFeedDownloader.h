// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/FeedDownloader.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QTimer>

class QNetworkReply;

namespace velkor::x11 {

// The downloader of the module, on Qt Network.
class NetworkFeedDownloader final : public QObject, public FeedDownloader
{
public:
    NetworkFeedDownloader();
    ~NetworkFeedDownloader() override;

    void get(const QUrl& url, const QString& userAgent, int timeoutMs, qint64 maxBytes,
             Done done) override;
    void abort() override;

private:
    // Takes what has arrived; false once the body is past the limit.
    bool takeArrived();
    void finished();
    // Ends the transfer under way with done(error) from the event loop.
    void fail(const QString& error);

    QNetworkAccessManager m_network;
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QByteArray m_body;
    qint64 m_maxBytes = 0;
    Done m_done;
    quint64 m_transfer = 0; // counts the transfers begun and dropped
};

} // namespace velkor::x11
