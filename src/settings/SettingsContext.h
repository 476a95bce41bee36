// SPDX-License-Identifier: MIT
#pragma once

#include "settings/PlatformTraits.h"

#include <QString>

namespace velkor {

class AppRegistry;
class LoginItem;
class PermissionsManager;
class Preferences;
class ShellIntegration;
class TrustCheck;

// What the settings window reads and changes; all of it outlives the window.
struct SettingsContext
{
    Preferences& prefs;
    AppRegistry& registry;
    PermissionsManager& permissions;
    TrustCheck& trust;
    LoginItem& loginItem;
    ShellIntegration& shell;
    PlatformTraits traits;
    QString version; // shown as "Velkor <version>"
};

} // namespace velkor
