// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/FeedDownloaderFactory.h"

#include <QObject>

namespace velkor::x11 {

// The module's entry object: hands out downloaders on Qt Network.
class NetworkFeedDownloaderFactory final : public QObject, public FeedDownloaderFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID VELKOR_FEED_DOWNLOADER_FACTORY_IID)
    Q_INTERFACES(velkor::x11::FeedDownloaderFactory)
public:
    std::unique_ptr<FeedDownloader> createDownloader() override;
};

} // namespace velkor::x11
