// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/KeySource.h"

#include <QObject>
#include <functional>
#include <optional>

namespace velkor {

class TrustCheck;

// Knows whether the process may watch the keyboard and control windows, and
// watches for the moment the user grants it; and, once the key monitor runs,
// whether the activation key really reaches it.
class PermissionsManager : public QObject
{
    Q_OBJECT
public:
    static constexpr double PollSeconds = 1.0;

    // Reads the trust state once at creation.
    PermissionsManager(TrustCheck& trust, Clock& clock, QObject* parent = nullptr);
    ~PermissionsManager() override;

    bool isTrusted() const { return m_trusted; }
    bool isPolling() const { return m_pollTask.has_value(); }

    // Asks the platform again, without prompting.
    void refresh();

    // Checks every second until trust is granted, then calls onGranted once.
    // While a poll runs, a second call does nothing (its callback is dropped).
    void startPolling(std::function<void()> onGranted);

    // The onboarding button: the platform's own prompt, its settings page,
    // then polling for the grant.
    void requestAccess(std::function<void()> onGranted);

    // What is missing, in one line, for the onboarding window.
    QString missingExplanation() const;

    // Not trusted outranks what the key monitor last reported; before its
    // first report a trusted process counts as active.
    KeyAccess keyAccess() const;
    void setMonitorAccess(KeyAccess access);

    // The key monitor saw the activation key go down (the settings window's
    // "press it now" check listens).
    void noteActivationKeyPressed() { emit activationKeyPressed(); }

signals:
    void trustedChanged(bool trusted);
    void keyAccessChanged(KeyAccess access);
    void activationKeyPressed();

private:
    void setTrusted(bool trusted);
    void poll();
    void announceKeyAccess(KeyAccess before);

    TrustCheck& m_trust;
    Clock& m_clock;
    bool m_trusted = false;
    KeyAccess m_monitorAccess = KeyAccess::active;
    std::optional<Clock::TaskId> m_pollTask;
    std::function<void()> m_onGranted;
};

} // namespace velkor
