// SPDX-License-Identifier: MIT
#include "platform/mac/MacLoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

namespace velkor {

namespace {

bool report(BOOL ok, NSError* failure, QString* error)
{
    if (!ok && error)
        *error = failure ? QString::fromNSString(failure.localizedDescription)
                         : QStringLiteral("unknown error");
    return ok;
}

} // namespace

LoginItem::Status MacLoginItem::status()
{
    switch (SMAppService.mainAppService.status) {
    case SMAppServiceStatusEnabled:
        return Status::Enabled;
    case SMAppServiceStatusRequiresApproval:
        return Status::RequiresApproval;
    case SMAppServiceStatusNotFound:
        return Status::NotFound;
    case SMAppServiceStatusNotRegistered:
    default:
        return Status::NotRegistered;
    }
}

bool MacLoginItem::registerItem(QString* error)
{
    NSError* failure = nil;
    const BOOL ok = [SMAppService.mainAppService registerAndReturnError:&failure];
    return report(ok, failure, error);
}

bool MacLoginItem::unregisterItem(QString* error)
{
    NSError* failure = nil;
    const BOOL ok = [SMAppService.mainAppService unregisterAndReturnError:&failure];
    return report(ok, failure, error);
}

} // namespace velkor
