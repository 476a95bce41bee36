// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace velkor {

class StatusMenuModel;

// The tray (menu-bar) item and its menu. The menu object stays the same for
// the item's life; its entries are rebuilt from the model each time it opens,
// so the first line shows the current state of keyboard access.
class StatusItemController : public QObject
{
    Q_OBJECT
public:
    // trayOpensMenu: the tray opens the menu on a click by itself (the macOS
    // status item), so a click must not open it a second time.
    explicit StatusItemController(StatusMenuModel& model, bool trayOpensMenu = false,
                                  QObject* parent = nullptr);
    ~StatusItemController() override;

    // Creates the tray item with its icon, tool tip and menu, and shows it.
    void install();

    QMenu& menu() const { return *m_menu; }
    // Null until install().
    QSystemTrayIcon* trayIcon() const { return m_tray; }

private:
    void rebuildMenu();

    StatusMenuModel& m_model;
    bool m_trayOpensMenu;
    std::unique_ptr<QMenu> m_menu;
    QSystemTrayIcon* m_tray = nullptr;
};

} // namespace velkor
