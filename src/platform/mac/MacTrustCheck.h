// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemServices.h"

namespace velkor {

// The Accessibility permission of this process.
class MacTrustCheck final : public TrustCheck
{
public:
    bool isTrusted() override;
    bool requestTrust() override;
    bool openTrustSettings() override;
    QString missingExplanation() const override;
};

} // namespace velkor
