// SPDX-License-Identifier: MIT
#include "overlay/TextWidths.h"

namespace velkor {

namespace {

// Far more than a day's names and queries; past it the widths are measured
// afresh rather than kept without end.
constexpr qsizetype MaxKept = 512;

} // namespace

double TextWidths::advance(const QString& text)
{
    const auto known = m_advances.constFind(text);
    if (known != m_advances.cend())
        return *known;
    if (m_advances.size() >= MaxKept)
        m_advances.clear();
    return *m_advances.insert(text, m_metrics.horizontalAdvance(text));
}

QString TextWidths::elided(const QString& text, double width)
{
    if (advance(text) <= width)
        return text;
    return m_metrics.elidedText(text, Qt::ElideRight, width);
}

} // namespace velkor
