// SPDX-License-Identifier: MIT
#include "platform/x11/DBusSingleInstance.h"

#include <QCryptographicHash>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QLoggingCategory>
#include <cstdlib>
#include <xcb/xcb.h>

Q_LOGGING_CATEGORY(lcSingleInstance, "velkor.singleinstance")

namespace velkor::x11 {

namespace {

constexpr int CallTimeoutMs = 3000;
constexpr qsizetype MaxBusNameLength = 255;
const QString NamePrefix = QStringLiteral("org.velkor.Velkor.display_");

// Bus name elements allow only ASCII letters, digits, "_" and "-": anything
// else, "_" included, becomes "_" and two hex digits per UTF-8 byte, so that
// two spellings never share a name.
QString busNameText(const QString& text)
{
    QString escaped;
    for (const char byte : text.toUtf8()) {
        const auto c = static_cast<unsigned char>(byte);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
            escaped += QLatin1Char(char(c));
        else
            escaped += QStringLiteral("_%1").arg(uint(c), 2, 16, QLatin1Char('0')).toUpper();
    }
    return escaped;
}

// The display as xcb reads it: the server's number and, for a remote one, its
// host; the screen is left out, since one Velkor serves every screen.
QString displayElement(const QString& display)
{
    const QByteArray name = display.toLocal8Bit();
    char* host = nullptr;
    int number = 0;
    int screen = 0;
    if (name.isEmpty() || !xcb_parse_display(name.constData(), &host, &number, &screen))
        return QStringLiteral("as_") + busNameText(display); // kept apart by its spelling
    QString hostName = QString::fromLocal8Bit(host).toLower();
    std::free(host);
    // "unix" is xcb's word for the local socket, like no host at all.
    if (hostName == QLatin1String("unix"))
        hostName.clear();
    const QString element = QString::number(number);
    return hostName.isEmpty() ? element : element + QStringLiteral("_at_") + busNameText(hostName);
}

} // namespace

DBusSingleInstance::DBusSingleInstance(QDBusConnection bus, const QString& display, QObject* parent)
    : SingleInstance(parent), m_bus(std::move(bus)), m_serviceName(serviceNameFor(display))
{}

DBusSingleInstance::~DBusSingleInstance()
{
    if (!m_registered)
        return;
    m_bus.unregisterObject(QString::fromLatin1(ObjectPath));
    m_bus.unregisterService(m_serviceName);
}

QString DBusSingleInstance::serviceNameFor(const QString& display)
{
    const QString name = NamePrefix + displayElement(display);
    if (name.size() <= MaxBusNameLength)
        return name;
    // A host name of hundreds of characters: its digest stands in for it.
    return NamePrefix + QStringLiteral("hashed_") +
           QString::fromLatin1(
               QCryptographicHash::hash(display.toUtf8(), QCryptographicHash::Sha256).toHex());
}

SingleInstance::Claim DBusSingleInstance::claim()
{
    if (!m_bus.isConnected()) {
        qCWarning(lcSingleInstance).noquote()
            << "cannot tell whether Velkor already runs: no session bus (" +
                   m_bus.lastError().message() + "); running as the only copy";
        return Claim::unchecked;
    }
    // Export first, so a second start that finds the name can call at once.
    const QString path = QString::fromLatin1(ObjectPath);
    m_bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
    // Twice at most: the copy that owned the name may quit as this one asks.
    for (int attempt = 0; attempt < 2; ++attempt) {
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
            m_bus.interface()->registerService(m_serviceName,
                                               QDBusConnectionInterface::DontQueueService,
                                               QDBusConnectionInterface::DontAllowReplacement);
        if (!reply.isValid()) {
            m_bus.unregisterObject(path);
            qCWarning(lcSingleInstance).noquote()
                << "cannot tell whether Velkor already runs: the session bus refused the name"
                << m_serviceName + " (" + reply.error().name() + ": " + reply.error().message() +
                       "); running as the only copy";
            return Claim::unchecked;
        }
        if (reply.value() == QDBusConnectionInterface::ServiceRegistered) {
            m_registered = true;
            return Claim::claimed;
        }
        if (handOver()) {
            m_bus.unregisterObject(path);
            return Claim::anotherRuns;
        }
    }
    m_bus.unregisterObject(path);
    qCWarning(lcSingleInstance).noquote()
        << "cannot tell whether Velkor already runs: the name" << m_serviceName
        << "changes hands too quickly; running as the only copy";
    return Claim::unchecked;
}

bool DBusSingleInstance::handOver()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        m_serviceName, QString::fromLatin1(ObjectPath), QStringLiteral("org.velkor.Velkor"),
        QStringLiteral("ShowSettings"));
    const QDBusMessage answer = m_bus.call(call, QDBus::Block, CallTimeoutMs);
    if (answer.type() != QDBusMessage::ErrorMessage)
        return true;
    const QString error = answer.errorName();
    if (error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
        error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"))
        return false;
    // It holds the name, so it runs (or hangs): a second copy would fight it
    // for the activation key.
    qCWarning(lcSingleInstance).noquote()
        << "another Velkor runs on this display but did not show its settings:"
        << error + ": " + answer.errorMessage();
    return true;
}

void DBusSingleInstance::ShowSettings()
{
    emit showSettingsRequested();
}

} // namespace velkor::x11
