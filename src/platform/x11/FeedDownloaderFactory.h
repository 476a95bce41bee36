// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/FeedDownloader.h"

#include <QtPlugin>
#include <memory>

namespace velkor::x11 {

// The entry object of the downloader module, shared by everyone who loads it.
class FeedDownloaderFactory
{
public:
    virtual ~FeedDownloaderFactory() = default;
    virtual std::unique_ptr<FeedDownloader> createDownloader() = 0;
};

} // namespace velkor::x11

// The version names FeedDownloader's calls: a module built for others is not loaded.
#define VELKOR_FEED_DOWNLOADER_FACTORY_IID "org.velkor.FeedDownloaderFactory/2"
Q_DECLARE_INTERFACE(velkor::x11::FeedDownloaderFactory, VELKOR_FEED_DOWNLOADER_FACTORY_IID)
