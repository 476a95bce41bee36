// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeySource.h"

#include <QString>

namespace velkor {

// Whether the process may watch the keyboard and control windows
// (Accessibility on macOS; an X11 display with the needed extensions on X11).
class TrustCheck
{
public:
    virtual ~TrustCheck() = default;
    virtual bool isTrusted() = 0;
    // Same answer; where the platform has one, shows its own request dialog.
    virtual bool requestTrust() = 0;
    // Opens the system's settings page for the permission; false when there is none.
    virtual bool openTrustSettings() = 0;
    // One line saying what is missing, for the onboarding window and the log.
    virtual QString missingExplanation() const = 0;
    // Why the process is not trusted, when it is not: notTrusted, or a case
    // the user must act on differently (waylandSession).
    virtual KeyAccess refusal() const { return KeyAccess::notTrusted; }
};

// The login-item registration of the application itself.
class LoginItem
{
public:
    enum class Status
    {
        NotRegistered,
        Enabled,
        RequiresApproval,
        NotFound
    };
    virtual ~LoginItem() = default;
    virtual Status status() = 0;
    // Each returns false and fills error on failure.
    virtual bool registerItem(QString* error) = 0;
    virtual bool unregisterItem(QString* error) = 0;
};

// The user-started update check.
class Updater
{
public:
    virtual ~Updater() = default;
    // False when this build cannot check (the menu item says so).
    virtual bool isAvailable() const = 0;
    virtual void checkForUpdates() = 0;
};

} // namespace velkor
