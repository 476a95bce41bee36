// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace velkor::bench {

// count app names shaped like a real catalogue, the same on every run:
// vendor prefixes, one to three words, camel-case compounds, versions, and
// a share of accented and non-Latin names.
QStringList generatedAppNames(int count);

} // namespace velkor::bench
