// SPDX-License-Identifier: MIT
#include "settings/AppearancePane.h"

#include "settings/AccentEditor.h"
#include "settings/Preferences.h"
#include "settings/SettingsForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace velkor {

namespace {

constexpr int DelayTextWidth = 48;
// The delay slider moves in the steps Preferences keeps the delay on.
constexpr int DelayStepsPerSecond = Preferences::OverlayDelayStepsPerSecond;
constexpr int DelaySteps = int(Preferences::MaxOverlayDelay * DelayStepsPerSecond);

QHBoxLayout* labelledRow(const QString& text, QWidget* control)
{
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(text));
    row->addWidget(control, 1);
    return row;
}

} // namespace

AppearancePane::AppearancePane(Preferences& prefs, QWidget* parent)
    : QWidget(parent), m_prefs(prefs), m_showOverlay(new QCheckBox(QStringLiteral("Show overlay"))),
      m_position(new QComboBox), m_delay(new QSlider(Qt::Horizontal)), m_delayText(new QLabel),
      m_blur(new QCheckBox(QStringLiteral("Blurred background"))), m_theme(new QComboBox),
      m_accent(new AccentEditor(prefs))
{
    QVBoxLayout* pane = SettingsForm::paneColumn(this);

    QVBoxLayout* overlay = SettingsForm::addSection(pane, QStringLiteral("Overlay"));
    overlay->addWidget(m_showOverlay);
    for (const OverlayPosition position : allOverlayPositions())
        m_position->addItem(label(position), rawValue(position));
    overlay->addLayout(labelledRow(QStringLiteral("Position"), m_position));

    m_delay->setRange(0, DelaySteps);
    m_delay->setSingleStep(1);
    m_delay->setPageStep(2);
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    m_delayText->setFont(digits);
    m_delayText->setFixedWidth(DelayTextWidth);
    m_delayText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QHBoxLayout* delayRow = labelledRow(QStringLiteral("Appear after"), m_delay);
    delayRow->addWidget(m_delayText);
    overlay->addLayout(delayRow);
    overlay->addWidget(m_blur);

    QVBoxLayout* theme = SettingsForm::addSection(pane, QStringLiteral("Theme"));
    for (const AppTheme value : allAppThemes())
        m_theme->addItem(label(value), rawValue(value));
    theme->addLayout(labelledRow(QStringLiteral("Appearance"), m_theme));
    theme->addLayout(labelledRow(QStringLiteral("Accent"), m_accent));
    pane->addStretch(1);

    connect(m_showOverlay, &QCheckBox::toggled, &m_prefs, &Preferences::setOverlayEnabled);
    connect(m_blur, &QCheckBox::toggled, &m_prefs, &Preferences::setBlurEnabled);
    connect(m_position, &QComboBox::currentIndexChanged, this, [this] {
        if (const auto value = overlayPositionFromRaw(m_position->currentData().toString()))
            m_prefs.setOverlayPosition(*value);
    });
    connect(m_theme, &QComboBox::currentIndexChanged, this, [this] {
        if (const auto value = appThemeFromRaw(m_theme->currentData().toString()))
            m_prefs.setTheme(*value);
    });
    // Whole steps divided once, so 5 steps store exactly 0.25.
    connect(m_delay, &QSlider::valueChanged, this,
            [this](int steps) { m_prefs.setOverlayDelay(steps / double(DelayStepsPerSecond)); });
    connect(&m_prefs, &Preferences::changed, this, &AppearancePane::showPreferences);
    showPreferences();
}

QString AppearancePane::delayLabel(double seconds)
{
    return QString::asprintf("%.2fs", seconds);
}

void AppearancePane::showPreferences()
{
    const QSignalBlocker b1(m_showOverlay), b2(m_position), b3(m_delay), b4(m_blur), b5(m_theme);
    m_showOverlay->setChecked(m_prefs.overlayEnabled());
    m_position->setCurrentIndex(m_position->findData(rawValue(m_prefs.overlayPosition())));
    m_delay->setValue(int(std::lround(m_prefs.overlayDelay() * DelayStepsPerSecond)));
    m_delayText->setText(delayLabel(m_prefs.overlayDelay()));
    m_blur->setChecked(m_prefs.blurEnabled());
    m_theme->setCurrentIndex(m_theme->findData(rawValue(m_prefs.theme())));
}

} // namespace velkor
