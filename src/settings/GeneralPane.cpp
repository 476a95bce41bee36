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

void setTextColour(QLabel* label, const QColor& color)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
}

QLabel* colouredLabel(const QString& text, const QColor& color)
{
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    setTextColour(label, color);
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
    connect(&m_context.prefs, &Preferences::modifierKeyChanged, this,
            [this] { showKeyCheck(false); });
    connect(&m_context.permissions, &PermissionsManager::keyAccessChanged, this,
            &GeneralPane::showPermission);
    connect(&m_context.permissions, &PermissionsManager::activationKeyPressed, this,
            [this] { showKeyCheck(true); });
    showPreferences();
    showPermission();
    showKeyCheck(false);
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
    // Many laptops have no Right Super: pressing the key here tells at once
    // whether it exists and reaches Velkor.
    m_keyCheck = new QLabel;
    m_keyCheck->setWordWrap(true);
    column->addWidget(m_keyCheck);

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
    m_permissionDetail = SettingsForm::footnote(QString());
    column->addWidget(m_permissionDetail);
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
    const KeyAccess access = m_context.permissions.keyAccess();
    const KeyAccessWording words = describeKeyAccess(access, m_context.traits.keyNaming);
    const bool active = access == KeyAccess::active;
    m_permissionState->setText(words.paneState);
    setTextColour(m_permissionState, active ? GrantedGreen : WarningOrange);
    m_permissionDetail->setText(words.paneDetail);
    m_permissionDetail->setVisible(!words.paneDetail.isEmpty());
    const QStyle::StandardPixmap symbol =
        active ? QStyle::SP_DialogApplyButton : QStyle::SP_MessageBoxWarning;
    m_permissionIcon->setPixmap(style()->standardIcon(symbol).pixmap(16, 16));
    // Where the system has no page for the permission there is nothing to open.
    m_openSettings->setVisible(access == KeyAccess::notTrusted &&
                               m_context.traits.hasTrustSettingsPage);
}

void GeneralPane::showKeyCheck(bool lit)
{
    m_keyCheckLit = lit;
    const QString key =
        activationKeyLabel(m_context.prefs.modifierKey(), m_context.traits.keyNaming);
    if (lit) {
        m_keyCheck->setText(QStringLiteral("✓ Velkor sees %1.").arg(key));
        setTextColour(m_keyCheck, GrantedGreen);
    } else {
        m_keyCheck->setText(QStringLiteral("Press %1 now to check that Velkor sees it.").arg(key));
        setTextColour(m_keyCheck, palette().color(QPalette::PlaceholderText));
    }
}

} // namespace velkor
