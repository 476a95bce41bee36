// SPDX-License-Identifier: MIT
#pragma once

// GIO names a struct member "signals", which Qt defines as a keyword macro.
#pragma push_macro("signals")
#undef signals
#include <gio/gdesktopappinfo.h>
#pragma pop_macro("signals")
