// SPDX-License-Identifier: MIT
#include "platform/x11/DBusSingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcSingleInstance, "velkor.singleinstance")

namespace velkor::x11 {

namespace {
constexpr int CallTimeoutMs = 3000;
} // namespace

DBusSingleInstance::DBusSingleInstance(QString serviceName, QObject* parent)
    : SingleInstance(parent),
      m_serviceName(serviceName.isEmpty() ? serviceNameFor(qEnvironmentVariable("DISPLAY"))
                                          : std::move(serviceName))
{}

DBusSingleInstance::~DBusSingleInstance()
{
    if (!m_registered)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(QString::fromLatin1(ObjectPath));
    bus.unregisterService(m_serviceName);
}

QString DBusSingleInstance::serviceNameFor(const QString& display)
{
    // Bus name elements allow letters, digits, "_" and "-", and must not
    // start with a digit: the element gets a prefix.
    QString element = QStringLiteral("display_");
    for (const QChar c : display) {
        if (c.isLetterOrNumber() && c.unicode() < 128)
            element += c;
        else if (!element.endsWith(QLatin1Char('_')))
            element += QLatin1Char('_');
    }
    while (element.endsWith(QLatin1Char('_')) && element.size() > 8)
        element.chop(1);
    return QStringLiteral("org.velkor.Velkor.") + element;
}

bool DBusSingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCInfo(lcSingleInstance) << "no session bus; not checking for another instance";
        return true;
    }
    // Export first, so a second start that finds the name can call at once.
    bus.registerObject(QString::fromLatin1(ObjectPath), this,
                       QDBusConnection::ExportScriptableSlots);
    const auto reply =
        bus.interface()->registerService(m_serviceName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
        m_registered = true;
        return true;
    }
    bus.unregisterObject(QString::fromLatin1(ObjectPath));

    QDBusMessage call = QDBusMessage::createMethodCall(
        m_serviceName, QString::fromLatin1(ObjectPath), QStringLiteral("org.velkor.Velkor"),
        QStringLiteral("ShowSettings"));
    const QDBusMessage answer = bus.call(call, QDBus::Block, CallTimeoutMs);
    if (answer.type() == QDBusMessage::ErrorMessage)
        qCWarning(lcSingleInstance)
            << "the running instance did not answer:" << answer.errorMessage();
    return false;
}

void DBusSingleInstance::ShowSettings()
{
    emit showSettingsRequested();
}

} // namespace velkor::x11
