// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <functional>

namespace velkor::x11 {

// Fetches the update feed, one transfer at a time. Its implementation lives in
// a module loaded on the first check, so that the network libraries are not
// mapped into a switcher that may never check.
class FeedDownloader
{
public:
    // Either the body (error empty) or why the transfer failed.
    using Done = std::function<void(const QByteArray& body, const QString& error)>;

    // Destroying a downloader aborts its transfer without calling done.
    virtual ~FeedDownloader() = default;
    // Starts a GET of an https url, aborting any transfer still under way.
    // Redirects are followed only to https. The transfer fails once it has run
    // timeoutMs in all or its body grows past maxBytes, so that a feed that
    // never ends holds neither the check nor memory. done is called once,
    // later, from the event loop, unless abort() comes first; it must not
    // destroy the downloader.
    virtual void get(const QUrl& url, const QString& userAgent, int timeoutMs, qint64 maxBytes,
                     Done done) = 0;
    // Drops the transfer under way, if any, without calling its done.
    virtual void abort() = 0;
};

} // namespace velkor::x11
