// SPDX-License-Identifier: MIT
#include "platform/mac/MacUpdater.h"

#import <Foundation/Foundation.h>

// The two messages of SPUStandardUpdaterController this program sends,
// declared here because no Sparkle header is compiled in.
@protocol VelkorStandardUpdaterController <NSObject>
- (instancetype)initWithStartingUpdater:(BOOL)startUpdater
                        updaterDelegate:(id)updaterDelegate
                     userDriverDelegate:(id)userDriverDelegate;
- (void)checkForUpdates:(id)sender;
@end

namespace velkor {

struct MacUpdater::Controller
{
    id<VelkorStandardUpdaterController> updater = nil;
};

namespace {

id<VelkorStandardUpdaterController> startSparkle()
{
    NSString* path = [NSBundle.mainBundle.privateFrameworksPath
        stringByAppendingPathComponent:@"Sparkle.framework"];
    NSBundle* sparkle = path ? [NSBundle bundleWithPath:path] : nil;
    if (!sparkle || ![sparkle load])
        return nil;
    const SEL initializer = @selector(initWithStartingUpdater:updaterDelegate:userDriverDelegate:);
    Class controllerClass = NSClassFromString(@"SPUStandardUpdaterController");
    if (![controllerClass instancesRespondToSelector:initializer])
        return nil;
    // Started at once, so the scheduled background checks begin with the app.
    return
        [(id<VelkorStandardUpdaterController>)[controllerClass alloc] initWithStartingUpdater:YES
                                                                              updaterDelegate:nil
                                                                           userDriverDelegate:nil];
}

} // namespace

MacUpdater::MacUpdater() : m_controller(std::make_unique<Controller>())
{
    m_controller->updater = startSparkle();
}

MacUpdater::~MacUpdater() = default;

bool MacUpdater::isAvailable() const
{
    return m_controller->updater != nil;
}

void MacUpdater::checkForUpdates()
{
    [m_controller->updater checkForUpdates:nil];
}

} // namespace velkor
