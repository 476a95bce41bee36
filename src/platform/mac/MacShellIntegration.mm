// SPDX-License-Identifier: MIT
#include "platform/mac/MacShellIntegration.h"

#import <AppKit/AppKit.h>
#include <CoreServices/CoreServices.h>
#include <QPixmap>
#include <QWindow>
#import <QuartzCore/QuartzCore.h>

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

NSString* const blurViewIdentifier = @"org.velkor.overlay-blur";

// A Qt window's id on macOS is its NSView; creating the id creates the window.
NSView* viewOf(QWindow* window)
{
    return window ? (__bridge NSView*)reinterpret_cast<void*>(window->winId()) : nil;
}

void applyOverlayBehaviour(NSWindow* panel)
{
    panel.level = NSFloatingWindowLevel; // 3
    // Can join all Spaces (1) + ignores cycle (64) + full-screen auxiliary (256) = 321.
    panel.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces |
                               NSWindowCollectionBehaviorIgnoresCycle |
                               NSWindowCollectionBehaviorFullScreenAuxiliary;
    panel.hidesOnDeactivate = NO;
    panel.hasShadow = NO; // the view draws its own shadow
    panel.opaque = NO;
    panel.backgroundColor = NSColor.clearColor;
    panel.ignoresMouseEvents = NO;
    panel.acceptsMouseMovedEvents = YES;
}

NSVisualEffectView* blurViewIn(NSView* frame)
{
    for (NSView* view in frame.subviews) {
        if ([view.identifier isEqualToString:blurViewIdentifier])
            return (NSVisualEffectView*)view;
    }
    return nil;
}

NSVisualEffectView* makeBlurView()
{
    NSVisualEffectView* blur = [[NSVisualEffectView alloc] initWithFrame:NSZeroRect];
    blur.identifier = blurViewIdentifier;
    blur.material = NSVisualEffectMaterialHUDWindow;            // 13
    blur.blendingMode = NSVisualEffectBlendingModeBehindWindow; // 0
    blur.state = NSVisualEffectStateActive;                     // always active
    blur.emphasized = YES;
    return blur;
}

// The material is shaped by a mask image (its documented way); the layer is
// rounded and clipped as well, for what the view draws itself.
void roundCorners(NSVisualEffectView* blur, CGFloat radius)
{
    blur.maskImage = [NSImage imageWithSize:blur.bounds.size
                                    flipped:NO
                             drawingHandler:^BOOL(NSRect bounds) {
                               [[NSBezierPath bezierPathWithRoundedRect:bounds
                                                                xRadius:radius
                                                                yRadius:radius] fill];
                               return YES;
                             }];
    blur.wantsLayer = YES;
    blur.layer.cornerRadius = radius;
    blur.layer.masksToBounds = YES;
}

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

// The overlay is a Qt window, not an NSPanel, so the non-activating panel
// style is not available. It never takes focus because Qt is told so
// (Qt::WindowDoesNotAcceptFocus keeps the window from becoming key) and it is
// shown without activating the app (the widgets set
// Qt::WA_ShowWithoutActivating); this process is an accessory app, so
// nothing else brings it forward.
void MacShellIntegration::prepareOverlayWindow(QWindow* window)
{
    if (!window)
        return;
    window->setFlag(Qt::WindowDoesNotAcceptFocus, true);
    if (NSView* view = viewOf(window))
        applyOverlayBehaviour(view.window);
    // Qt sets the window level again when it shows a window; assert ours after it.
    QObject::connect(window, &QWindow::visibleChanged, window, [window](bool visible) {
        NSView* view = visible ? viewOf(window) : nil;
        if (view)
            applyOverlayBehaviour(view.window);
    });
}

// The blur view sits in the window's frame view just below Qt's content view,
// so the pill drawn by Qt lies on top of it. Qt's view is flipped (top-left
// origin), which the conversion to the frame view accounts for.
void MacShellIntegration::setBlurBehind(QWindow* window, const QRectF& area, qreal cornerRadius)
{
    NSView* content = viewOf(window);
    NSView* frame = content.superview;
    if (!frame)
        return;
    NSVisualEffectView* blur = blurViewIn(frame);
    if (area.isEmpty()) {
        [blur removeFromSuperview];
        return;
    }
    if (!blur) {
        blur = makeBlurView();
        [frame addSubview:blur positioned:NSWindowBelow relativeTo:content];
    }
    const NSRect rect = NSMakeRect(area.x(), area.y(), area.width(), area.height());
    blur.frame = [content convertRect:rect toView:frame];
    // A radius of 0 means a capsule: half the height.
    roundCorners(blur, cornerRadius > 0 ? cornerRadius : area.height() / 2.0);
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
