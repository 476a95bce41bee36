// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemServices.h"

namespace velkor {

// The app's own login item through SMAppService (macOS 13 and later).
class MacLoginItem final : public LoginItem
{
public:
    Status status() override;
    bool registerItem(QString* error) override;
    bool unregisterItem(QString* error) override;
};

} // namespace velkor
