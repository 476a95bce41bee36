// SPDX-License-Identifier: MIT
#include "platform/mac/MacPlatform.h"

namespace velkor {

// On Apple platforms there is one backend, whatever the Qt platform plugin.
std::unique_ptr<Platform> createPlatform()
{
    return createMacPlatform();
}

} // namespace velkor
