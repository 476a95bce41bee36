// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsContext.h"

#include <QObject>
#include <functional>
#include <memory>

namespace velkor {

class OnboardingWindow;
class SettingsWindow;

// The settings and onboarding windows: each made on first use and shown
// again later, and the app's regular presence (Dock icon on macOS) while
// either of them is open.
class ShellWindows : public QObject
{
    Q_OBJECT
public:
    // onGranted runs when onboarding finds the permission granted.
    ShellWindows(const SettingsContext& context, std::function<void()> onGranted,
                 QObject* parent = nullptr);
    ~ShellWindows() override;

    void showSettings();
    void showPermissions();
    // Closes the onboarding window, if it is open.
    void closePermissions();

    SettingsWindow* settingsWindow() const { return m_settings.get(); }
    OnboardingWindow* onboardingWindow() const { return m_onboarding.get(); }

private:
    void bringForward(QWidget& window);
    void windowClosed();

    SettingsContext m_context;
    std::function<void()> m_onGranted;
    std::unique_ptr<SettingsWindow> m_settings;
    std::unique_ptr<OnboardingWindow> m_onboarding;
};

} // namespace velkor
