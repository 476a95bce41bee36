// SPDX-License-Identifier: MIT
#include "platform/mac/MacOverlayWindow.h"

#import <AppKit/AppKit.h>
#include <QWindow>

namespace velkor {

struct MacOverlayWindow::Blur
{
    NSPanel* panel = nil; // made on first use
};

namespace {

// A Qt window's id on macOS is its NSView, the content view of the NSWindow
// (or NSPanel) Qt made for it.
NSView* viewOf(QWindow* window)
{
    return (__bridge NSView*)reinterpret_cast<void*>(window->winId());
}

// What the overlay and its blur share: the floating level, every Space and
// over full-screen apps, out of window cycling, no shadow (the view draws
// its own), a clear background.
void applyOverlayBehaviour(NSWindow* window)
{
    window.level = NSFloatingWindowLevel; // 3
    // Can join all Spaces (1) + ignores cycle (64) + full-screen auxiliary (256) = 321.
    window.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces |
                                NSWindowCollectionBehaviorIgnoresCycle |
                                NSWindowCollectionBehaviorFullScreenAuxiliary;
    // A panel leaves the screen while its app is inactive, and Velkor always is.
    window.hidesOnDeactivate = NO;
    window.hasShadow = NO;
    window.opaque = NO;
    window.backgroundColor = NSColor.clearColor;
}

// A borderless non-activating panel that holds nothing but the material and
// lets every click through to the pill above it.
NSPanel* makeBlurPanel()
{
    NSPanel* panel = [[NSPanel alloc]
        initWithContentRect:NSMakeRect(0, 0, 1, 1)
                  styleMask:NSWindowStyleMaskBorderless | NSWindowStyleMaskNonactivatingPanel
                    backing:NSBackingStoreBuffered
                      defer:YES];
    applyOverlayBehaviour(panel);
    panel.ignoresMouseEvents = YES;
    NSVisualEffectView* material =
        [[NSVisualEffectView alloc] initWithFrame:NSMakeRect(0, 0, 1, 1)];
    material.material = NSVisualEffectMaterialHUDWindow;            // 13
    material.blendingMode = NSVisualEffectBlendingModeBehindWindow; // 0
    material.state = NSVisualEffectStateActive;                     // always active
    material.emphasized = YES;
    panel.contentView = material;
    return panel;
}

// The material's rounded shape, given the documented way: a mask image
// whose alpha shapes it (and, as the window's content view, its window).
NSImage* roundedMask(NSSize size, CGFloat radius)
{
    return [NSImage imageWithSize:size
                          flipped:NO
                   drawingHandler:^BOOL(NSRect bounds) {
                     [[NSBezierPath bezierPathWithRoundedRect:bounds xRadius:radius
                                                      yRadius:radius] fill];
                     return YES;
                   }];
}

} // namespace

void MacOverlayWindow::prepare(QWindow* window)
{
    if (!window || of(window))
        return;
    // Only an NSPanel can be a non-activating panel, and Qt makes one (its
    // QNSPanel) for a tool window, swapping the window at the next show.
    window->setFlags((window->flags() & ~Qt::WindowFlags(Qt::WindowType_Mask)) | Qt::Tool |
                     Qt::WindowDoesNotAcceptFocus);
    new MacOverlayWindow(window);
}

MacOverlayWindow* MacOverlayWindow::of(QWindow* window)
{
    return window ? window->findChild<MacOverlayWindow*>(QString(), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

MacOverlayWindow::MacOverlayWindow(QWindow* window)
    : QObject(window), m_window(window), m_blur(std::make_unique<Blur>())
{
    // Hidden with the overlay; ordering a child window out also detaches it.
    connect(window, &QWindow::visibleChanged, this, [this](bool visible) {
        if (!visible)
            hideBlur();
    });
    // Faded in with the overlay.
    connect(window, &QWindow::opacityChanged, this,
            [this](qreal opacity) { m_blur->panel.alphaValue = opacity; });
}

MacOverlayWindow::~MacOverlayWindow()
{
    hideBlur();
}

void MacOverlayWindow::orderFront()
{
    NSWindow* window = viewOf(m_window).window;
    if (!window)
        return;
    applyOverlayBehaviour(window);
    // Honoured by an NSPanel only. A click on the pill then leaves Velkor
    // inactive; the window never becomes key, as Qt is told.
    if ([window isKindOfClass:[NSPanel class]] &&
        !(window.styleMask & NSWindowStyleMaskNonactivatingPanel))
        window.styleMask = window.styleMask | NSWindowStyleMaskNonactivatingPanel;
    [window orderFrontRegardless];
    placeBlur();
}

void MacOverlayWindow::setBlur(const QRectF& area, qreal cornerRadius)
{
    m_blurArea = area;
    m_blurRadius = cornerRadius;
    if (area.isEmpty())
        hideBlur();
    else
        placeBlur();
}

// Only a visible overlay has its real frame; a hidden one gets its blur
// when it is next ordered front.
void MacOverlayWindow::placeBlur()
{
    NSView* view = viewOf(m_window);
    NSWindow* window = view.window;
    if (m_blurArea.isEmpty() || !window.visible)
        return;
    if (!m_blur->panel)
        m_blur->panel = makeBlurPanel();
    NSPanel* panel = m_blur->panel;
    // Qt's view is flipped (top-left origin); the conversion accounts for it.
    const NSRect area =
        NSMakeRect(m_blurArea.x(), m_blurArea.y(), m_blurArea.width(), m_blurArea.height());
    const NSRect inWindow = [view convertRect:area toView:nil];
    [panel setFrame:[window convertRectToScreen:inWindow] display:NO];
    const CGFloat radius = m_blurRadius > 0 ? m_blurRadius : NSHeight(inWindow) / 2;
    ((NSVisualEffectView*)panel.contentView).maskImage = roundedMask(inWindow.size, radius);
    panel.alphaValue = window.alphaValue;
    if (panel.parentWindow != window) {
        [panel orderWindow:NSWindowBelow relativeTo:window.windowNumber];
        [window addChildWindow:panel ordered:NSWindowBelow];
    }
}

void MacOverlayWindow::hideBlur()
{
    [m_blur->panel orderOut:nil];
}

} // namespace velkor
