// SPDX-License-Identifier: MIT
#include "app/ShellWindows.h"

#include "app/OnboardingWindow.h"
#include "platform/ShellIntegration.h"
#include "settings/SettingsWindow.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace velkor {

namespace {

void centreOnScreen(QWidget& window)
{
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        QRect frame = window.frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        window.move(frame.topLeft());
    }
}

} // namespace

ShellWindows::ShellWindows(const SettingsContext& context, std::function<void()> onGranted,
                           QObject* parent)
    : QObject(parent), m_context(context), m_onGranted(std::move(onGranted))
{}

ShellWindows::~ShellWindows() = default;

void ShellWindows::showSettings()
{
    if (!m_settings) {
        m_settings = std::make_unique<SettingsWindow>(m_context);
        centreOnScreen(*m_settings);
        connect(m_settings.get(), &SettingsWindow::closed, this, &ShellWindows::windowClosed);
    }
    bringForward(*m_settings);
}

void ShellWindows::showPermissions()
{
    if (!m_onboarding) {
        m_onboarding = std::make_unique<OnboardingWindow>(m_context.permissions, m_context.traits,
                                                          m_onGranted);
        centreOnScreen(*m_onboarding);
        connect(m_onboarding.get(), &OnboardingWindow::closed, this, &ShellWindows::windowClosed);
    }
    bringForward(*m_onboarding);
}

void ShellWindows::closePermissions()
{
    if (m_onboarding && m_onboarding->isVisible())
        m_onboarding->close();
}

void ShellWindows::bringForward(QWidget& window)
{
    m_context.shell.setRegularPresence(true);
    window.show();
    window.raise();
    window.activateWindow();
}

void ShellWindows::windowClosed()
{
    // Later, so the closing window is already gone when visibility is read.
    QTimer::singleShot(0, this, [this] {
        const bool settingsOpen = m_settings && m_settings->isVisible();
        const bool onboardingOpen = m_onboarding && m_onboarding->isVisible();
        if (!settingsOpen && !onboardingOpen)
            m_context.shell.setRegularPresence(false);
    });
}

} // namespace velkor
