// SPDX-License-Identifier: MIT
#include "settings/BehaviourPane.h"

#include "settings/Preferences.h"
#include "settings/SettingsForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace velkor {

BehaviourPane::BehaviourPane(Preferences& prefs, KeyNaming naming, QWidget* parent)
    : BehaviourPane(prefs, naming, behaviourWording(naming), parent)
{}

BehaviourPane::BehaviourPane(Preferences& prefs, KeyNaming naming, const BehaviourWording& words,
                             QWidget* parent)
    : QWidget(parent), m_prefs(prefs),
      m_switchOnRelease(new QCheckBox(QStringLiteral("Switch on release"))),
      m_cmdBacktickCycle(new QCheckBox(words.cycleWindows)),
      m_replaceCommandTab(new QCheckBox(words.replaceSwitcher)), m_spaceMode(new QComboBox),
      m_mouseFollowsFocus(new QCheckBox(QStringLiteral("Mouse follows focus")))
{
    QVBoxLayout* pane = SettingsForm::paneColumn(this);

    SettingsForm::addSection(pane, QStringLiteral("Switching"))->addWidget(m_switchOnRelease);

    QVBoxLayout* windows = SettingsForm::addSection(pane, QStringLiteral("Windows"));
    windows->addWidget(m_cmdBacktickCycle);
    windows->addWidget(m_replaceCommandTab);
    windows->addWidget(SettingsForm::footnote(
        QStringLiteral("Double-tap and hold the activation key to search open windows directly.")));

    QVBoxLayout* spaces = SettingsForm::addSection(pane, words.desktopsSection);
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(QStringLiteral("When switching apps")));
    for (const SpaceMode mode : allSpaceModes())
        m_spaceMode->addItem(spaceModeLabel(mode, naming), rawValue(mode));
    row->addWidget(m_spaceMode, 1);
    spaces->addLayout(row);
    spaces->addWidget(SettingsForm::footnote(words.desktopsNote));

    SettingsForm::addSection(pane, QStringLiteral("Focus"))->addWidget(m_mouseFollowsFocus);
    pane->addStretch(1);

    connect(m_switchOnRelease, &QCheckBox::toggled, &m_prefs, &Preferences::setSwitchOnRelease);
    connect(m_cmdBacktickCycle, &QCheckBox::toggled, &m_prefs, &Preferences::setCmdBacktickCycle);
    connect(m_replaceCommandTab, &QCheckBox::toggled, &m_prefs, &Preferences::setReplaceCommandTab);
    connect(m_mouseFollowsFocus, &QCheckBox::toggled, &m_prefs, &Preferences::setMouseFollowsFocus);
    connect(m_spaceMode, &QComboBox::currentIndexChanged, this, [this] {
        if (const auto mode = spaceModeFromRaw(m_spaceMode->currentData().toString()))
            m_prefs.setSpaceMode(*mode);
    });
    connect(&m_prefs, &Preferences::changed, this, &BehaviourPane::showPreferences);
    showPreferences();
}

void BehaviourPane::showPreferences()
{
    const struct
    {
        QCheckBox* box;
        bool value;
    } toggles[] = {{m_switchOnRelease, m_prefs.switchOnRelease()},
                   {m_cmdBacktickCycle, m_prefs.cmdBacktickCycle()},
                   {m_replaceCommandTab, m_prefs.replaceCommandTab()},
                   {m_mouseFollowsFocus, m_prefs.mouseFollowsFocus()}};
    for (const auto& toggle : toggles) {
        const QSignalBlocker blocker(toggle.box);
        toggle.box->setChecked(toggle.value);
    }
    const QSignalBlocker blocker(m_spaceMode);
    m_spaceMode->setCurrentIndex(m_spaceMode->findData(rawValue(m_prefs.spaceMode())));
}

} // namespace velkor
