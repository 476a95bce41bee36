// SPDX-License-Identifier: MIT
#include "platform/mac/MacWindowSystem.h"

#include "platform/mac/CFRef.h"

#include <ApplicationServices/ApplicationServices.h>

namespace velkor {

namespace {

class MacWindowElement final : public WindowElement
{
public:
    explicit MacWindowElement(CFRef<AXUIElementRef> element) : m_element(std::move(element)) {}
    AXUIElementRef ref() const { return m_element.get(); }

private:
    CFRef<AXUIElementRef> m_element;
};

AXUIElementRef elementOf(const WindowHandle& window)
{
    const auto* mac = dynamic_cast<const MacWindowElement*>(window.get());
    return mac ? mac->ref() : nullptr;
}

// Any non-zero error means the value is absent.
CFRef<CFTypeRef> copyAttribute(AXUIElementRef element, CFStringRef attribute)
{
    CFRef<CFTypeRef> value;
    if (!element ||
        AXUIElementCopyAttributeValue(element, attribute, value.receive()) != kAXErrorSuccess)
        return {};
    return value;
}

bool isOfType(const CFRef<CFTypeRef>& value, CFTypeID type)
{
    return value && CFGetTypeID(value.get()) == type;
}

WindowHandle handleFor(CFTypeRef element)
{
    if (!element || CFGetTypeID(element) != AXUIElementGetTypeID())
        return nullptr;
    auto retained = CFRef<AXUIElementRef>::retain(static_cast<AXUIElementRef>(element));
    return std::make_shared<const MacWindowElement>(std::move(retained));
}

CFRef<AXUIElementRef> applicationElement(Pid pid)
{
    return CFRef<AXUIElementRef>(AXUIElementCreateApplication(pid));
}

std::optional<QString> stringAttribute(AXUIElementRef element, CFStringRef attribute)
{
    const auto value = copyAttribute(element, attribute);
    if (!isOfType(value, CFStringGetTypeID()))
        return std::nullopt;
    return QString::fromCFString(static_cast<CFStringRef>(value.get()));
}

std::optional<bool> boolAttribute(AXUIElementRef element, CFStringRef attribute)
{
    const auto value = copyAttribute(element, attribute);
    if (!isOfType(value, CFBooleanGetTypeID()))
        return std::nullopt;
    return bool(CFBooleanGetValue(static_cast<CFBooleanRef>(value.get())));
}

// A point- or size-valued attribute unwrapped from its AXValue.
template <typename Struct>
std::optional<Struct> valueAttribute(AXUIElementRef element, CFStringRef attribute,
                                     AXValueType kind)
{
    const auto value = copyAttribute(element, attribute);
    Struct result{};
    if (!isOfType(value, AXValueGetTypeID()) ||
        !AXValueGetValue(static_cast<AXValueRef>(value.get()), kind, &result))
        return std::nullopt;
    return result;
}

} // namespace

std::optional<QList<RawWindow>> MacWindowSystem::windowsOf(Pid pid)
{
    const auto app = applicationElement(pid);
    const auto windows = copyAttribute(app.get(), CFSTR("AXWindows"));
    if (!isOfType(windows, CFArrayGetTypeID()))
        return std::nullopt;
    const auto array = static_cast<CFArrayRef>(windows.get());
    QList<RawWindow> listed;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        WindowHandle handle = handleFor(CFArrayGetValueAtIndex(array, i));
        if (!handle)
            continue;
        const AXUIElementRef element = elementOf(handle);
        listed.append({handle, stringAttribute(element, CFSTR("AXTitle")),
                       boolAttribute(element, CFSTR("AXMinimized"))});
    }
    return listed;
}

WindowHandle MacWindowSystem::focusedWindowOf(Pid pid)
{
    const auto app = applicationElement(pid);
    return handleFor(copyAttribute(app.get(), CFSTR("AXFocusedWindow")).get());
}

void MacWindowSystem::raise(const WindowHandle& window)
{
    if (const AXUIElementRef element = elementOf(window))
        AXUIElementPerformAction(element, CFSTR("AXRaise"));
}

void MacWindowSystem::setMinimized(const WindowHandle& window, bool minimized)
{
    if (const AXUIElementRef element = elementOf(window))
        AXUIElementSetAttributeValue(element, CFSTR("AXMinimized"),
                                     minimized ? kCFBooleanTrue : kCFBooleanFalse);
}

void MacWindowSystem::close(const WindowHandle& window)
{
    const auto button = copyAttribute(elementOf(window), CFSTR("AXCloseButton"));
    if (isOfType(button, AXUIElementGetTypeID()))
        AXUIElementPerformAction(static_cast<AXUIElementRef>(button.get()), CFSTR("AXPress"));
}

void MacWindowSystem::setFrontmost(Pid pid)
{
    const auto app = applicationElement(pid);
    if (app)
        AXUIElementSetAttributeValue(app.get(), CFSTR("AXFrontmost"), kCFBooleanTrue);
}

std::optional<QRectF> MacWindowSystem::frameOf(const WindowHandle& window)
{
    const AXUIElementRef element = elementOf(window);
    const auto position =
        valueAttribute<CGPoint>(element, CFSTR("AXPosition"), kAXValueTypeCGPoint);
    const auto size = valueAttribute<CGSize>(element, CFSTR("AXSize"), kAXValueTypeCGSize);
    if (!position || !size)
        return std::nullopt;
    // Accessibility already reports top-left-origin global coordinates.
    return QRectF(position->x, position->y, size->width, size->height);
}

void MacWindowSystem::warpPointer(QPointF globalPoint)
{
    CGWarpMouseCursorPosition(CGPointMake(globalPoint.x(), globalPoint.y()));
}

} // namespace velkor
