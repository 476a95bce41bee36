// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;

namespace velkor {

class AccentEditor;
class Preferences;

// The overlay's presence, place, delay, background, theme and accent.
class AppearancePane : public QWidget
{
    Q_OBJECT
public:
    explicit AppearancePane(Preferences& prefs, QWidget* parent = nullptr);

    QCheckBox& showOverlay() const { return *m_showOverlay; }
    QComboBox& position() const { return *m_position; }
    QSlider& delaySlider() const { return *m_delay; }
    QLabel& delayText() const { return *m_delayText; }
    QCheckBox& blurredBackground() const { return *m_blur; }
    QComboBox& theme() const { return *m_theme; }
    AccentEditor& accent() const { return *m_accent; }

    // "0.25s" for a quarter of a second.
    static QString delayLabel(double seconds);

private:
    void showPreferences();

    Preferences& m_prefs;
    QCheckBox* m_showOverlay;
    QComboBox* m_position;
    QSlider* m_delay;
    QLabel* m_delayText;
    QCheckBox* m_blur;
    QComboBox* m_theme;
    AccentEditor* m_accent;
};

} // namespace velkor
