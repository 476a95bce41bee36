// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

namespace velkor {

// A Core Foundation property list (a CFTypeRef, borrowed) as Qt types:
// strings, booleans, integers (qlonglong), fractions (double), lists and
// maps keyed by string. Anything else becomes an invalid QVariant.
QVariant variantFromPropertyList(const void* value);

} // namespace velkor
