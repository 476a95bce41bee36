// SPDX-License-Identifier: MIT
#include "input/KeyMonitor.h"

#include "platform/KeyCodes.h"
#include "settings/Preferences.h"

#include <QObject>
#include <QtGlobal>

namespace velkor {

namespace {

bool hasBit(quint64 flags, quint64 bit)
{
    return (flags & bit) != 0;
}

// The first character the key types: one code point, so a letter outside the
// Basic Multilingual Plane is not cut in half.
QString firstCharacter(const QString& characters)
{
    if (characters.isEmpty())
        return {};
    const int length = characters.size() > 1 && characters.at(0).isHighSurrogate() &&
                               characters.at(1).isLowSurrogate()
                           ? 2
                           : 1;
    return characters.left(length);
}

char32_t codePoint(const QString& character)
{
    if (character.size() == 2)
        return QChar::surrogateToUcs4(character.at(0), character.at(1));
    return character.at(0).unicode();
}

} // namespace

KeyMonitor::KeyMonitor(Preferences& prefs, KeySource* source)
    : m_source(source), m_prefs(prefs), m_self(std::make_shared<KeyMonitor*>(this))
{}

KeyMonitor::~KeyMonitor()
{
    for (const auto& connection : m_settingsConnections)
        QObject::disconnect(connection);
}

qint64 KeyMonitor::activationKeyCode(ModifierKey key)
{
    switch (key) {
    case ModifierKey::rightCommand:
        return keys::RightCommand;
    case ModifierKey::rightOption:
        return keys::RightOption;
    case ModifierKey::rightControl:
        return keys::RightControl;
    case ModifierKey::leftCommand:
        return keys::LeftCommand;
    case ModifierKey::leftOption:
        return keys::LeftOption;
    case ModifierKey::leftControl:
        return keys::LeftControl;
    }
    return keys::RightCommand;
}

quint64 KeyMonitor::activationFlagBit(ModifierKey key)
{
    switch (key) {
    case ModifierKey::rightCommand:
        return keys::RightCommandBit;
    case ModifierKey::rightOption:
        return keys::RightOptionBit;
    case ModifierKey::rightControl:
        return keys::RightControlBit;
    case ModifierKey::leftCommand:
        return keys::LeftCommandBit;
    case ModifierKey::leftOption:
        return keys::LeftOptionBit;
    case ModifierKey::leftControl:
        return keys::LeftControlBit;
    }
    return keys::RightCommandBit;
}

std::optional<KeyAction> KeyMonitor::action(qint64 keyCode, bool leftCommandHeld)
{
    switch (keyCode) {
    case keys::Escape:
        return KeyAction::cancel;
    case keys::Return:
        return KeyAction::commit;
    case keys::Tab:
        return KeyAction::next;
    case keys::Grave:
        return KeyAction::previous;
    case keys::W:
        return leftCommandHeld ? std::optional(KeyAction::closeWindow) : std::nullopt;
    case keys::Q:
        return leftCommandHeld ? std::optional(KeyAction::quitApp) : std::nullopt;
    case keys::H:
        return leftCommandHeld ? std::optional(KeyAction::hideApp) : std::nullopt;
    case keys::LeftBracket:
        return KeyAction::previousSpace;
    case keys::RightBracket:
        return KeyAction::nextSpace;
    default:
        return std::nullopt;
    }
}

std::optional<int> KeyMonitor::digitAt(qint64 keyCode)
{
    for (int i = 0; i < 9; ++i) {
        if (keys::DigitRow[i] == keyCode || keys::KeypadDigits[i] == keyCode)
            return i + 1;
    }
    return std::nullopt;
}

KeyWatch KeyMonitor::currentWatch() const
{
    KeyWatch watch;
    watch.activationKeyCode = activationKeyCode(m_prefs.modifierKey());
    watch.commandTab = m_prefs.replaceCommandTab();
    watch.commandGrave = m_prefs.cmdBacktickCycle();
    return watch;
}

void KeyMonitor::setAccessObserver(std::function<void(KeyAccess)> observer)
{
    m_accessObserver = std::move(observer);
}

void KeyMonitor::setActivationPressObserver(std::function<void()> observer)
{
    m_activationPressObserver = std::move(observer);
}

bool KeyMonitor::start()
{
    if (!m_source) {
        reportAccess();
        return false;
    }
    followWatchedSettings();
    if (!m_source->isInstalled()) {
        // Grabbing backends install exactly what they watch, so they learn
        // the activation key before they are asked to install.
        m_source->watch(currentWatch());
        const std::weak_ptr<KeyMonitor*> self = m_self;
        m_source->install([self](const KeyEvent& event) {
            const auto monitor = self.lock();
            return monitor ? (*monitor)->handle(event) : KeyDecision::Pass;
        });
    }
    reportAccess();
    return m_source->isInstalled();
}

// Grabbing backends only see the keys they were told about, so a change of
// the activation key or of the Command shortcuts must reach them at once,
// also while an install the platform refused waits for the next try.
void KeyMonitor::followWatchedSettings()
{
    if (!m_settingsConnections.isEmpty())
        return;
    const auto rewatch = [this] {
        m_source->watch(currentWatch());
        reportAccess();
    };
    m_settingsConnections = {
        QObject::connect(&m_prefs, &Preferences::modifierKeyChanged, rewatch),
        QObject::connect(&m_prefs, &Preferences::replaceCommandTabChanged, rewatch),
        QObject::connect(&m_prefs, &Preferences::cmdBacktickCycleChanged, rewatch),
    };
}

void KeyMonitor::watchdogTick()
{
    if (!m_source)
        return;
    if (!m_source->isInstalled()) {
        start();
        return;
    }
    m_source->recover();
    reportAccess();
}

KeyAccess KeyMonitor::access() const
{
    return m_source && m_source->isInstalled() ? m_source->access() : KeyAccess::notTrusted;
}

void KeyMonitor::reportAccess()
{
    const KeyAccess now = access();
    if (m_reportedAccess == now)
        return;
    m_reportedAccess = now;
    if (m_accessObserver)
        m_accessObserver(now);
}

KeyDecision KeyMonitor::handle(const KeyEvent& event)
{
    // Keys Velkor posts itself pass untouched, before any other step: they
    // must neither end nor drive the session the user is in.
    if (event.postedBySelf)
        return KeyDecision::Pass;
    switch (event.type) {
    case KeyEventType::TapDisabledByTimeout:
    case KeyEventType::TapDisabledByUserInput:
        if (m_source && m_source->isInstalled())
            m_source->enable();
        return KeyDecision::Pass;
    case KeyEventType::FlagsChanged:
        // Modifier events are never swallowed.
        if (m_handler)
            handleFlagsChanged(event);
        return KeyDecision::Pass;
    case KeyEventType::FlagsResynchronised:
        if (m_handler)
            resynchronise(event.flags);
        return KeyDecision::Pass;
    case KeyEventType::KeyDown:
    case KeyEventType::KeyUp:
        return m_handler ? handleKey(event) : KeyDecision::Pass;
    }
    return KeyDecision::Pass;
}

KeyDecision KeyMonitor::handleKey(const KeyEvent& event)
{
    const auto swallowIf = [](bool consumed) {
        return consumed ? KeyDecision::Swallow : KeyDecision::Pass;
    };
    const bool keyDown = event.type == KeyEventType::KeyDown;
    // Shift turns every walk around, as in any switcher.
    const bool backwards = hasBit(event.flags, keys::ShiftMask);

    if (!m_primaryHeld && keyDown && hasBit(event.flags, keys::CommandMask)) {
        if (event.keyCode == keys::Tab && m_prefs.replaceCommandTab()) {
            m_commandTabActive = true;
            return swallowIf(m_handler->commandTabPressed(backwards));
        }
        if (event.keyCode == keys::Grave && m_prefs.cmdBacktickCycle())
            return swallowIf(m_handler->cycleSameAppWindows(backwards));
    }

    // The activation key's release was missed (the platform dropped it, or
    // the setting changed while it was down): end without committing, and
    // let this key through as an ordinary one.
    repairMissedReleases(event.flags);

    if (!m_primaryHeld || !keyDown)
        return KeyDecision::Pass;

    if (auto act = action(event.keyCode, hasBit(event.flags, keys::LeftCommandBit))) {
        if (*act == KeyAction::next && backwards)
            act = KeyAction::previous;
        return swallowIf(m_handler->handleAction(*act));
    }
    if (const auto n = digitOf(event))
        return swallowIf(m_handler->handleDigit(*n));

    const QString ch = firstCharacter(event.characters);
    if (!ch.isEmpty() && QChar::isLetter(codePoint(ch)))
        return swallowIf(m_handler->handleCharacter(ch.toLower()));
    return KeyDecision::Pass;
}

// The digit keys count by position, whatever the layout types on them; a
// digit 1-9 typed elsewhere counts too. 0 and other scripts' digits typed
// elsewhere fall through and, not being letters, pass.
std::optional<int> KeyMonitor::digitOf(const KeyEvent& event) const
{
    if (const auto n = digitAt(event.keyCode))
        return n;
    const QString ch = firstCharacter(event.characters);
    if (ch.isEmpty())
        return std::nullopt;
    const char32_t cp = codePoint(ch);
    if (cp >= U'1' && cp <= U'9')
        return int(cp - U'0');
    return std::nullopt;
}

void KeyMonitor::repairMissedReleases(quint64 flags)
{
    if (m_primaryHeld && !hasBit(flags, activationFlagBit(m_prefs.modifierKey()))) {
        m_primaryHeld = false;
        m_handler->setSecondaryDown(false);
        m_handler->endSession();
    }
    if (m_secondaryHeld && !hasBit(flags, keys::RightOptionBit)) {
        m_secondaryHeld = false;
        m_handler->setSecondaryDown(false);
    }
}

// Releases found only by reading the modifiers afresh came too late to mean
// anything: a session ends without committing, so nothing switches seconds
// after the hand has moved on.
void KeyMonitor::resynchronise(quint64 flags)
{
    repairMissedReleases(flags);
    if (m_commandTabActive && !hasBit(flags, keys::CommandMask)) {
        m_commandTabActive = false;
        m_handler->endSession();
    }
}

void KeyMonitor::handleFlagsChanged(const KeyEvent& event)
{
    const ModifierKey activation = m_prefs.modifierKey();
    if (event.keyCode == activationKeyCode(activation)) {
        const bool down = hasBit(event.flags, activationFlagBit(activation));
        if (down && !m_primaryHeld) {
            m_primaryHeld = true;
            // Press to press: the length of the first hold does not matter.
            const double sincePrevious = event.timestamp - m_lastPrimaryDownAt;
            m_lastPrimaryDownAt = event.timestamp;
            m_handler->beginSession();
            if (sincePrevious < DoubleTapWindow)
                m_handler->enterWindowMode();
            if (m_activationPressObserver)
                m_activationPressObserver();
        } else if (!down && m_primaryHeld) {
            m_primaryHeld = false;
            m_handler->commitAndEnd();
        }
        return;
    }

    if (event.keyCode == keys::LeftCommand && m_commandTabActive &&
        !hasBit(event.flags, keys::CommandMask)) {
        m_commandTabActive = false;
        m_handler->commandTabReleased();
        return;
    }

    if (event.keyCode == keys::RightOption && activation != ModifierKey::rightOption) {
        const bool down = hasBit(event.flags, keys::RightOptionBit);
        if (down && !m_secondaryHeld) {
            m_secondaryHeld = true;
            m_handler->setSecondaryDown(true);
        } else if (!down && m_secondaryHeld) {
            m_secondaryHeld = false;
            m_handler->setSecondaryDown(false);
        }
    }
}

} // namespace velkor
