// SPDX-License-Identifier: MIT
#pragma once

#include "settings/AccentPopover.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace velkor {

class AccentSwatch;
class Preferences;

// The accent row: one swatch per preset, the current one ringed, and a custom
// swatch that opens the slider and hex editor.
class AccentEditor : public QWidget
{
    Q_OBJECT
public:
    inline static const QStringList presetAccents = {"#FEBC2E", "#FF5F57", "#28C840",
                                                     "#0A84FF", "#BF5AF2", "#FF9F0A"};

    explicit AccentEditor(Preferences& prefs, QWidget* parent = nullptr);

    AccentSwatch& presetSwatch(int index) const { return *m_presets.at(index); }
    AccentSwatch& customSwatch() const { return *m_custom; }

    // Opens the editor under the custom swatch.
    void openPopover();
    // The open editor, if any.
    AccentPopover* popover() const { return m_popover; }

private:
    void refresh();

    Preferences& m_prefs;
    QList<AccentSwatch*> m_presets;
    AccentSwatch* m_custom;
    QPointer<AccentPopover> m_popover;
};

} // namespace velkor
