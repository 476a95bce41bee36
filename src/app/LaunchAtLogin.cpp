// SPDX-License-Identifier: MIT
#include "app/LaunchAtLogin.h"

#include "platform/SystemServices.h"

#include <QDebug>

namespace velkor::LaunchAtLogin {

void set(LoginItem& item, bool enabled)
{
    // Awaiting approval or not found counts as not registered.
    const bool registered = item.status() == LoginItem::Status::Enabled;
    if (enabled == registered)
        return;
    QString error;
    const bool ok = enabled ? item.registerItem(&error) : item.unregisterItem(&error);
    if (!ok)
        qWarning().noquote() << QStringLiteral("[Velkor] LaunchAtLogin error: ") + error;
}

} // namespace velkor::LaunchAtLogin
