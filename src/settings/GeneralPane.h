// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsContext.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace velkor {

// Activation key (with a check that lights up when the key is pressed),
// launch at login, search scope and the state of keyboard access.
class GeneralPane : public QWidget
{
    Q_OBJECT
public:
    explicit GeneralPane(const SettingsContext& context, QWidget* parent = nullptr);

    QComboBox& activationKeyPicker() const { return *m_keyPicker; }
    QLabel& rightHandNote() const { return *m_rightHandNote; }
    QLabel& leftHandWarning() const { return *m_leftHandWarning; }
    QLabel& keyCaveat() const { return *m_keyCaveat; }
    QLabel& keyCheck() const { return *m_keyCheck; }
    bool keyCheckLit() const { return m_keyCheckLit; }
    QCheckBox& launchAtLogin() const { return *m_launchAtLogin; }
    QCheckBox& searchIncludesApps() const { return *m_searchIncludesApps; }
    QLabel& permissionState() const { return *m_permissionState; }
    QLabel& permissionDetail() const { return *m_permissionDetail; }
    QPushButton& openSettingsButton() const { return *m_openSettings; }

private:
    void buildActivation(QVBoxLayout* column);
    void buildPermissions(QVBoxLayout* column);
    void showPreferences();
    void showPermission();
    void showKeyCheck(bool lit);

    SettingsContext m_context;
    QComboBox* m_keyPicker = nullptr;
    QLabel* m_rightHandNote = nullptr;
    QLabel* m_leftHandWarning = nullptr;
    QLabel* m_keyCaveat = nullptr;
    QLabel* m_keyCheck = nullptr;
    bool m_keyCheckLit = false;
    QCheckBox* m_launchAtLogin = nullptr;
    QCheckBox* m_searchIncludesApps = nullptr;
    QLabel* m_permissionIcon = nullptr;
    QLabel* m_permissionState = nullptr;
    QLabel* m_permissionDetail = nullptr;
    QPushButton* m_openSettings = nullptr;
};

} // namespace velkor
