// SPDX-License-Identifier: MIT
#include "platform/x11/FeedDownloaderLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using velkor::x11::FeedDownloaderLoader;

// Installed, the module is not beside the executable but in lib/<arch>/velkor
// under the same prefix; this test's own folder stands in for bin/.
class FeedDownloaderLoaderTest : public QObject
{
    Q_OBJECT

private slots:
    void findsTheModuleWhereAnInstalledVelkorKeepsIt()
    {
        const QString installed = FeedDownloaderLoader::installedDirectory();
        QVERIFY2(installed != QCoreApplication::applicationDirPath(), qPrintable(installed));
        const QString module = QDir(installed).filePath(FeedDownloaderLoader::FileName);
        QFile::remove(module); // left by a run that crashed

        QTemporaryDir empty;
        FeedDownloaderLoader absent({empty.path()});
        QVERIFY(!absent.createDownloader());
        QVERIFY2(absent.error().contains(installed), qPrintable(absent.error()));

        QVERIFY(QDir().mkpath(installed));
        auto removeInstalled = qScopeGuard([&] {
            QFile::remove(module);
            QDir().rmpath(installed);
        });
        QVERIFY(QFile::copy(QStringLiteral(VELKOR_FEED_DOWNLOADER), module));
        FeedDownloaderLoader loader({empty.path()});
        QVERIFY2(loader.createDownloader(), qPrintable(loader.error()));
    }
};

QTEST_GUILESS_MAIN(FeedDownloaderLoaderTest)
#include "FeedDownloaderLoaderTest.moc"
