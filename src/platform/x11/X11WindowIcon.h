// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QtGlobal>
#include <cstddef>

namespace velkor::x11 {

// Builds an icon from the value of a window's _NET_WM_ICON: frames of width,
// height and width × height non-premultiplied ARGB pixels, one 32-bit value
// each. Keeps the frames that suit the overlay's icon (42 points at one and
// two device pixels per point), or the nearest one when none does. Frames that
// claim more pixels than the data holds end the reading; null when no frame
// is whole.
QIcon iconFromNetWmIcon(const quint32* data, size_t count);

} // namespace velkor::x11
