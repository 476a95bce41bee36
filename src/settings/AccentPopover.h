// SPDX-License-Identifier: MIT
#pragma once

#include <QFrame>
#include <array>
#include <optional>

class QLabel;
class QLineEdit;
class QSlider;

namespace velkor {

class AccentSwatch;
class Preferences;

// The custom accent editor: red, green and blue sliders and a hex field, all
// writing the accent setting as "#" and six upper-case hex digits.
class AccentPopover : public QFrame
{
    Q_OBJECT
public:
    enum Channel
    {
        red,
        green,
        blue
    };

    explicit AccentPopover(Preferences& prefs, QWidget* parent = nullptr);

    // Fills the channels from the stored accent (yellow when it is not a
    // colour). Only the first call does anything.
    void load();

    // The channels as six upper-case hex digits, without "#".
    QString currentHex() const;

    // Takes the hex field's text when it is six hex digits (spaces around and
    // any "#" ignored); anything else leaves everything as it is.
    void applyTypedHex();

    // Six hex digits in text, once spaces and every "#" are removed.
    static std::optional<QString> typedHexDigits(const QString& text);

    QSlider& slider(Channel channel) const { return *m_sliders[channel]; }
    QLabel& valueLabel(Channel channel) const { return *m_values[channel]; }
    QLineEdit& hexField() const { return *m_hexField; }
    QColor previewColor() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void sliderMoved();
    void setChannels(int r, int g, int b);
    void showChannels();

    Preferences& m_prefs;
    std::array<QSlider*, 3> m_sliders{};
    std::array<QLabel*, 3> m_values{};
    AccentSwatch* m_preview;
    QLineEdit* m_hexField;
    bool m_loaded = false;
};

} // namespace velkor
