// SPDX-License-Identifier: MIT
#include "platform/x11/GioInstalledAppSource.h"

#include "platform/x11/XdgDesktopEntryIndex.h"
#include "platform/x11/XdgDesktopFolderWatcher.h"
#include "platform/x11/XdgDesktopScan.h"

#include <QThread>

namespace velkor::x11 {

GioInstalledAppSource::GioInstalledAppSource(std::shared_ptr<XdgDesktopEntryIndex> index)
    : m_index(std::move(index))
{}

GioInstalledAppSource::~GioInstalledAppSource() = default;

QList<InstalledApp> GioInstalledAppSource::scan() const
{
    QThread* worker = QThread::currentThread();
    const auto cancelled = [worker] { return worker->isInterruptionRequested(); };
    XdgDesktopScan found = XdgDesktopScan::run(cancelled);
    // A cut-short reading would make running apps lose their names.
    if (m_index && !cancelled()) {
        XdgDesktopEntryIndex* index = m_index.get();
        QMetaObject::invokeMethod(
            index,
            [index, classes = std::move(found.windowClasses)]() mutable {
                index->setWindowClasses(std::move(classes));
            },
            Qt::QueuedConnection);
    }
    return std::move(found.apps);
}

void GioInstalledAppSource::watch(QObject* context, std::function<void()> onChange) const
{
    if (!m_watcher)
        m_watcher = std::make_unique<XdgDesktopFolderWatcher>();
    QObject::connect(m_watcher.get(), &XdgDesktopFolderWatcher::changed, context,
                     std::move(onChange));
}

} // namespace velkor::x11
