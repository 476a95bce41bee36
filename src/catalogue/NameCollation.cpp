// SPDX-License-Identifier: MIT
#include "catalogue/NameCollation.h"

#include <algorithm>

namespace velkor {

namespace {

// Ranks before the character itself, so that every space sorts before every
// punctuation mark, which sorts before every digit and every letter.
char16_t rankOf(QChar c)
{
    if (c.isSpace())
        return 1;
    if (c.isPunct() || c.isSymbol())
        return 2;
    if (c.isNumber())
        return 3;
    return 4;
}

bool isAscii(const QString& s)
{
    return std::all_of(s.cbegin(), s.cend(), [](QChar c) { return c.unicode() < 0x80; });
}

} // namespace

QString NameCollation::sortKey(const QString& name)
{
    const QString folded = isAscii(name)
                               ? name.toCaseFolded()
                               : name.normalized(QString::NormalizationForm_KD).toCaseFolded();
    // The base letters, each after its rank; then, after a separator that
    // sorts below every rank, the folded text with its accents as the tie
    // break.
    QString key;
    key.reserve(folded.size() * 3 + 1);
    for (QChar c : folded) {
        if (c.isMark())
            continue;
        key.append(QChar(rankOf(c)));
        key.append(c);
    }
    key.append(QChar(0));
    key.append(folded);
    return key;
}

int NameCollation::compare(const QString& a, const QString& b)
{
    return sortKey(a).compare(sortKey(b));
}

} // namespace velkor
