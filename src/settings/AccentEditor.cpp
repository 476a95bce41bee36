// SPDX-License-Identifier: MIT
#include "settings/AccentEditor.h"

#include "settings/AccentPopover.h"
#include "settings/AccentSwatch.h"
#include "settings/ColorHex.h"
#include "settings/Preferences.h"

#include <QHBoxLayout>

namespace velkor {

AccentEditor::AccentEditor(Preferences& prefs, QWidget* parent)
    : QWidget(parent), m_prefs(prefs),
      m_custom(new AccentSwatch(AccentSwatch::Shape::roundedRect, this))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    for (const QString& preset : presetAccents) {
        auto* swatch = new AccentSwatch(AccentSwatch::Shape::circle, this);
        swatch->setColor(colorFromHex(preset).value_or(QColor(Qt::gray)));
        swatch->setToolTip(preset);
        swatch->setAccessibleName(preset);
        connect(swatch, &AccentSwatch::clicked, this,
                [this, preset] { m_prefs.setAccentHex(preset); });
        row->addWidget(swatch);
        m_presets.append(swatch);
    }
    row->addSpacing(6);
    m_custom->setToolTip(QStringLiteral("Custom colour"));
    m_custom->setAccessibleName(QStringLiteral("Custom colour"));
    row->addWidget(m_custom);
    row->addStretch(1);

    connect(m_custom, &AccentSwatch::clicked, this, &AccentEditor::openPopover);
    connect(&m_prefs, &Preferences::accentHexChanged, this, &AccentEditor::refresh);
    refresh();
}

void AccentEditor::refresh()
{
    const QString hex = m_prefs.accentHex();
    for (int i = 0; i < m_presets.size(); ++i)
        m_presets[i]->setMarked(presetAccents[i].compare(hex, Qt::CaseInsensitive) == 0);
    m_custom->setColor(colorFromHex(hex).value_or(QColor(Qt::gray)));
}

void AccentEditor::openPopover()
{
    if (m_popover)
        return;
    // A fresh editor each time, so it starts from the colour stored now.
    m_popover = new AccentPopover(m_prefs, this);
    m_popover->adjustSize();
    m_popover->move(m_custom->mapToGlobal(QPoint(0, m_custom->height() + 4)));
    m_popover->show();
}

} // namespace velkor
