// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <algorithm>
#include <optional>
#include <utility>

// Scores a typed query against display names: characters in order, with
// bonuses for runs, word starts and camel-case humps, and a small penalty for
// long names. Text is compared as grapheme clusters, up to canonical
// equivalence.
namespace velkor::FuzzyMatcher {

// Absent when name does not contain every query character in order.
std::optional<int> score(const QString& query, const QString& name);

// The matching items, best first; equal scores keep their input order.
template <typename T, typename NameOf>
QList<T> rank(const QList<T>& items, const QString& query, NameOf nameOf)
{
    if (query.isEmpty())
        return items;
    QList<std::pair<int, qsizetype>> scored;
    scored.reserve(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (const auto s = score(query, nameOf(items[i])))
            scored.append({*s, i});
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    QList<T> result;
    result.reserve(scored.size());
    for (const auto& [s, i] : scored)
        result.append(items[i]);
    return result;
}

} // namespace velkor::FuzzyMatcher
