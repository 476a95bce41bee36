// SPDX-License-Identifier: MIT
#include "settings/AppsPane.h"

#include "catalogue/AppRegistry.h"
#include "platform/ShellIntegration.h"
#include "settings/Preferences.h"
#include "settings/SettingsForm.h"

#include <QCheckBox>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace velkor {

namespace {
constexpr int IconSize = 18;
} // namespace

AppsPane::AppsPane(Preferences& prefs, AppRegistry& registry, ShellIntegration& shell,
                   QWidget* parent)
    : QWidget(parent), m_prefs(prefs), m_registry(registry), m_shell(shell)
{
    QVBoxLayout* pane = SettingsForm::paneColumn(this);
    QVBoxLayout* section = SettingsForm::addSection(pane, QStringLiteral("Excluded apps"));
    section->addWidget(SettingsForm::footnote(
        QStringLiteral("Excluded apps are ignored by switching, search, and windows.")));

    // Many apps can run at once; the rows scroll within the section.
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* rows = new QWidget;
    m_list = new QVBoxLayout(rows);
    m_list->setContentsMargins(0, 0, 0, 0);
    m_list->addStretch(1);
    scroll->setWidget(rows);
    // The rows sit on the section's own background.
    scroll->viewport()->setAutoFillBackground(false);
    rows->setAutoFillBackground(false);
    section->addWidget(scroll, 1);

    connect(&m_registry, &AppRegistry::runningAppsChanged, this, &AppsPane::rebuild);
    connect(&m_prefs, &Preferences::excludedBundleIdsChanged, this, &AppsPane::rebuild);
    rebuild();
}

void AppsPane::rebuild()
{
    // Called from a row's own toggle: the row is deleted once that returns.
    for (QCheckBox* row : std::as_const(m_rows)) {
        row->hide();
        row->deleteLater();
    }
    m_rows.clear();

    const QStringList excluded = m_prefs.excludedBundleIds();
    for (const AppEntry& app : m_registry.runningApps()) {
        auto* row = new QCheckBox(app.name);
        row->setIconSize(QSize(IconSize, IconSize));
        if (const auto path = app.path())
            row->setIcon(m_shell.iconForFile(*path));
        if (app.bundleId) {
            row->setChecked(excluded.contains(*app.bundleId));
            const QString bundleId = *app.bundleId;
            connect(row, &QCheckBox::toggled, this, [this, bundleId](bool on) {
                m_prefs.setExcluded(on, bundleId);
                m_registry.refreshRunning();
            });
        } else {
            row->setEnabled(false);
        }
        m_list->insertWidget(m_list->count() - 1, row);
        m_rows.append(row);
    }
}

} // namespace velkor
