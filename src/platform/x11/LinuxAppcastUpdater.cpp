// SPDX-License-Identifier: MIT
#include "platform/x11/LinuxAppcastUpdater.h"

#include "platform/x11/FeedDownloaderLoader.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QLabel>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPushButton>

Q_LOGGING_CATEGORY(lcUpdater, "velkor.updater")

namespace velkor::x11 {

LinuxAppcastUpdater::LinuxAppcastUpdater(QUrl feedUrl, QString currentVersion, Presenter present,
                                         QString moduleDirectory, QObject* parent)
    : QObject(parent), m_feedUrl(std::move(feedUrl)), m_currentVersion(std::move(currentVersion)),
      m_present(std::move(present)), m_moduleDirectory(std::move(moduleDirectory))
{}

// The downloader's destructor aborts a transfer under way.
LinuxAppcastUpdater::~LinuxAppcastUpdater() = default;

void LinuxAppcastUpdater::setLimits(int timeoutMs, qint64 maxFeedBytes)
{
    m_timeoutMs = timeoutMs;
    m_maxFeedBytes = maxFeedBytes;
}

void LinuxAppcastUpdater::checkForUpdates()
{
    if (!isAvailable() || isChecking())
        return;
    m_checking = true;
    qCInfo(lcUpdater) << "checking" << m_feedUrl.toString();
    if (m_feedUrl.scheme() != QLatin1String("https")) {
        finishLater(QStringLiteral("Updates are only checked over https, and the update feed's "
                                   "address is not https."));
        return;
    }
    if (!m_downloader && !loadDownloader())
        return;
    m_downloader->get(
        m_feedUrl, QStringLiteral("Velkor/%1").arg(m_currentVersion), m_timeoutMs, m_maxFeedBytes,
        [this](const QByteArray& body, const QString& error) {
            if (!error.isEmpty()) {
                finish(UpdateCheckResult::failure(
                    m_currentVersion,
                    QStringLiteral("The update feed could not be downloaded: %1.").arg(error)));
            } else {
                finish(
                    UpdateCheckResult::fromFeed(body, m_currentVersion, QStringLiteral("linux")));
            }
        });
}

bool LinuxAppcastUpdater::loadDownloader()
{
    QStringList directories{QCoreApplication::applicationDirPath()};
    if (!m_moduleDirectory.isEmpty())
        directories.append(m_moduleDirectory);
    FeedDownloaderLoader loader(directories);
    m_downloader = loader.createDownloader();
    if (m_downloader)
        return true;
    qCWarning(lcUpdater) << "cannot load the downloader:" << loader.error();
    finishLater(QStringLiteral("The update checker could not be loaded: %1").arg(loader.error()));
    return false;
}

void LinuxAppcastUpdater::finishLater(const QString& error)
{
    const auto failure = UpdateCheckResult::failure(m_currentVersion, error);
    QMetaObject::invokeMethod(
        this, [this, failure] { finish(failure); }, Qt::QueuedConnection);
}

void LinuxAppcastUpdater::finish(const UpdateCheckResult& result)
{
    m_checking = false;
    qCInfo(lcUpdater) << "result:" << result.title();
    emit checked(result);
    if (m_present)
        m_present(result);
}

void LinuxAppcastUpdater::showDialog(const UpdateCheckResult& result)
{
    auto* box = new QMessageBox(result.outcome == UpdateCheckResult::Outcome::failed
                                    ? QMessageBox::Warning
                                    : QMessageBox::Information,
                                result.title(), result.message());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QStringLiteral("Velkor"));
    box->setText(result.title());
    box->setInformativeText(result.message());
    // The message carries text from the feed. Every label, the informative
    // one included (it would open links), shows it as it is.
    box->setTextFormat(Qt::PlainText);
    for (QLabel* label : box->findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    if (result.outcome == UpdateCheckResult::Outcome::updateAvailable &&
        result.release->downloadUrl.isValid()) {
        const QUrl download = result.release->downloadUrl;
        QPushButton* get = box->addButton(QStringLiteral("Download…"), QMessageBox::AcceptRole);
        QObject::connect(get, &QPushButton::clicked,
                         [download] { QDesktopServices::openUrl(download); });
        box->addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
    } else {
        box->addButton(QMessageBox::Ok);
    }
    box->open();
}

} // namespace velkor::x11
