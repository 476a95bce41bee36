// SPDX-License-Identifier: MIT
#include "settings/SettingsForm.h"

#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace velkor::SettingsForm {

QVBoxLayout* paneColumn(QWidget* pane)
{
    auto* column = new QVBoxLayout(pane);
    column->setContentsMargins(20, 16, 20, 16);
    column->setSpacing(14);
    return column;
}

QVBoxLayout* addSection(QVBoxLayout* pane, const QString& title)
{
    auto* box = new QGroupBox(title);
    auto* column = new QVBoxLayout(box);
    column->setSpacing(8);
    pane->addWidget(box);
    return column;
}

QLabel* footnote(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.85);
    label->setFont(font);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

} // namespace velkor::SettingsForm
