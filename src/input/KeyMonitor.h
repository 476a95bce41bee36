// SPDX-License-Identifier: MIT
#pragma once

#include "input/KeyMonitorHandler.h"
#include "platform/Clock.h"
#include "platform/KeySource.h"
#include "settings/SettingsEnums.h"

#include <QList>
#include <QMetaObject>
#include <functional>
#include <memory>
#include <optional>

namespace velkor {

class Preferences;

// Tracks the activation key, detects double taps, classifies key events into
// handler calls, and answers whether each event is swallowed.
class KeyMonitor
{
public:
    static constexpr double DoubleTapWindow = 0.35;

    // source may be null (tests drive handle() directly).
    KeyMonitor(Preferences& prefs, KeySource* source);
    ~KeyMonitor();

    KeyMonitor(const KeyMonitor&) = delete;
    KeyMonitor& operator=(const KeyMonitor&) = delete;

    // Not owned; the handler outlives the monitor or clears itself.
    void setHandler(KeyMonitorHandler* handler) { m_handler = handler; }

    // Told the first access state and every change of it, whatever caused
    // it: a start, a watchdog tick, another activation key chosen.
    void setAccessObserver(std::function<void(KeyAccess)> observer);
    // Told each time the activation key goes down and a session begins.
    void setActivationPressObserver(std::function<void()> observer);

    // Installs the key source; true when it is in place afterwards. From
    // here on, the source follows the settings it watches.
    bool start();

    // The watchdog's tick: installs the source if an earlier start failed,
    // otherwise lets it recover what the platform took away.
    void watchdogTick();

    // Whether the activation key reaches the monitor now.
    KeyAccess access() const;

    KeyDecision handle(const KeyEvent& event);

    static std::optional<KeyAction> action(qint64 keyCode, bool leftCommandHeld);
    static qint64 activationKeyCode(ModifierKey key);
    static quint64 activationFlagBit(ModifierKey key);
    // 1-9 for the digit keys of the main row and the keypad.
    static std::optional<int> digitAt(qint64 keyCode);

    bool primaryHeld() const { return m_primaryHeld; }
    bool secondaryHeld() const { return m_secondaryHeld; }
    bool commandTabActive() const { return m_commandTabActive; }
    double lastPrimaryDownAt() const { return m_lastPrimaryDownAt; }

private:
    void handleFlagsChanged(const KeyEvent& event);
    void repairMissedReleases(quint64 flags);
    void resynchronise(quint64 flags);
    KeyDecision handleKey(const KeyEvent& event);
    std::optional<int> digitOf(const KeyEvent& event) const;
    KeyWatch currentWatch() const;
    void followWatchedSettings();
    void reportAccess();

    KeyMonitorHandler* m_handler = nullptr;
    KeySource* m_source = nullptr;
    bool m_primaryHeld = false;
    bool m_secondaryHeld = false;
    double m_lastPrimaryDownAt = 0;
    bool m_commandTabActive = false;
    Preferences& m_prefs;
    std::function<void(KeyAccess)> m_accessObserver;
    std::function<void()> m_activationPressObserver;
    std::optional<KeyAccess> m_reportedAccess;
    // The source keeps our callback for as long as it lives; the callback
    // holds this weakly so events after our destruction simply pass.
    std::shared_ptr<KeyMonitor*> m_self;
    QList<QMetaObject::Connection> m_settingsConnections;
};

} // namespace velkor
