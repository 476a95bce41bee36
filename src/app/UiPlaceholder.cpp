// SPDX-License-Identifier: MIT
// Keeps the widget library non-empty until its first real source lands.
