// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QCheckBox;
class QGroupBox;
class QLabel;
class QVBoxLayout;
class QWidget;

namespace velkor {

// The building blocks the panes share: titled sections and footnotes.
namespace SettingsForm {

// A titled section appended to the pane's column; returns its own column.
QVBoxLayout* addSection(QVBoxLayout* pane, const QString& title);

// A caption-sized, secondary-coloured note, wrapped.
QLabel* footnote(const QString& text, QWidget* parent = nullptr);

// A column for a pane, with the standard margins.
QVBoxLayout* paneColumn(QWidget* pane);

} // namespace SettingsForm
} // namespace velkor
