// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace velkor {

// Stamped into the source user data (kCGEventSourceUserData) of every key
// event Velkor posts, so that its own event tap, which sees those events
// too, can tell them from the user's keys. The value spells "Velkor".
inline constexpr int64_t postedEventTag = 0x56656c6b6f72;

} // namespace velkor
