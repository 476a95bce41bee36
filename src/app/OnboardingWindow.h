// SPDX-License-Identifier: MIT
#pragma once

#include "settings/PlatformTraits.h"

#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace velkor {

class PermissionsManager;

// "Welcome to Velkor": says why Velkor cannot watch the keyboard yet, offers
// the way to the permission, and lets the user continue once it is granted.
class OnboardingWindow : public QWidget
{
    Q_OBJECT
public:
    static constexpr QSize WindowSize{460, 380};

    // onGranted may be called more than once (by the poll and by Continue).
    OnboardingWindow(PermissionsManager& permissions, PlatformTraits traits,
                     std::function<void()> onGranted, QWidget* parent = nullptr);

    QLabel& title() const { return *m_title; }
    QLabel& body() const { return *m_body; }
    QPushButton& requestButton() const { return *m_request; }
    QLabel& grantedLabel() const { return *m_granted; }
    QPushButton& continueButton() const { return *m_continue; }

signals:
    void closed();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    OnboardingWindow(PermissionsManager& permissions, PlatformTraits traits,
                     std::function<void()> onGranted, const OnboardingWording& words,
                     QWidget* parent);
    void showTrust();

    PermissionsManager& m_permissions;
    std::function<void()> m_onGranted;
    bool m_offersRequest;
    QLabel* m_title;
    QLabel* m_body;
    QPushButton* m_request;
    QLabel* m_granted;
    QPushButton* m_continue;
};

} // namespace velkor
