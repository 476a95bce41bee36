// SPDX-License-Identifier: MIT
#include "platform/NativePlatform.h"
#include "platform/NullPlatform.h"

#include <QGuiApplication>

namespace velkor {

std::unique_ptr<Platform> createPlatform()
{
    const QString name = QGuiApplication::platformName();
    if (auto platform = createNativePlatform(name))
        return platform;
    return createNullPlatform(
        QStringLiteral("Velkor cannot watch the keyboard or control windows on the \"%1\" "
                       "platform.")
            .arg(name));
}

} // namespace velkor
