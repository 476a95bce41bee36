// SPDX-License-Identifier: MIT
#include "platform/x11/NetworkFeedDownloader.h"

#include <QNetworkReply>
#include <QNetworkRequest>

namespace velkor::x11 {

NetworkFeedDownloader::~NetworkFeedDownloader()
{
    abort();
}

void NetworkFeedDownloader::get(const QUrl& url, const QString& userAgent, int timeoutMs, Done done)
{
    abort();
    QNetworkRequest request(url);
    request.setTransferTimeout(timeoutMs);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent);
    QNetworkReply* reply = m_network.get(request);
    m_reply = reply;
    connect(reply, &QNetworkReply::finished, this, [this, reply, done = std::move(done)] {
        // Cleared before done runs, so that done may start the next transfer.
        m_reply = nullptr;
        reply->deleteLater();
        if (reply->error() != QNetworkReply::NoError)
            done(QByteArray(), reply->errorString());
        else
            done(reply->readAll(), QString());
    });
}

void NetworkFeedDownloader::abort()
{
    QNetworkReply* reply = m_reply;
    if (!reply)
        return;
    m_reply = nullptr;
    // abort() emits finished at once; nobody is to hear it.
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
}

} // namespace velkor::x11
