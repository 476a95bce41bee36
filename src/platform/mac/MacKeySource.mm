// SPDX-License-Identifier: MIT
#include "platform/mac/MacKeySource.h"

#include "platform/mac/CFRef.h"
#include "platform/mac/MacPostedEvent.h"

#import <AppKit/AppKit.h>
#include <ApplicationServices/ApplicationServices.h>
#include <optional>

namespace velkor {

struct MacKeySource::Tap
{
    CFRef<CFMachPortRef> port;
    CFRef<CFRunLoopSourceRef> source;
    Callback callback;
    const Clock* clock = nullptr;
};

namespace {

// Key down (10), key up (11) and flags changed (12).
constexpr CGEventMask keyEventMask = 0x1C00;

std::optional<KeyEventType> keyEventType(CGEventType type)
{
    switch (type) {
    case kCGEventKeyDown:
        return KeyEventType::KeyDown;
    case kCGEventKeyUp:
        return KeyEventType::KeyUp;
    case kCGEventFlagsChanged:
        return KeyEventType::FlagsChanged;
    case kCGEventTapDisabledByTimeout:
        return KeyEventType::TapDisabledByTimeout;
    case kCGEventTapDisabledByUserInput:
        return KeyEventType::TapDisabledByUserInput;
    default:
        return std::nullopt;
    }
}

// What the key types with the modifiers ignored; AppKit raises for anything
// but a key down or key up, so only those are asked.
QString charactersIgnoringModifiers(CGEventRef event)
{
    NSEvent* keyEvent = [NSEvent eventWithCGEvent:event];
    NSString* characters = keyEvent.charactersIgnoringModifiers;
    return characters ? QString::fromNSString(characters) : QString();
}

KeyEvent makeKeyEvent(KeyEventType type, CGEventRef event, double timestamp)
{
    KeyEvent keyEvent;
    keyEvent.type = type;
    keyEvent.timestamp = timestamp;
    if (type == KeyEventType::TapDisabledByTimeout || type == KeyEventType::TapDisabledByUserInput)
        return keyEvent;
    keyEvent.keyCode = CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode);
    keyEvent.flags = CGEventGetFlags(event);
    keyEvent.postedBySelf =
        CGEventGetIntegerValueField(event, kCGEventSourceUserData) == postedEventTag;
    if (type != KeyEventType::FlagsChanged)
        keyEvent.characters = charactersIgnoringModifiers(event);
    return keyEvent;
}

// Runs on the main run loop. Returning the event passes it on, NULL drops it.
// Nothing may propagate out of here into the window server's C code.
CGEventRef onTapEvent(CGEventTapProxy, CGEventType type, CGEventRef event, void* refcon)
{
    auto* tap = static_cast<MacKeySource::Tap*>(refcon);
    const auto kind = keyEventType(type);
    if (!tap || !tap->callback || !kind)
        return event;
    try {
        @autoreleasepool {
            const KeyDecision decision =
                tap->callback(makeKeyEvent(*kind, event, tap->clock->now()));
            return decision == KeyDecision::Swallow ? nullptr : event;
        }
    } catch (...) {
        return event;
    }
}

} // namespace

MacKeySource::MacKeySource(const Clock& clock) : m_clock(clock) {}

MacKeySource::~MacKeySource()
{
    if (!m_tap)
        return;
    CFRunLoopRemoveSource(CFRunLoopGetMain(), m_tap->source.get(), kCFRunLoopCommonModes);
    CFMachPortInvalidate(m_tap->port.get());
}

bool MacKeySource::install(Callback callback)
{
    if (m_tap)
        return true;
    auto tap = std::make_unique<Tap>();
    tap->callback = std::move(callback);
    tap->clock = &m_clock;
    // The tap keeps a raw pointer to *tap, which lives as long as this object.
    tap->port = CFRef<CFMachPortRef>(CGEventTapCreate(kCGSessionEventTap, kCGHeadInsertEventTap,
                                                      kCGEventTapOptionDefault, keyEventMask,
                                                      onTapEvent, tap.get()));
    if (!tap->port)
        return false; // refused: the process lacks Accessibility access
    tap->source = CFRef<CFRunLoopSourceRef>(
        CFMachPortCreateRunLoopSource(kCFAllocatorDefault, tap->port.get(), 0));
    if (!tap->source) {
        CFMachPortInvalidate(tap->port.get());
        return false;
    }
    CFRunLoopAddSource(CFRunLoopGetMain(), tap->source.get(), kCFRunLoopCommonModes);
    CGEventTapEnable(tap->port.get(), true);
    m_tap = std::move(tap);
    return true;
}

bool MacKeySource::isInstalled() const
{
    return m_tap != nullptr;
}

bool MacKeySource::isEnabled() const
{
    return m_tap && CGEventTapIsEnabled(m_tap->port.get());
}

void MacKeySource::enable()
{
    if (m_tap)
        CGEventTapEnable(m_tap->port.get(), true);
}

} // namespace velkor
