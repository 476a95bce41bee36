// SPDX-License-Identifier: MIT
#include "platform/x11/NetworkFeedDownloaderFactory.h"

#include "platform/x11/NetworkFeedDownloader.h"

namespace velkor::x11 {

std::unique_ptr<FeedDownloader> NetworkFeedDownloaderFactory::createDownloader()
{
    return std::make_unique<NetworkFeedDownloader>();
}

} // namespace velkor::x11
