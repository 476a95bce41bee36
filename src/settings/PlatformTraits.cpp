// SPDX-License-Identifier: MIT
#include "settings/PlatformTraits.h"

namespace velkor {

PlatformTraits PlatformTraits::forPlatform(const QString& qpaPlatformName)
{
    if (qpaPlatformName == QLatin1String("cocoa"))
        return {KeyNaming::apple, true};
    return {KeyNaming::pc, false};
}

QString activationKeyLabel(ModifierKey key, KeyNaming naming)
{
    if (naming == KeyNaming::apple)
        return label(key);
    switch (key) {
    case ModifierKey::rightCommand:
        return QStringLiteral("Right Super");
    case ModifierKey::rightOption:
        return QStringLiteral("Right Alt");
    case ModifierKey::rightControl:
        return QStringLiteral("Right Ctrl");
    case ModifierKey::leftCommand:
        return QStringLiteral("Left Super");
    case ModifierKey::leftOption:
        return QStringLiteral("Left Alt");
    case ModifierKey::leftControl:
        return QStringLiteral("Left Ctrl");
    }
    return label(key);
}

std::optional<QString> activationKeyCaveat(ModifierKey key, KeyNaming naming)
{
    // Many European layouts turn Right Alt into AltGr, the key that types
    // characters such as @ or €; held as the activation key it types none.
    if (naming == KeyNaming::pc && key == ModifierKey::rightOption)
        return QStringLiteral("Under some keyboard layouts (German, for example) this key is "
                              "AltGr, which types characters such as @ and €.");
    return std::nullopt;
}

} // namespace velkor
