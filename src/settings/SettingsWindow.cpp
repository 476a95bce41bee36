// SPDX-License-Identifier: MIT
#include "settings/SettingsWindow.h"

#include "platform/ShellIntegration.h"
#include "settings/AppearancePane.h"
#include "settings/AppsPane.h"
#include "settings/BehaviourPane.h"
#include "settings/GeneralPane.h"
#include "settings/SettingsForm.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QStackedWidget>
#include <QStyle>
#include <QVBoxLayout>

namespace velkor {

namespace {

constexpr QSize WindowSize(660, 470);

QIcon paneIcon(SettingsPane pane, const QStyle* style)
{
    // Icon theme names first; the style's own pixmaps where there is no theme.
    switch (pane) {
    case SettingsPane::general:
        return QIcon::fromTheme(QStringLiteral("preferences-system"),
                                style->standardIcon(QStyle::SP_ComputerIcon));
    case SettingsPane::behaviour:
        return QIcon::fromTheme(QStringLiteral("preferences-desktop"),
                                style->standardIcon(QStyle::SP_FileDialogListView));
    case SettingsPane::appearance:
        return QIcon::fromTheme(QStringLiteral("preferences-desktop-theme"),
                                style->standardIcon(QStyle::SP_DesktopIcon));
    case SettingsPane::apps:
        return QIcon::fromTheme(QStringLiteral("view-grid"),
                                style->standardIcon(QStyle::SP_FileDialogDetailedView));
    }
    return {};
}

} // namespace

QString paneTitle(SettingsPane pane)
{
    switch (pane) {
    case SettingsPane::general:
        return QStringLiteral("General");
    case SettingsPane::behaviour:
        return QStringLiteral("Behaviour");
    case SettingsPane::appearance:
        return QStringLiteral("Appearance");
    case SettingsPane::apps:
        return QStringLiteral("Apps");
    }
    return {};
}

SettingsWindow::SettingsWindow(const SettingsContext& context, QWidget* parent)
    : QWidget(parent, Qt::Window), m_sidebar(new QListWidget), m_stack(new QStackedWidget),
      m_title(new QLabel), m_version(new QLabel),
      m_trayMissing(SettingsForm::footnote(QStringLiteral(
          "There is no system tray on this desktop, so Velkor has no icon. To open these "
          "settings again, start Velkor again from the applications menu (or run velkor)."))),
      m_general(new GeneralPane(context)),
      m_behaviour(new BehaviourPane(context.prefs, context.traits.keyNaming)),
      m_appearance(new AppearancePane(context.prefs)),
      m_apps(new AppsPane(context.prefs, context.registry, context.shell))
{
    setWindowTitle(QStringLiteral("Velkor Settings"));
    resize(WindowSize);

    for (const SettingsPane pane : {SettingsPane::general, SettingsPane::behaviour,
                                    SettingsPane::appearance, SettingsPane::apps})
        m_sidebar->addItem(new QListWidgetItem(paneIcon(pane, style()), paneTitle(pane)));
    m_sidebar->setFixedWidth(SidebarWidth);
    m_sidebar->setIconSize(QSize(18, 18));
    m_sidebar->setSpacing(3);
    m_stack->addWidget(m_general);
    m_stack->addWidget(m_behaviour);
    m_stack->addWidget(m_appearance);
    m_stack->addWidget(m_apps);

    QFont titleFont = m_title->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    m_title->setFont(titleFont);
    m_title->setContentsMargins(20, 12, 20, 0);

    m_version->setText(QStringLiteral("Velkor ") +
                       (context.version.isEmpty() ? QStringLiteral("0.1.0") : context.version));
    m_version->setAlignment(Qt::AlignCenter);
    m_version->setContentsMargins(0, 8, 0, 8);
    QFont caption = m_version->font();
    caption.setPointSizeF(caption.pointSizeF() * 0.85);
    m_version->setFont(caption);
    m_version->setForegroundRole(QPalette::PlaceholderText);

    auto* detail = new QVBoxLayout;
    detail->setContentsMargins(0, 0, 0, 0);
    detail->addWidget(m_title);
    detail->addWidget(m_stack, 1);
    auto* split = new QHBoxLayout;
    split->setContentsMargins(0, 0, 0, 0);
    split->setSpacing(0);
    split->addWidget(m_sidebar);
    split->addLayout(detail, 1);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    outer->addLayout(split, 1);
    m_trayMissing->setContentsMargins(20, 8, 20, 0);
    outer->addWidget(m_trayMissing);
    outer->addWidget(m_version);

    ShellIntegration& shell = context.shell;
    m_trayMissing->setVisible(!shell.hasSystemTray());
    shell.watchSystemTray(m_trayMissing,
                          [this, &shell] { m_trayMissing->setVisible(!shell.hasSystemTray()); });

    connect(m_sidebar, &QListWidget::currentRowChanged, this,
            [this](int row) { showPane(SettingsPane(row)); });
    showPane(SettingsPane::general);
}

void SettingsWindow::showPane(SettingsPane pane)
{
    const int row = int(pane);
    if (m_sidebar->currentRow() != row)
        m_sidebar->setCurrentRow(row);
    m_stack->setCurrentIndex(row);
    m_title->setText(paneTitle(pane));
}

SettingsPane SettingsWindow::currentPane() const
{
    return SettingsPane(m_stack->currentIndex());
}

void SettingsWindow::closeEvent(QCloseEvent* event)
{
    QWidget::closeEvent(event);
    emit closed();
}

} // namespace velkor
