// SPDX-License-Identifier: MIT
#pragma once

#include "settings/PlatformTraits.h"

#include <QWidget>

class QCheckBox;
class QComboBox;

namespace velkor {

class Preferences;

// When the switch happens, the window shortcuts, desktops and pointer focus.
class BehaviourPane : public QWidget
{
    Q_OBJECT
public:
    BehaviourPane(Preferences& prefs, KeyNaming naming, QWidget* parent = nullptr);

    QCheckBox& switchOnRelease() const { return *m_switchOnRelease; }
    QCheckBox& cmdBacktickCycle() const { return *m_cmdBacktickCycle; }
    QCheckBox& replaceCommandTab() const { return *m_replaceCommandTab; }
    QComboBox& spaceMode() const { return *m_spaceMode; }
    QCheckBox& mouseFollowsFocus() const { return *m_mouseFollowsFocus; }

private:
    BehaviourPane(Preferences& prefs, KeyNaming naming, const BehaviourWording& words,
                  QWidget* parent);
    void showPreferences();

    Preferences& m_prefs;
    QCheckBox* m_switchOnRelease;
    QCheckBox* m_cmdBacktickCycle;
    QCheckBox* m_replaceCommandTab;
    QComboBox* m_spaceMode;
    QCheckBox* m_mouseFollowsFocus;
};

} // namespace velkor
