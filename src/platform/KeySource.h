// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QtGlobal>
#include <functional>

namespace velkor {

// The event kinds the key monitor sees. Key codes and the flag word follow
// the macOS event-tap conventions on every platform: backends translate their
// own codes by physical key position (see KeyCodes.h).
enum class KeyEventType
{
    KeyDown,
    KeyUp,
    FlagsChanged,
    TapDisabledByTimeout,
    TapDisabledByUserInput,
    // The platform read the modifiers afresh (the flag word) because a
    // release may have been lost; any key this shows up was released
    // without the monitor hearing of it. The key code means nothing.
    FlagsResynchronised,
};

struct KeyEvent
{
    KeyEventType type = KeyEventType::KeyDown;
    qint64 keyCode = 0;
    quint64 flags = 0;
    QString characters; // what the key types with modifiers ignored; may be empty
    // Seconds on the Clock's time line, of the moment the key moved (not of
    // the moment the event was handled), so a stalled program still tells a
    // double tap from two taps.
    double timestamp = 0;
    // Posted by Velkor itself (the Control + digit fallback for Spaces); its
    // flags say nothing about the keys the user holds.
    bool postedBySelf = false;
};

enum class KeyDecision
{
    Pass,
    Swallow
};

// Whether the activation key reaches the key monitor, and if not, what
// stands in the way. One state for the tray, the settings window and the log;
// the words for each live in one place (PlatformTraits).
enum class KeyAccess
{
    active,               // pressing the activation key starts a session
    notTrusted,           // the system gives this program no global keys
    activationKeyTaken,   // another program holds the activation key
    activationKeyMissing, // the keyboard map has no such key
    waylandSession,       // a Wayland session shows global keys to no X11 program
};

// What a backend must watch besides the activation key. Backends that see
// every key (an event tap) may ignore it; those that grab keys (X11) grab
// exactly these.
struct KeyWatch
{
    qint64 activationKeyCode = 54;
    bool commandTab = false;  // Command/Super + Tab
    bool commandGrave = true; // Command/Super + grave accent
};

// The global keyboard hook. Every event is handed to the callback on the
// main thread; Swallow keeps it from the focused application.
class KeySource
{
public:
    using Callback = std::function<KeyDecision(const KeyEvent&)>;

    virtual ~KeySource() = default;

    // Installs the hook; true when it is in place afterwards. A second call
    // installs nothing new.
    virtual bool install(Callback callback) = 0;
    virtual bool isInstalled() const = 0;

    // Updates what is watched; takes effect at once when installed.
    virtual void watch(const KeyWatch& keys) = 0;

    // The platform may switch the hook off (a slow callback, lost grabs).
    virtual bool isEnabled() const = 0;
    virtual void enable() = 0;

    // What the installed hook can do with the activation key now.
    virtual KeyAccess access() const
    {
        return isInstalled() ? KeyAccess::active : KeyAccess::notTrusted;
    }

    // The watchdog's call, every few seconds while installed: puts back what
    // the platform took away and re-reads state that may have gone stale.
    // Does nothing costly when all is well.
    virtual void recover()
    {
        if (isInstalled() && !isEnabled())
            enable();
    }
};

} // namespace velkor
