// SPDX-License-Identifier: MIT
#pragma once

#include "input/KeyMonitorHandler.h"
#include "platform/Clock.h"
#include "platform/KeySource.h"
#include "settings/SettingsEnums.h"

#include <QList>
#include <QMetaObject>
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

    // Installs the key source; true when it is in place afterwards. Logs the
    // installed or failed line.
    bool start();

    // Re-enables a source the platform has switched off (the watchdog's tick).
    void reenableIfDisabled();

    KeyDecision handle(const KeyEvent& event);

    static std::optional<KeyAction> action(qint64 keyCode, bool leftCommandHeld);
    static qint64 activationKeyCode(ModifierKey key);
    static quint64 activationFlagBit(ModifierKey key);

    bool primaryHeld() const { return m_primaryHeld; }
    bool secondaryHeld() const { return m_secondaryHeld; }
    bool commandTabActive() const { return m_commandTabActive; }
    double lastPrimaryDownAt() const { return m_lastPrimaryDownAt; }

private:
    void handleFlagsChanged(const KeyEvent& event);
    KeyDecision handleKey(const KeyEvent& event);
    KeyWatch currentWatch() const;
    void followWatchedSettings();

    KeyMonitorHandler* m_handler = nullptr;
    KeySource* m_source = nullptr;
    bool m_primaryHeld = false;
    bool m_secondaryHeld = false;
    double m_lastPrimaryDownAt = 0;
    bool m_commandTabActive = false;
    Preferences& m_prefs;
    // The source keeps our callback for as long as it lives; the callback
    // holds this weakly so events after our destruction simply pass.
    std::shared_ptr<KeyMonitor*> m_self;
    QList<QMetaObject::Connection> m_settingsConnections;
};

} // namespace velkor
