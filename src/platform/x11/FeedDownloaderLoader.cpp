// SPDX-License-Identifier: MIT
#include "platform/x11/FeedDownloaderLoader.h"

#include "platform/x11/FeedDownloaderFactory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPluginLoader>

Q_DECLARE_LOGGING_CATEGORY(lcUpdater)

namespace velkor::x11 {

FeedDownloaderLoader::FeedDownloaderLoader(QStringList directories)
    : m_directories(std::move(directories))
{
    m_directories.append(installedDirectory());
}

QString FeedDownloaderLoader::installedDirectory()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/" VELKOR_MODULE_DIR_FROM_EXECUTABLE));
}

std::unique_ptr<FeedDownloader> FeedDownloaderLoader::createDownloader()
{
    m_error.clear();
    QString path;
    for (const QString& directory : std::as_const(m_directories)) {
        const QString candidate = QDir(directory).filePath(QString::fromLatin1(FileName));
        if (QFileInfo(candidate).isFile()) {
            path = candidate;
            break;
        }
    }
    if (path.isEmpty()) {
        m_error = QStringLiteral("%1 was not found in %2")
                      .arg(QString::fromLatin1(FileName), m_directories.join(QStringLiteral(", ")));
        return nullptr;
    }
    // The loader object may go: the module stays loaded as long as it is not
    // unloaded explicitly, and its factory is the module's shared instance.
    QPluginLoader loader(path);
    QObject* instance = loader.instance();
    if (!instance) {
        m_error = loader.errorString();
        return nullptr;
    }
    auto* factory = qobject_cast<FeedDownloaderFactory*>(instance);
    if (!factory) {
        m_error = QStringLiteral("%1 is not a feed downloader").arg(path);
        return nullptr;
    }
    qCDebug(lcUpdater) << "loaded" << path;
    return factory->createDownloader();
}

} // namespace velkor::x11
