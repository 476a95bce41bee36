// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>
#include <QString>
#include <optional>

struct _XDisplay;

namespace velkor::x11 {

// Decodes ICCCM COMPOUND_TEXT (ISO 2022 with the X charsets) through Xlib's
// own converters, which Qt's xcb plugin has loaded already. Absent without a
// display or when Xlib cannot convert it.
std::optional<QString> decodeCompoundText(_XDisplay* display, QByteArrayView bytes);

} // namespace velkor::x11
