// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SpaceSystem.h"

#include <QVariant>
#include <optional>

namespace velkor {

// Reads the main display's Space layout out of the window server's list of
// managed displays, once that list is converted to Qt types: a QVariantList
// of QVariantMaps keyed "Display Identifier", "Spaces" and "Current Space",
// each Space a QVariantMap holding a numeric "ManagedSpaceID".
// Only the first display counts. Absent when the list is not a non-empty
// list of maps.
std::optional<SpaceLayout> readMainDisplaySpaces(const QVariant& managedDisplays);

} // namespace velkor
