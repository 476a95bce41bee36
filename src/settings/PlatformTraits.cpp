// SPDX-License-Identifier: MIT
#include "settings/PlatformTraits.h"

namespace velkor {

PlatformTraits PlatformTraits::forPlatform(const QString& qpaPlatformName)
{
    if (qpaPlatformName == QLatin1String("cocoa"))
        return {KeyNaming::apple, true, false};
    return {KeyNaming::pc, false, true};
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

KeyAccessWording describeKeyAccess(KeyAccess access, KeyNaming naming)
{
    const bool apple = naming == KeyNaming::apple;
    switch (access) {
    case KeyAccess::active:
        return {QStringLiteral("Velkor is active"), QStringLiteral("Velkor"),
                apple ? QStringLiteral("Accessibility granted")
                      : QStringLiteral("Keyboard access granted"),
                QString()};
    case KeyAccess::notTrusted:
        if (apple)
            return {QStringLiteral("Accessibility permission needed"), QStringLiteral("Velkor"),
                    QStringLiteral("Accessibility required"), QString()};
        return {QStringLiteral("Keyboard access needed"),
                QStringLiteral("Velkor: keyboard access needed"),
                QStringLiteral("Keyboard access required"), QString()};
    case KeyAccess::activationKeyTaken:
        return {QStringLiteral("Activation key taken by another program"),
                QStringLiteral("Velkor: the activation key is taken by another program"),
                QStringLiteral("The activation key is taken by another program"),
                QStringLiteral("Velkor takes it as soon as that program lets go of it. Quit the "
                               "other program (a hotkey tool or another switcher), or choose "
                               "another activation key above.")};
    case KeyAccess::activationKeyMissing:
        return {QStringLiteral("Activation key not on this keyboard"),
                QStringLiteral("Velkor: the activation key is not on this keyboard"),
                QStringLiteral("The activation key is not on this keyboard"),
                QStringLiteral("Choose another activation key above.")};
    }
    return describeKeyAccess(KeyAccess::notTrusted, naming);
}

QString keyAccessLogLine(KeyAccess access, ModifierKey key, KeyNaming naming)
{
    const QString name = activationKeyLabel(key, naming);
    switch (access) {
    case KeyAccess::active:
        return naming == KeyNaming::apple
                   ? QStringLiteral("[Velkor] event tap installed")
                   : QStringLiteral("[Velkor] activation key %1 grabbed").arg(name);
    case KeyAccess::notTrusted:
        return naming == KeyNaming::apple
                   ? QStringLiteral("[Velkor] failed to create event tap (Accessibility not "
                                    "granted?)")
                   : QStringLiteral("[Velkor] cannot watch the keyboard on this display");
    case KeyAccess::activationKeyTaken:
        return QStringLiteral("[Velkor] cannot grab the activation key %1: another program holds "
                              "it; trying again until it is free")
            .arg(name);
    case KeyAccess::activationKeyMissing:
        return QStringLiteral("[Velkor] the activation key %1 is not on this keyboard").arg(name);
    }
    return QString();
}

} // namespace velkor
