// SPDX-License-Identifier: MIT
#pragma once

namespace velkor {

class LoginItem;

// Keeps the login-item registration in line with the user's wish.
namespace LaunchAtLogin {

// Registers or unregisters only when the current status differs; a failure
// is logged and otherwise ignored.
void set(LoginItem& item, bool enabled);

} // namespace LaunchAtLogin
} // namespace velkor
