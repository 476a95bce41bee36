// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Clock.h"
#include "platform/KeySource.h"

#include <memory>

namespace velkor {

// One active event tap at the session level that sees every key down, key up
// and modifier change, hands each to the callback on the main run loop and
// drops the ones the callback swallows. Events are stamped with the clock's
// now(), so they share the time line of every other delay.
class MacKeySource final : public KeySource
{
public:
    explicit MacKeySource(const Clock& clock);
    ~MacKeySource() override;

    bool install(Callback callback) override;
    bool isInstalled() const override;
    // The tap sees every key, so there is nothing to grab.
    void watch(const KeyWatch&) override {}
    bool isEnabled() const override;
    void enable() override;

    // The tap and its run-loop source; defined where the tap is made.
    struct Tap;

private:
    const Clock& m_clock;
    std::unique_ptr<Tap> m_tap;
};

} // namespace velkor
