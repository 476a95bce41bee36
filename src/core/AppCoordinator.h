// SPDX-License-Identifier: MIT
#pragma once

#include "catalogue/AppEntry.h"
#include "core/AppActivator.h"
#include "input/KeyMonitor.h"
#include "input/KeyMonitorHandler.h"
#include "overlay/OverlayController.h"
#include "windows/SpacesManager.h"
#include "windows/WindowEntry.h"
#include "windows/WindowManager.h"

#include <QList>
#include <QString>
#include <memory>
#include <optional>

namespace velkor {

struct Platform;
class AppRegistry;
class Preferences;

// The switching session's state machine: turns activation-key gestures into
// switches, searches, window and Space actions, and writes what the overlay
// shows.
class AppCoordinator final : public KeyMonitorHandler
{
public:
    enum class Mode
    {
        hint,
        letterCycle,
        search
    };

    AppCoordinator(Platform& platform, Preferences& prefs, AppRegistry& registry,
                   OverlayController::PanelFactory makePanel);
    ~AppCoordinator() override;

    KeyMonitor& keyMonitor() { return m_keyMonitor; }
    OverlayController& overlay() { return m_overlay; }
    const KeyMonitor& keyMonitor() const { return m_keyMonitor; }
    const OverlayController& overlay() const { return m_overlay; }

    // KeyMonitorHandler
    void beginSession() override;
    void commitAndEnd() override;
    void endSession() override;
    void enterWindowMode() override;
    bool handleCharacter(const QString& ch) override;
    bool handleDigit(int n) override;
    bool handleAction(KeyAction action) override;
    bool commandTabPressed(bool backwards) override;
    bool cycleSameAppWindows(bool backwards) override;
    void commandTabReleased() override;
    void setSecondaryDown(bool down) override;

    // Session state, for observers and tests.
    Mode mode() const { return m_mode; }
    const QString& query() const { return m_query; }
    const std::optional<QString>& cycleLetter() const { return m_cycleLetter; }
    int cycleIndex() const { return m_cycleIndex; }
    bool pendingLetterCommit() const { return m_pendingLetterCommit; }
    bool secondaryDown() const { return m_secondaryDown; }
    bool windowMode() const { return m_windowMode; }
    bool isCommandTab() const { return m_isCommandTab; }
    const QList<WindowEntry>& currentWindows() const { return m_currentWindows; }
    const QList<WindowEntry>& sameAppWindows() const { return m_sameAppWindows; }
    int sameAppIdx() const { return m_sameAppIdx; }
    double sameAppAt() const { return m_sameAppAt; }

private:
    enum class WindowAction
    {
        closeWindow,
        quitApp,
        hideApp
    };

    // Letter switching and commits (AppCoordinator.cpp).
    void resetSessionState();
    void pressLetter(const QString& letter, bool firstPress);
    void commitPendingLetter();
    void refreshOverlay();
    void commitIndex(int i);
    void hover(int i);
    void activateItem(const OverlayItem& item);
    void didActivate(std::optional<Pid> pid);
    void layoutIfVisible();

    // Search, windows, Spaces and actions (AppCoordinatorActions.cpp).
    void updateSearchResults();
    void rebuildWindowItems();
    void commitWindowSelection();
    void moveSelection(int delta);
    void switchToAdjacentSpace(int delta);
    void performWindowAction(WindowAction action);

    Platform& m_platform;
    Preferences& m_prefs;
    AppRegistry& m_registry;
    KeyMonitor m_keyMonitor;
    OverlayController m_overlay;
    AppActivator m_activator;
    WindowManager m_windowManager;
    SpacesManager m_spacesManager;

    Mode m_mode = Mode::hint;
    QString m_query;
    std::optional<QString> m_cycleLetter;
    int m_cycleIndex = 0;
    bool m_pendingLetterCommit = false;
    bool m_secondaryDown = false;
    bool m_windowMode = false;
    bool m_isCommandTab = false;
    QList<WindowEntry> m_currentWindows;
    QList<WindowEntry> m_sameAppWindows;
    int m_sameAppIdx = 0;
    double m_sameAppAt = 0;

    // Deferred work holds this weakly: a pointer move scheduled just before
    // the coordinator goes away finds it gone and does nothing.
    std::shared_ptr<AppCoordinator*> m_self;
};

} // namespace velkor
