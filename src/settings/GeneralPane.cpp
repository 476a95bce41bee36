// SPDX-License-Identifier: MIT
#include "settings/GeneralPane.h"

#include "app/LaunchAtLogin.h"
#include "app/PermissionsManager.h"
#include "platform/SystemServices.h"
#include "settings/Preferences.h"
#include "settings/SettingsForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStyle>
#include <QVBoxLayout>

namespace velkor {

namespace {

const QColor WarningOrange(255, 149, 0);
const QColor GrantedGreen(40, 170, 70);

// A group title inside the picker: shown, never chosen.
void addPickerHeading(QComboBox* picker, const QString& title)
{
    picker->addItem(title);
    auto* model = qobject_cast<QStandardItemModel*>(picker->model());
    QStandardItem* item = model->item(picker->count() - 1);
    item->setFlags(Qt::NoItemFlags);
    QFont font = item->font();
    font.setBold(true);
    item->setFont(font);
}

QLabel* colouredLabel(const QString& text, const QColor& color)
{
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
    return label;
}

} // namespace

GeneralPane::GeneralPane(const SettingsContext& context, QWidget* parent)
    : QWidget(parent), m_context(context)
{
    QVBoxLayout* pane = SettingsForm::paneColumn(this);
    buildActivation(SettingsForm::addSection(pane, QStringLiteral("Activation")));

    QVBoxLayout* startup = SettingsForm::addSection(pane, QStringLiteral("Startup"));
    m_launchAtLogin = new QCheckBox(QStringLiteral("Launch at login"));
    startup->addWidget(m_launchAtLogin);
    connect(m_launchAtLogin, &QCheckBox::toggled, this, [this](bool on) {
        m_context.prefs.setLaunchAtLogin(on);
        LaunchAtLogin::set(m_context.loginItem, on);
    });

    QVBoxLayout* search = SettingsForm::addSection(pane, QStringLiteral("Search"));
    m_searchIncludesApps = new QCheckBox(QStringLiteral("Include not-running apps in search"));
    search->addWidget(m_searchIncludesApps);
    search->addWidget(SettingsForm::footnote(
        QStringLiteral("Holding the key and typing searches; not-running apps launch only when "
                       "you release on them.")));
    connect(m_searchIncludesApps, &QCheckBox::toggled, &m_context.prefs,
            &Preferences::setSearchIncludesApps);

    buildPermissions(SettingsForm::addSection(pane, QStringLiteral("Permissions")));
    pane->addStretch(1);

    connect(&m_context.prefs, &Preferences::changed, this, &GeneralPane::showPreferences);
    connect(&m_context.permissions, &PermissionsManager::trustedChanged, this,
            &GeneralPane::showPermission);
    showPreferences();
    showPermission();
}

void GeneralPane::buildActivation(QVBoxLayout* column)
{
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(QStringLiteral("Activation key")));
    m_keyPicker = new QComboBox;
    const KeyNaming naming = m_context.traits.keyNaming;
    addPickerHeading(m_keyPicker, QStringLiteral("Right side"));
    for (const ModifierKey key : allModifierKeys()) {
        if (key == ModifierKey::leftCommand)
            addPickerHeading(m_keyPicker, QStringLiteral("Left side"));
        m_keyPicker->addItem(activationKeyLabel(key, naming), rawValue(key));
    }
    row->addWidget(m_keyPicker, 1);
    column->addLayout(row);

    m_rightHandNote = SettingsForm::footnote(
        QStringLiteral("Hold this key and press an app's first letter to switch to it. Your "
                       "left-hand shortcuts stay free."));
    column->addWidget(m_rightHandNote);
    m_leftHandWarning = colouredLabel(
        QStringLiteral("⚠ This key is also used for normal shortcuts, so those will be "
                       "intercepted while held."),
        WarningOrange);
    column->addWidget(m_leftHandWarning);
    m_keyCaveat = SettingsForm::footnote(QString());
    column->addWidget(m_keyCaveat);

    connect(m_keyPicker, &QComboBox::currentIndexChanged, this, [this] {
        const auto key = modifierKeyFromRaw(m_keyPicker->currentData().toString());
        if (key)
            m_context.prefs.setModifierKey(*key);
    });
}

void GeneralPane::buildPermissions(QVBoxLayout* column)
{
    auto* row = new QHBoxLayout;
    m_permissionIcon = new QLabel;
    m_permissionState = new QLabel;
    m_openSettings = new QPushButton(QStringLiteral("Open Settings"));
    row->addWidget(m_permissionIcon);
    row->addWidget(m_permissionState, 1);
    row->addWidget(m_openSettings);
    column->addLayout(row);
    connect(m_openSettings, &QPushButton::clicked, this,
            [this] { m_context.trust.openTrustSettings(); });
}

void GeneralPane::showPreferences()
{
    const Preferences& prefs = m_context.prefs;
    {
        const QSignalBlocker blocker(m_keyPicker);
        m_keyPicker->setCurrentIndex(m_keyPicker->findData(rawValue(prefs.modifierKey())));
    }
    const bool right = isRightHand(prefs.modifierKey());
    m_rightHandNote->setVisible(right);
    m_leftHandWarning->setVisible(!right);
    const std::optional<QString> caveat =
        activationKeyCaveat(prefs.modifierKey(), m_context.traits.keyNaming);
    m_keyCaveat->setText(caveat.value_or(QString()));
    m_keyCaveat->setVisible(caveat.has_value());

    const QSignalBlocker loginBlocker(m_launchAtLogin);
    m_launchAtLogin->setChecked(prefs.launchAtLogin());
    const QSignalBlocker searchBlocker(m_searchIncludesApps);
    m_searchIncludesApps->setChecked(prefs.searchIncludesApps());
}

void GeneralPane::showPermission()
{
    const bool trusted = m_context.permissions.isTrusted();
    m_permissionState->setText(trusted ? QStringLiteral("Accessibility granted")
                                       : QStringLiteral("Accessibility required"));
    QPalette palette = m_permissionState->palette();
    palette.setColor(QPalette::WindowText, trusted ? GrantedGreen : WarningOrange);
    m_permissionState->setPalette(palette);
    const QStyle::StandardPixmap symbol =
        trusted ? QStyle::SP_DialogApplyButton : QStyle::SP_MessageBoxWarning;
    m_permissionIcon->setPixmap(style()->standardIcon(symbol).pixmap(16, 16));
    // Where the system has no page for the permission there is nothing to open.
    m_openSettings->setVisible(!trusted && m_context.traits.hasTrustSettingsPage);
}

} // namespace velkor
