// SPDX-License-Identifier: MIT
#include "platform/mac/MacInstalledAppSource.h"

#import <Foundation/Foundation.h>

namespace velkor {

namespace {

InstalledApp describe(NSURL* url)
{
    InstalledApp app;
    app.path = QString::fromNSString(url.path);
    NSBundle* bundle = [NSBundle bundleWithURL:url];
    id name = bundle.infoDictionary[@"CFBundleName"];
    if ([name isKindOfClass:NSString.class])
        app.name = QString::fromNSString(name);
    if (NSString* identifier = bundle.bundleIdentifier)
        app.bundleId = QString::fromNSString(identifier);
    return app;
}

// Every .app under the folder, in walk order; a folder that cannot be opened
// gives nothing.
void collect(NSFileManager* files, NSString* folder, QList<InstalledApp>& apps)
{
    NSDirectoryEnumerator<NSURL*>* walk =
        [files enumeratorAtURL:[NSURL fileURLWithPath:folder isDirectory:YES]
            includingPropertiesForKeys:nil
                               options:NSDirectoryEnumerationSkipsPackageDescendants
                          errorHandler:nil];
    for (NSURL* url in walk) {
        if (![url.pathExtension isEqualToString:@"app"])
            continue;
        // An app inside another app's folder is never reached.
        [walk skipDescendants];
        apps.append(describe(url));
    }
}

} // namespace

QList<InstalledApp> MacInstalledAppSource::scan() const
{
    QList<InstalledApp> apps;
    @autoreleasepool {
        // A private instance rather than the shared one: this runs off the main thread.
        NSFileManager* files = [[NSFileManager alloc] init];
        for (NSString* folder in @[
                 @"/Applications", @"/System/Applications",
                 [NSHomeDirectory() stringByAppendingPathComponent:@"Applications"]
             ])
            collect(files, folder, apps);
    }
    return apps;
}

} // namespace velkor
