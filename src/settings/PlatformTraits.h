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

// What the tray and the settings window say about the key monitor's state.
struct KeyAccessWording
{
    QString stateLine;  // the status menu's first line
    QString toolTip;    // the tray icon's tool tip
    QString paneState;  // the General pane's state row
    QString paneDetail; // a footnote under it; empty when there is nothing to add
};
KeyAccessWording describeKeyAccess(KeyAccess access, KeyNaming naming);

// The "[Velkor] …" log line for a new state, naming the activation key.
QString keyAccessLogLine(KeyAccess access, ModifierKey key, KeyNaming naming);

} // namespace velkor
