// SPDX-License-Identifier: MIT
#include "catalogue/FuzzyMatcher.h"

#include <QTextBoundaryFinder>

namespace velkor::FuzzyMatcher {

namespace {

constexpr int MatchPoint = 1;
constexpr int RunStep = 5;
constexpr int NameStartBonus = 15;
constexpr int WordStartBonus = 10;
constexpr int CamelHumpBonus = 8;

// Below U+0300 there are no combining marks, so every code unit is a
// grapheme cluster of its own (CR LF excepted) and already in composed form.
// U+0130 is left out because its lower case is two code units.
bool isPlainUnit(char16_t u)
{
    return u < 0x300 && u != u'\r' && u != 0x130;
}

bool isPlainText(const QString& text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](QChar c) { return isPlainUnit(c.unicode()); });
}

// Upper-case: unchanged by upper-casing and changed by lower-casing, so that
// digits, symbols and title-case letters are not humps.
bool isUpperUnit(char16_t u)
{
    return QChar::toUpper(u) == u && QChar::toLower(u) != u;
}

// Lower case and the upper-case test of every plain unit, looked up in a
// table: calling into QChar for each unit of each name dominated ranking.
struct PlainTable
{
    PlainTable()
    {
        for (char16_t u = 0; u < 0x300; ++u) {
            lower[u] = QChar::toLower(u);
            upper[u] = isUpperUnit(u);
        }
    }
    char16_t lower[0x300];
    bool upper[0x300];
};

const PlainTable& plainTable()
{
    static const PlainTable table;
    return table;
}

bool isUpper(const QString& cluster)
{
    return cluster.toUpper() == cluster && cluster.toLower() != cluster;
}

bool isSeparator(char16_t u)
{
    return u == u' ' || u == u'-' || u == u'_';
}

QList<QString> graphemeClusters(const QString& text)
{
    QList<QString> clusters;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end != -1; end = finder.toNextBoundary()) {
        if (end > start)
            clusters.append(text.mid(start, end - start));
        start = end;
    }
    return clusters;
}

QString comparable(const QString& cluster)
{
    return cluster.toLower().normalized(QString::NormalizationForm_C);
}

// The scoring walk, shared by both representations of a name. Name supplies
// size(), equals(m, queryIndex), isSeparatorAt(m) and isUpperAt(m).
template <typename Name> std::optional<int> walk(qsizetype queryLength, const Name& name)
{
    int total = 0;
    int run = 0;
    qsizetype previous = -1;
    qsizetype p = 0;
    const qsizetype length = name.size();
    for (qsizetype q = 0; q < queryLength; ++q) {
        qsizetype m = p;
        while (m < length && !name.equals(m, q))
            ++m;
        if (m >= length)
            return std::nullopt;
        total += MatchPoint;
        if (m == previous + 1) {
            ++run;
            total += RunStep * run;
        } else {
            run = 0;
        }
        if (m == 0)
            total += NameStartBonus;
        else if (name.isSeparatorAt(m - 1))
            total += WordStartBonus;
        else if (name.isUpperAt(m) && !name.isUpperAt(m - 1))
            total += CamelHumpBonus;
        previous = m;
        p = m + 1;
    }
    return total - int(length / 4);
}

// Every unit of the name is below U+0300, so the tables cover it.
struct PlainName
{
    const char16_t* original;
    qsizetype length;
    const std::u16string& query;
    const PlainTable& table = plainTable();
    qsizetype size() const { return length; }
    bool equals(qsizetype m, qsizetype q) const
    {
        return table.lower[original[m]] == query[size_t(q)];
    }
    bool isSeparatorAt(qsizetype m) const { return isSeparator(original[m]); }
    bool isUpperAt(qsizetype m) const { return table.upper[original[m]]; }
};

// Each lower-cased cluster is taken from the original cluster at the same
// position, so the case test reads the name's own character.
struct ClusterName
{
    ClusterName(const QString& name, const QList<QString>& query)
        : original(graphemeClusters(name)), query(query)
    {
        lowered.reserve(original.size());
        for (const QString& cluster : original)
            lowered.append(comparable(cluster));
    }
    QList<QString> original;
    QList<QString> lowered;
    const QList<QString>& query;
    qsizetype size() const { return original.size(); }
    bool equals(qsizetype m, qsizetype q) const { return lowered.at(m) == query.at(q); }
    bool isSeparatorAt(qsizetype m) const
    {
        const QString& c = lowered.at(m);
        return c.size() == 1 && isSeparator(c.at(0).unicode());
    }
    bool isUpperAt(qsizetype m) const { return isUpper(original.at(m)); }
};

} // namespace

Query::Query(const QString& text)
{
    if (isPlainText(text)) {
        m_units.reserve(size_t(text.size()));
        for (const QChar c : text) {
            const char16_t lower = plainTable().lower[c.unicode()];
            m_units.push_back(lower);
            m_clusters.append(QString(QChar(lower)));
        }
        return;
    }
    for (const QString& cluster : graphemeClusters(text)) {
        const QString lowered = comparable(cluster);
        m_clusters.append(lowered);
        if (lowered.size() != 1)
            m_plain = false;
        else
            m_units.push_back(lowered.at(0).unicode());
    }
    // A composed query such as "é" typed as e + U+0301 still matches plain
    // names unit by unit, provided each of its clusters composed to one unit.
    if (m_plain && !std::all_of(m_units.begin(), m_units.end(), isPlainUnit))
        m_plain = false;
}

std::optional<int> score(const Query& query, const QString& name)
{
    if (query.isEmpty())
        return 0;
    if (isPlainText(name)) {
        // A plain name holds only single plain units, so a query character
        // outside them can never be found there.
        if (!query.isPlain())
            return std::nullopt;
        return walk(query.clusters().size(),
                    PlainName{reinterpret_cast<const char16_t*>(name.constData()), name.size(),
                              query.units()});
    }
    return walk(query.clusters().size(), ClusterName(name, query.clusters()));
}

std::optional<int> score(const QString& query, const QString& name)
{
    return score(Query(query), name);
}

} // namespace velkor::FuzzyMatcher
