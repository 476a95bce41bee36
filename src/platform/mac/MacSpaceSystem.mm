// SPDX-License-Identifier: MIT
#include "platform/mac/MacSpaceSystem.h"

#include "platform/mac/CFRef.h"
#include "platform/mac/MacPostedEvent.h"
#include "platform/mac/MacPropertyList.h"
#include "platform/mac/MacSkyLight.h"
#include "windows/DisplaySpaces.h"
#include "windows/ServerWindowList.h"

#include <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

namespace velkor {

std::optional<SpaceLayout> MacSpaceSystem::mainDisplaySpaces()
{
    const MacSkyLight& skyLight = MacSkyLight::shared();
    if (!skyLight.copyDisplaySpaces)
        return std::nullopt;
    const CFRef<CFArrayRef> displays(skyLight.copyDisplaySpaces(skyLight.connection()));
    return readMainDisplaySpaces(variantFromPropertyList(displays.get()));
}

bool MacSpaceSystem::setCurrentSpace(const QString& displayId, quint64 spaceId)
{
    const MacSkyLight& skyLight = MacSkyLight::shared();
    if (!skyLight.mainConnection || !skyLight.setCurrentSpace)
        return false;
    const CFRef<CFStringRef> display(displayId.toCFString());
    skyLight.setCurrentSpace(skyLight.mainConnection(), display.get(), spaceId);
    return true;
}

bool MacSpaceSystem::moveWindows(const QList<quint32>& windowNumbers, quint64 spaceId)
{
    const MacSkyLight& skyLight = MacSkyLight::shared();
    if (!skyLight.moveWindows)
        return false;
    @autoreleasepool {
        NSMutableArray<NSNumber*>* windows =
            [NSMutableArray arrayWithCapacity:windowNumbers.size()];
        for (quint32 number : windowNumbers)
            [windows addObject:[NSNumber numberWithUnsignedInt:number]];
        // The window server's own success is not reported.
        skyLight.moveWindows(skyLight.connection(), (__bridge CFArrayRef)windows, spaceId);
    }
    return true;
}

QList<ServerWindow> MacSpaceSystem::windowList(bool onScreenOnly)
{
    const CGWindowListOption options =
        kCGWindowListExcludeDesktopElements | (onScreenOnly ? kCGWindowListOptionOnScreenOnly : 0);
    const CFRef<CFArrayRef> info(CGWindowListCopyWindowInfo(options, kCGNullWindowID));
    const WindowInfoKeys keys{QString::fromCFString(kCGWindowNumber),
                              QString::fromCFString(kCGWindowOwnerPID),
                              QString::fromCFString(kCGWindowLayer)};
    return readServerWindows(variantFromPropertyList(info.get()), keys);
}

bool MacSpaceSystem::postControlKey(int keyCode)
{
    const CFRef<CGEventSourceRef> source(
        CGEventSourceCreate(kCGEventSourceStateCombinedSessionState));
    if (!source)
        return false;
    const CFRef<CGEventRef> down(
        CGEventCreateKeyboardEvent(source.get(), CGKeyCode(keyCode), true));
    const CFRef<CGEventRef> up(CGEventCreateKeyboardEvent(source.get(), CGKeyCode(keyCode), false));
    if (!down || !up)
        return false;
    for (CGEventRef event : {down.get(), up.get()}) {
        CGEventSetFlags(event, kCGEventFlagMaskControl); // Control only
        // Velkor's own tap sees these too; the tag lets them pass untouched.
        CGEventSetIntegerValueField(event, kCGEventSourceUserData, postedEventTag);
        CGEventPost(kCGHIDEventTap, event);
    }
    return true;
}

} // namespace velkor
