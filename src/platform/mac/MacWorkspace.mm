// SPDX-License-Identifier: MIT
#include "platform/mac/MacWorkspace.h"

#import <AppKit/AppKit.h>

namespace velkor {

struct MacWorkspace::Observers
{
    NSMutableArray<id<NSObject>>* tokens = [NSMutableArray array];
};

namespace {

NSRunningApplication* runningApplication(Pid pid)
{
    return [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
}

std::optional<QString> optionalString(NSString* text)
{
    if (!text)
        return std::nullopt;
    return QString::fromNSString(text);
}

RunningApp describe(NSRunningApplication* app)
{
    RunningApp running;
    running.pid = app.processIdentifier;
    running.bundleId = optionalString(app.bundleIdentifier);
    running.name = optionalString(app.localizedName);
    running.bundlePath = optionalString(app.bundleURL.path);
    running.regular = app.activationPolicy == NSApplicationActivationPolicyRegular;
    return running;
}

} // namespace

MacWorkspace::MacWorkspace(QObject* parent)
    : Workspace(parent), m_observers(std::make_unique<Observers>())
{
    NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
    // The tokens are removed in the destructor, on the main thread, so no
    // block can run after this object is gone.
    MacWorkspace* self = this;
    const auto observe = [&](NSNotificationName name, void (MacWorkspace::*signal)()) {
        id<NSObject> token = [center addObserverForName:name
                                                 object:nil
                                                  queue:NSOperationQueue.mainQueue
                                             usingBlock:^(NSNotification*) {
                                               try {
                                                   (self->*signal)();
                                               } catch (...) {
                                               }
                                             }];
        [m_observers->tokens addObject:token];
    };
    observe(NSWorkspaceDidLaunchApplicationNotification, &MacWorkspace::applicationLaunched);
    observe(NSWorkspaceDidTerminateApplicationNotification, &MacWorkspace::applicationTerminated);
    observe(NSWorkspaceDidActivateApplicationNotification, &MacWorkspace::applicationActivated);
}

MacWorkspace::~MacWorkspace()
{
    NSNotificationCenter* center = NSWorkspace.sharedWorkspace.notificationCenter;
    for (id<NSObject> token in m_observers->tokens)
        [center removeObserver:token];
}

QList<RunningApp> MacWorkspace::runningApplications() const
{
    QList<RunningApp> apps;
    @autoreleasepool {
        for (NSRunningApplication* app in NSWorkspace.sharedWorkspace.runningApplications)
            apps.append(describe(app));
    }
    return apps;
}

std::optional<Pid> MacWorkspace::frontmostPid() const
{
    NSRunningApplication* front = NSWorkspace.sharedWorkspace.frontmostApplication;
    if (!front)
        return std::nullopt;
    return front.processIdentifier;
}

std::optional<QString> MacWorkspace::ownBundleId() const
{
    return optionalString(NSBundle.mainBundle.bundleIdentifier);
}

bool MacWorkspace::isRunning(Pid pid) const
{
    return runningApplication(pid) != nil;
}

bool MacWorkspace::isHidden(Pid pid) const
{
    return runningApplication(pid).hidden;
}

void MacWorkspace::unhide(Pid pid)
{
    [runningApplication(pid) unhide];
}

void MacWorkspace::hide(Pid pid)
{
    [runningApplication(pid) hide];
}

void MacWorkspace::terminate(Pid pid)
{
    [runningApplication(pid) terminate];
}

void MacWorkspace::activate(Pid pid)
{
    // No options: only the app's main and key windows come forward.
    [runningApplication(pid) activateWithOptions:0];
}

void MacWorkspace::openApplication(const QString& bundlePath)
{
    NSWorkspaceOpenConfiguration* configuration = [NSWorkspaceOpenConfiguration configuration];
    configuration.activates = YES;
    [NSWorkspace.sharedWorkspace
        openApplicationAtURL:[NSURL fileURLWithPath:bundlePath.toNSString()]
               configuration:configuration
           completionHandler:nil];
}

} // namespace velkor
