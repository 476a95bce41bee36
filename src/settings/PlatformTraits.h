// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeySource.h"
#include "settings/SettingsEnums.h"

#include <QString>
#include <optional>

namespace velkor {

// How the platform names the modifier keys in the user interface.
enum class KeyNaming
{
    apple, // Command, Option, Control with their symbols
    pc     // Super, Alt, Ctrl
};

// The few differences of wording and offered actions between platforms that
// the shared windows need to know about.
struct PlatformTraits
{
    KeyNaming keyNaming = KeyNaming::pc;
    // Whether the system has a settings page where the user grants the
    // keyboard permission (the "Open Settings" link).
    bool hasTrustSettingsPage = false;
    // Whether the first start shows a notice naming the activation key
    // (laptop keyboards often lack the default one).
    bool showsFirstStartNotice = true;

    // The traits for a Qt platform plugin name ("cocoa", "xcb", ...).
    static PlatformTraits forPlatform(const QString& qpaPlatformName);
};

// The activation key's name in the picker, in the platform's naming.
QString activationKeyLabel(ModifierKey key, KeyNaming naming);

// A caveat about the chosen key on this platform, if there is one.
std::optional<QString> activationKeyCaveat(ModifierKey key, KeyNaming naming);

// The Behaviour pane's texts that name keys or the system's desktops.
struct BehaviourWording
{
    QString cycleWindows;    // the toggle for cycling the current app's windows
    QString replaceSwitcher; // the toggle for taking over the system's switcher
    QString desktopsSection; // the section of the desktop (Space) controls
    QString desktopsNote;    // its footnote
};
BehaviourWording behaviourWording(KeyNaming naming);

// The "When switching apps" picker's entry for a mode.
QString spaceModeLabel(SpaceMode mode, KeyNaming naming);

// The text on the overlay's icon tile when the app has no icon of its own;
// empty for a tile without text.
QString iconTileText(const QString& appName, KeyNaming naming);

// What the tray and the settings window say about the key monitor's state.
struct KeyAccessWording
{
    QString stateLine;  // the status menu's first line
    QString toolTip;    // the tray icon's tool tip
    QString paneState;  // the General pane's state row
    QString paneDetail; // a footnote under it; empty when there is nothing to add
};
KeyAccessWording describeKeyAccess(KeyAccess access, KeyNaming naming);

// How to get from a Wayland session to one where Velkor works.
QString waylandSessionAdvice();

// What the onboarding window says when keys cannot be watched.
struct OnboardingWording
{
    QString title;
    QString body;
    QString requestButton; // empty where nothing the program can do would help
};
// refusal: why keys cannot be watched; missing: the platform's own line on it.
OnboardingWording describeOnboarding(KeyAccess refusal, KeyNaming naming, const QString& missing);

// The "[Velkor] …" log line for a new state, naming the activation key.
QString keyAccessLogLine(KeyAccess access, ModifierKey key, KeyNaming naming);

} // namespace velkor
