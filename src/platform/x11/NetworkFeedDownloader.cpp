// SPDX-License-Identifier: MIT
#include "platform/x11/NetworkFeedDownloader.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <utility>

namespace velkor::x11 {

namespace {

constexpr int MaxRedirects = 5;
// What Qt buffers between two readyRead signals, on top of the body.
constexpr qint64 ReadBufferBytes = 64 * 1024;

bool isHttps(const QUrl& url)
{
    return url.scheme() == QLatin1String("https");
}

} // namespace

NetworkFeedDownloader::NetworkFeedDownloader()
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        fail(QStringLiteral("the feed took longer than %1 s").arg(m_deadline.interval() / 1000.0));
    });
}

NetworkFeedDownloader::~NetworkFeedDownloader()
{
    abort();
}

void NetworkFeedDownloader::get(const QUrl& url, const QString& userAgent, int timeoutMs,
                                qint64 maxBytes, Done done)
{
    abort();
    m_done = std::move(done);
    m_maxBytes = maxBytes;
    if (!isHttps(url)) {
        // Told from the event loop, unless another transfer has begun by then.
        QMetaObject::invokeMethod(
            this,
            [this, transfer = m_transfer] {
                if (transfer == m_transfer)
                    fail(QStringLiteral("only https addresses are fetched"));
            },
            Qt::QueuedConnection);
        return;
    }
    QNetworkRequest request(url);
    request.setTransferTimeout(timeoutMs);
    // Never from https to plain http on the way; the final address is checked too.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(MaxRedirects);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent);
    QNetworkReply* reply = m_network.get(request);
    reply->setReadBufferSize(ReadBufferBytes);
    m_reply = reply;
    m_deadline.start(timeoutMs);
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > m_maxBytes)
            fail(QStringLiteral("the feed is larger than %1 bytes").arg(m_maxBytes));
    });
    connect(reply, &QNetworkReply::readyRead, this, [this] { takeArrived(); });
    connect(reply, &QNetworkReply::finished, this, &NetworkFeedDownloader::finished);
}

bool NetworkFeedDownloader::takeArrived()
{
    m_body += m_reply->read(m_maxBytes + 1 - m_body.size());
    if (m_body.size() <= m_maxBytes)
        return true;
    fail(QStringLiteral("the feed is larger than %1 bytes").arg(m_maxBytes));
    return false;
}

void NetworkFeedDownloader::finished()
{
    QNetworkReply* reply = m_reply;
    if (reply->error() != QNetworkReply::NoError) {
        fail(reply->errorString());
        return;
    }
    if (!isHttps(reply->url())) {
        fail(QStringLiteral("the feed was redirected to an address that is not https"));
        return;
    }
    if (!takeArrived())
        return;
    // Cleared before done runs, so that done may start the next transfer.
    const QByteArray body = std::exchange(m_body, QByteArray());
    const Done done = std::exchange(m_done, Done());
    abort();
    done(body, QString());
}

void NetworkFeedDownloader::fail(const QString& error)
{
    const Done done = std::exchange(m_done, Done());
    abort();
    if (done)
        done(QByteArray(), error);
}

void NetworkFeedDownloader::abort()
{
    ++m_transfer;
    m_done = Done();
    m_deadline.stop();
    m_body.clear();
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
