// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>
#include <QStringList>
#include <QVariant>
#include <optional>

namespace velkor {

// Strict readings of one value of the settings store: absent when the value
// is not of the kind asked for. An INI file gives back the text QSettings
// wrote, the macOS user defaults give typed values; both are understood.

std::optional<bool> storedBool(const QVariant& value);
// A finite number, stored as a number or as its text.
std::optional<double> storedNumber(const QVariant& value);
// Only a stored string counts; an INI line with an unquoted comma reads as a
// list, which is not one.
std::optional<QString> storedString(const QVariant& value);
// A list of strings as a whole. QSettings' INI writer stores a list of one
// as a bare string and the empty list as "@Invalid()", which reads back as
// no value at all: both are lists here. An empty bare string is the empty
// list, since an empty id names no app.
std::optional<QStringList> storedStringList(const QVariant& value);

// Whether the store already holds `wanted` (a bool, double, string or string
// list) under key, in any spelling that reads back as it. Writing it again
// would rewrite the file for nothing.
bool storeHolds(const QSettings& store, const QString& key, const QVariant& wanted);

} // namespace velkor
