// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemServices.h"

#include <memory>

namespace velkor {

// Sparkle's standard updater controller, when the bundle ships
// Contents/Frameworks/Sparkle.framework. Loaded at run time: the program
// does not link against Sparkle and runs normally without it.
class MacUpdater final : public Updater
{
public:
    MacUpdater();
    ~MacUpdater() override;

    bool isAvailable() const override;
    void checkForUpdates() override;

private:
    // Holds the controller object; defined in the .mm.
    struct Controller;
    std::unique_ptr<Controller> m_controller;
};

} // namespace velkor
