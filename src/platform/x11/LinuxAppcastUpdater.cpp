// SPDX-License-Identifier: MIT
#include "platform/x11/LinuxAppcastUpdater.h"

#include <QDesktopServices>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>

Q_LOGGING_CATEGORY(lcUpdater, "velkor.updater")

namespace velkor::x11 {

LinuxAppcastUpdater::LinuxAppcastUpdater(QUrl feedUrl, QString currentVersion, Presenter present,
                                         QObject* parent)
    : QObject(parent), m_feedUrl(std::move(feedUrl)), m_currentVersion(std::move(currentVersion)),
      m_present(std::move(present))
{}

LinuxAppcastUpdater::~LinuxAppcastUpdater()
{
    if (m_reply)
        m_reply->abort();
}

void LinuxAppcastUpdater::checkForUpdates()
{
    if (!isAvailable() || isChecking())
        return;
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request(m_feedUrl);
    request.setTransferTimeout(TimeoutMs);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Velkor/%1").arg(m_currentVersion));
    qCInfo(lcUpdater) << "checking" << m_feedUrl.toString();
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::finished, this, &LinuxAppcastUpdater::finished);
}

void LinuxAppcastUpdater::finished()
{
    QNetworkReply* reply = m_reply;
    m_reply = nullptr;
    if (!reply)
        return;
    reply->deleteLater();
    UpdateCheckResult result;
    if (reply->error() != QNetworkReply::NoError) {
        result = UpdateCheckResult::failure(
            m_currentVersion,
            QStringLiteral("The update feed could not be reached: %1").arg(reply->errorString()));
    } else {
        result = UpdateCheckResult::fromFeed(reply->readAll(), m_currentVersion,
                                             QStringLiteral("linux"));
    }
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
