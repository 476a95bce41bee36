// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace velkor {

// The order app names are listed in: Unicode-aware and case-insensitive,
// close to a dictionary's. Letters are compared first without their accents,
// and accents only break ties ("ecole" < "école" < "Ecrire"); case never
// counts. Spaces and punctuation come before digits, digits before letters.
// It follows no locale's tailoring: loading a locale collator (ICU) would
// cost the resident process about 2 MB for app names that rarely need it.
class NameCollation final
{
public:
    // A key that compares, code unit by code unit, as the names do.
    static QString sortKey(const QString& name);

    // <0, 0 or >0 as a sorts before, with or after b.
    static int compare(const QString& a, const QString& b);
};

} // namespace velkor
