// SPDX-License-Identifier: MIT
#include "platform/mac/MacShellIntegration.h"

#include "platform/mac/MacOverlayWindow.h"

#import <AppKit/AppKit.h>
#include <CoreServices/CoreServices.h>
#include <QPixmap>

// Receives the reopen Apple event (kAEReopenApplication) the system sends
// when the user opens the running app again.
@interface VelkorReopenTarget : NSObject
- (void)setHandler:(std::function<void()>)handler;
- (void)handleReopen:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply;
@end

@implementation VelkorReopenTarget {
    std::function<void()> _handler;
}

- (void)setHandler:(std::function<void()>)handler
{
    _handler = std::move(handler);
}

- (void)handleReopen:(NSAppleEventDescriptor*)event withReplyEvent:(NSAppleEventDescriptor*)reply
{
    (void)event;
    (void)reply;
    try {
        if (_handler)
            _handler();
    } catch (...) {
    }
}

@end

namespace velkor {

struct MacShellIntegration::Reopen
{
    VelkorReopenTarget* target = [[VelkorReopenTarget alloc] init];
    id<NSObject> launchObserver = nil;
};

namespace {

void listenForReopen(VelkorReopenTarget* target)
{
    const SEL handle = NSSelectorFromString(@"handleReopen:withReplyEvent:");
    [NSAppleEventManager.sharedAppleEventManager setEventHandler:target
                                                     andSelector:handle
                                                   forEventClass:kCoreEventClass
                                                      andEventID:kAEReopenApplication];
}

} // namespace

MacShellIntegration::MacShellIntegration() : m_reopen(std::make_unique<Reopen>()) {}

MacShellIntegration::~MacShellIntegration()
{
    [NSAppleEventManager.sharedAppleEventManager
        removeEventHandlerForEventClass:kCoreEventClass
                             andEventID:kAEReopenApplication];
    if (m_reopen->launchObserver)
        [NSNotificationCenter.defaultCenter removeObserver:m_reopen->launchObserver];
}

// The reopen event replaces the application delegate's own handling of it.
// AppKit installs its standard handlers while it finishes launching, so the
// handler is installed now and again once launching has finished.
void MacShellIntegration::setReopenHandler(std::function<void()> handler)
{
    [m_reopen->target setHandler:std::move(handler)];
    VelkorReopenTarget* target = m_reopen->target;
    listenForReopen(target);
    if (m_reopen->launchObserver)
        return;
    m_reopen->launchObserver = [NSNotificationCenter.defaultCenter
        addObserverForName:NSApplicationDidFinishLaunchingNotification
                    object:nil
                     queue:NSOperationQueue.mainQueue
                usingBlock:^(NSNotification*) {
                  listenForReopen(target);
                }];
}

void MacShellIntegration::prepareOverlayWindow(QWindow* window)
{
    MacOverlayWindow::prepare(window);
}

void MacShellIntegration::orderOverlayFront(QWindow* window)
{
    if (MacOverlayWindow* overlay = MacOverlayWindow::of(window))
        overlay->orderFront();
}

void MacShellIntegration::setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius)
{
    if (MacOverlayWindow* overlay = MacOverlayWindow::of(window))
        overlay->setBlur(area, cornerRadius);
}

void MacShellIntegration::setRegularPresence(bool regular)
{
    [NSApp setActivationPolicy:regular ? NSApplicationActivationPolicyRegular
                                       : NSApplicationActivationPolicyAccessory];
    if (!regular)
        return;
    if (@available(macOS 14.0, *))
        [NSApp activate];
    else
        [NSApp activateIgnoringOtherApps:YES];
}

namespace {

// Handed to Qt as PNG data (Qt has no public conversion from CGImage). The
// image is resized, so callers pass one they own.
QIcon iconOf(NSImage* image)
{
    if (!image)
        return {};
    // Icons come at 32 x 32 points; asking for 128 picks their larger representation.
    image.size = NSMakeSize(128, 128);
    NSRect size = NSMakeRect(0, 0, 128, 128);
    CGImageRef bitmap = [image CGImageForProposedRect:&size context:nil hints:nil];
    if (!bitmap)
        return {};
    NSBitmapImageRep* rep = [[NSBitmapImageRep alloc] initWithCGImage:bitmap];
    NSData* png = [rep representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
    QPixmap pixmap;
    if (!png || !pixmap.loadFromData(static_cast<const uchar*>(png.bytes), uint(png.length), "PNG"))
        return {};
    return QIcon(pixmap);
}

} // namespace

// Finder's icon for the file.
QIcon MacShellIntegration::iconForFile(const QString& path)
{
    @autoreleasepool {
        return iconOf([NSWorkspace.sharedWorkspace iconForFile:path.toNSString()]);
    }
}

// The running app's icon; a copy, since the app object shares its image.
QIcon MacShellIntegration::iconForProcess(Pid pid)
{
    @autoreleasepool {
        NSRunningApplication* app =
            [NSRunningApplication runningApplicationWithProcessIdentifier:pid_t(pid)];
        return iconOf([app.icon copy]);
    }
}

} // namespace velkor
