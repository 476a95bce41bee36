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

BehaviourWording behaviourWording(KeyNaming naming)
{
    if (naming == KeyNaming::apple)
        return {QStringLiteral("Cmd-` cycles windows of the current app"),
                QStringLiteral("Replace Cmd-Tab with Velkor's window switcher"),
                QStringLiteral("Spaces"),
                QStringLiteral("Activation key + 1-9 jumps to a Space, + [ or ] moves to the "
                               "adjacent one, Right ⌥ + 1-9 sends the window there.")};
    return {QStringLiteral("Super-` cycles windows of the current app"),
            QStringLiteral("Replace Super-Tab with Velkor's window switcher"),
            QStringLiteral("Desktops"),
            QStringLiteral("Activation key + 1-9 jumps to a desktop, + [ or ] moves to the "
                           "adjacent one, Right Alt + 1-9 sends the window there.")};
}

QString spaceModeLabel(SpaceMode mode, KeyNaming naming)
{
    if (naming == KeyNaming::apple)
        return label(mode);
    switch (mode) {
    case SpaceMode::followApp:
        return QStringLiteral("Follow app to its desktop");
    case SpaceMode::gatherWindows:
        return QStringLiteral("Gather windows to current desktop");
    }
    return label(mode);
}

QString iconTileText(const QString& appName, KeyNaming naming)
{
    if (naming == KeyNaming::apple)
        return QStringLiteral("⌘");
    // An app's initial tells it apart where the system has no symbol for "app".
    const QString name = appName.trimmed();
    if (name.isEmpty())
        return QString();
    return name.left(name.front().isHighSurrogate() ? 2 : 1).toUpper();
}

QString waylandSessionAdvice()
{
    return QStringLiteral(
        "This version of Velkor needs an X11 session. Log out, and on the login screen choose an "
        "X11 session before entering your password (the gear or session menu: for example "
        "\"GNOME on Xorg\", \"Plasma (X11)\" or \"Xfce Session\"), then start Velkor again.");
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
    case KeyAccess::waylandSession:
        return {QStringLiteral("Needs an X11 session, not Wayland"),
                QStringLiteral("Velkor: this version needs an X11 session; it cannot see the "
                               "keyboard in a Wayland session"),
                QStringLiteral("An X11 session is needed"), waylandSessionAdvice()};
    }
    return describeKeyAccess(KeyAccess::notTrusted, naming);
}

OnboardingWording describeOnboarding(KeyAccess refusal, KeyNaming naming, const QString& missing)
{
    if (naming == KeyNaming::apple)
        return {QStringLiteral("Velkor needs Accessibility access"),
                QStringLiteral("Velkor watches for the Right Command key to switch apps. macOS "
                               "requires Accessibility permission for global keyboard "
                               "access.\n\nClick below, enable Velkor in the list, then return "
                               "here."),
                QStringLiteral("Open Accessibility Settings")};
    // Logging out is the only way to another session: nothing to retry.
    if (refusal == KeyAccess::waylandSession)
        return {QStringLiteral("Velkor needs an X11 session"),
                missing + QStringLiteral("\n\n") + waylandSessionAdvice(), QString()};
    // X11 gives any client the keyboard grabs Velkor needs; what can be
    // missing is the X11 display itself or one of its extensions.
    return {QStringLiteral("Velkor cannot watch the keyboard"),
            missing + QStringLiteral("\n\nVelkor watches the activation key through X11 and its "
                                     "input extensions. Log in to an X11 session (for example "
                                     "\"GNOME on Xorg\"), then start Velkor again."),
            QStringLiteral("Check Again")};
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
    case KeyAccess::waylandSession:
        return QStringLiteral("[Velkor] this is a Wayland session: the keyboard cannot be watched; "
                              "log in to an X11 session");
    }
    return QString();
}

} // namespace velkor
