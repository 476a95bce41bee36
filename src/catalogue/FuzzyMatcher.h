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

// A query split into lower-cased characters once, so that ranking a long list
// does not repeat the work for every name.
class Query
{
public:
    explicit Query(const QString& text);

    bool isEmpty() const { return m_clusters.isEmpty(); }

    // Lower-cased, canonically composed grapheme clusters.
    const QList<QString>& clusters() const { return m_clusters; }

    // Set when every cluster is a single code unit: then units() holds them
    // and names made of such units can be matched unit by unit.
    bool isPlain() const { return m_plain; }
    const std::u16string& units() const { return m_units; }

private:
    QList<QString> m_clusters;
    std::u16string m_units;
    bool m_plain = true;
};

// Absent when name does not contain every query character in order.
std::optional<int> score(const Query& query, const QString& name);
std::optional<int> score(const QString& query, const QString& name);

// The matching items, best first; equal scores keep their input order.
template <typename T, typename NameOf>
QList<T> rank(const QList<T>& items, const QString& query, NameOf nameOf)
{
    if (query.isEmpty())
        return items;
    const Query prepared(query);
    QList<std::pair<int, qsizetype>> scored;
    scored.reserve(items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (const auto s = score(prepared, nameOf(items[i])))
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
