// SPDX-License-Identifier: MIT
#pragma once

#include "platform/x11/FeedDownloader.h"

#include <QStringList>
#include <memory>

namespace velkor::x11 {

// Finds the downloader module and loads it. Once loaded it stays loaded for the
// life of the process; a failed load is tried afresh on the next call.
class FeedDownloaderLoader final
{
public:
    static constexpr const char* FileName = "velkor-feed-downloader.so";

    // Looks in each directory in turn, then in installedDirectory(), and
    // loads the first module file found.
    explicit FeedDownloaderLoader(QStringList directories);

    // Where an installed Velkor keeps the module (lib/<arch>/velkor under its
    // prefix), found from the executable's folder so that a prefix installed
    // elsewhere than configured still finds it.
    static QString installedDirectory();

    // A new downloader, or null with error() saying why.
    std::unique_ptr<FeedDownloader> createDownloader();
    QString error() const { return m_error; }

private:
    QStringList m_directories;
    QString m_error;
};

} // namespace velkor::x11
