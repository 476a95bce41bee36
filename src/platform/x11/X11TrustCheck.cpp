// SPDX-License-Identifier: MIT
#include "platform/x11/X11TrustCheck.h"

#include "platform/x11/X11Connection.h"

namespace velkor::x11 {

X11TrustCheck::X11TrustCheck(std::shared_ptr<X11Connection> connection, bool waylandSession)
    : m_hasDisplay(connection != nullptr), m_waylandSession(waylandSession)
{
    if (!connection)
        return;
    for (const QString& name : requiredExtensions())
        if (!connection->hasExtension(name.toLatin1().constData()))
            m_missing.append(name);
}

const QStringList& X11TrustCheck::requiredExtensions()
{
    static const QStringList names = {QStringLiteral("XTEST"), QStringLiteral("XKEYBOARD"),
                                      QStringLiteral("XInputExtension")};
    return names;
}

QString X11TrustCheck::missingExplanation() const
{
    if (m_waylandSession)
        return QStringLiteral("This is a Wayland session: Velkor runs here through Xwayland, "
                              "which lets it see keys only while one of its own windows has the "
                              "focus.");
    if (!m_hasDisplay)
        return QStringLiteral("Velkor needs an X11 session: there is no connection to an X server "
                              "(a Wayland-only session cannot give it the keyboard).");
    if (m_missing.isEmpty())
        return QString();
    return QStringLiteral("Velkor needs the X server extensions %1; this server lacks %2.")
        .arg(requiredExtensions().join(QStringLiteral(", ")), m_missing.join(QStringLiteral(", ")));
}

} // namespace velkor::x11
