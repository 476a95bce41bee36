// SPDX-License-Identifier: MIT
#include "platform/mac/MacTrustCheck.h"

#import <AppKit/AppKit.h>
#include <ApplicationServices/ApplicationServices.h>

namespace velkor {

bool MacTrustCheck::isTrusted()
{
    return AXIsProcessTrusted();
}

bool MacTrustCheck::requestTrust()
{
    // When not trusted, the system shows its own request dialog; the answer
    // does not wait for it.
    NSDictionary* options = @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES};
    return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
}

bool MacTrustCheck::openTrustSettings()
{
    NSURL* pane = [NSURL
        URLWithString:
            @"x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility"];
    return [NSWorkspace.sharedWorkspace openURL:pane];
}

QString MacTrustCheck::missingExplanation() const
{
    return QStringLiteral("Velkor is not allowed to use Accessibility: enable it in System "
                          "Settings › Privacy & Security › Accessibility.");
}

} // namespace velkor
