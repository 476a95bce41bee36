// SPDX-License-Identifier: MIT
#pragma once

#include "settings/SettingsContext.h"

#include <QWidget>

class QLabel;
class QListWidget;
class QStackedWidget;

namespace velkor {

class AppearancePane;
class AppsPane;
class BehaviourPane;
class GeneralPane;

// The sidebar entries, in order.
enum class SettingsPane
{
    general,
    behaviour,
    appearance,
    apps
};

QString paneTitle(SettingsPane pane);

// The settings window: the panes in a sidebar, the chosen one beside it, the
// version at the bottom. Every control writes its setting at once.
class SettingsWindow : public QWidget
{
    Q_OBJECT
public:
    static constexpr int SidebarWidth = 176;

    explicit SettingsWindow(const SettingsContext& context, QWidget* parent = nullptr);

    void showPane(SettingsPane pane);
    SettingsPane currentPane() const;

    QListWidget& sidebar() const { return *m_sidebar; }
    QLabel& versionLabel() const { return *m_version; }
    // Shown while there is no system tray: how to reach this window again.
    QLabel& trayMissingLabel() const { return *m_trayMissing; }
    GeneralPane& general() const { return *m_general; }
    BehaviourPane& behaviour() const { return *m_behaviour; }
    AppearancePane& appearance() const { return *m_appearance; }
    AppsPane& apps() const { return *m_apps; }

signals:
    // The window was closed (it is kept for the next showing).
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QListWidget* m_sidebar;
    QStackedWidget* m_stack;
    QLabel* m_title;
    QLabel* m_version;
    QLabel* m_trayMissing;
    GeneralPane* m_general;
    BehaviourPane* m_behaviour;
    AppearancePane* m_appearance;
    AppsPane* m_apps;
};

} // namespace velkor
