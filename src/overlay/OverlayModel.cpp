// SPDX-License-Identifier: MIT
#include "overlay/OverlayModel.h"

#include <algorithm>

namespace velkor {

// Every write notifies, changed or not: a bound view redraws on each one.

void OverlayModel::setItems(const QList<OverlayItem>& items)
{
    m_items = items;
    emit itemsChanged();
    emit changed();
}

void OverlayModel::setSelection(int selection)
{
    m_selection = selection;
    emit selectionChanged();
    emit changed();
}

void OverlayModel::setQuery(const QString& query)
{
    m_query = query;
    emit queryChanged();
    emit changed();
}

void OverlayModel::setMode(const QString& mode)
{
    m_mode = mode;
    emit modeChanged();
    emit changed();
}

void OverlayModel::clamp()
{
    const int count = int(m_items.size());
    setSelection(count == 0 ? 0 : std::clamp(m_selection, 0, count - 1));
}

std::optional<OverlayItem> OverlayModel::selected() const
{
    if (m_selection < 0 || m_selection >= m_items.size())
        return std::nullopt;
    return m_items.at(m_selection);
}

} // namespace velkor
