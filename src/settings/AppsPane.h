// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QWidget>

class QCheckBox;
class QVBoxLayout;

namespace velkor {

class AppRegistry;
class Preferences;
class ShellIntegration;

// One toggle per running app; turning one on excludes that app from
// switching, search and window lists. Excluded apps leave the registry's
// running list and so leave this pane too.
class AppsPane : public QWidget
{
    Q_OBJECT
public:
    AppsPane(Preferences& prefs, AppRegistry& registry, ShellIntegration& shell,
             QWidget* parent = nullptr);

    // The rows, in the registry's order.
    const QList<QCheckBox*>& rows() const { return m_rows; }

private:
    void rebuild();

    Preferences& m_prefs;
    AppRegistry& m_registry;
    ShellIntegration& m_shell;
    QVBoxLayout* m_list;
    QList<QCheckBox*> m_rows;
};

} // namespace velkor
