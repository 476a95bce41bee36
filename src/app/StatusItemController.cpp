// SPDX-License-Identifier: MIT
#include "app/StatusItemController.h"

#include "app/MenuBarIcon.h"
#include "app/PermissionsManager.h"
#include "app/StatusMenuModel.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMenu>
#include <QPalette>
#include <QSystemTrayIcon>

namespace velkor {

StatusItemController::StatusItemController(StatusMenuModel& model, bool trayOpensMenu,
                                           QObject* parent)
    : QObject(parent), m_model(model), m_trayOpensMenu(trayOpensMenu),
      m_menu(std::make_unique<QMenu>())
{
    connect(m_menu.get(), &QMenu::aboutToShow, this, &StatusItemController::rebuildMenu);
    // Filled now too, for trays that read the menu before it is opened
    // (StatusNotifierItem hosts export it over D-Bus).
    rebuildMenu();
}

StatusItemController::~StatusItemController() = default;

void StatusItemController::install()
{
    if (m_tray)
        return;
    m_tray = new QSystemTrayIcon(this);
    m_tray->setIcon(MenuBarIcon::icon(QGuiApplication::palette().color(QPalette::WindowText)));
    m_tray->setToolTip(m_model.toolTip());
    // A key taken by another program shows at a glance, without opening the menu.
    connect(&m_model.permissions(), &PermissionsManager::keyAccessChanged, m_tray,
            [this] { m_tray->setToolTip(m_model.toolTip()); });
    m_tray->setContextMenu(m_menu.get());
    // A plain click opens the menu as well, as a menu-bar item does.
    connect(m_tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
        if (r == QSystemTrayIcon::Trigger && !m_trayOpensMenu)
            m_menu->popup(QCursor::pos());
    });
    m_tray->show();
}

void StatusItemController::rebuildMenu()
{
    m_menu->clear();
    for (const StatusMenuEntry& entry : m_model.rebuild()) {
        if (entry.separator) {
            m_menu->addSeparator();
            continue;
        }
        QAction* action = m_menu->addAction(entry.title);
        action->setEnabled(entry.enabled);
        if (entry.action != StatusMenuAction::none) {
            const StatusMenuAction which = entry.action;
            connect(action, &QAction::triggered, this, [this, which] { m_model.trigger(which); });
        }
    }
}

} // namespace velkor
