// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QSettings>
#include <QStringList>
#include <optional>

namespace velkor {

// Letter key → bundle ids chosen with it, most recent first, at most 20.
using LetterUsage = QMap<QString, QStringList>;

// Where the learnt letter order lives in the settings store.
//
// A store that keeps typed values (the macOS user defaults, a property list)
// holds one dictionary under "letterUsage": letter → array of ids. An INI
// file holds a [letterUsage] group instead, one key per letter with its ids
// as a plain list, so that a person can read and edit it; the single
// "@Variant(...)" value that older versions wrote is moved into the group
// when it is first read.
class LetterUsageStore final
{
public:
    enum class Layout
    {
        dictionary,
        group
    };

    // The layout the store's own format calls for.
    static Layout layoutFor(const QSettings& store);

    explicit LetterUsageStore(QSettings& store) : m_store(store), m_layout(layoutFor(store)) {}

    // What the store holds; empty when it holds nothing that can be taken as
    // letter → list of ids as a whole. Moves an older single value of an INI
    // file into the group (the only write this makes).
    LetterUsage read();

    // Stores usage, leaving every letter the store already holds as it is,
    // so that recording an unchanged order does not rewrite the file.
    void write(const LetterUsage& usage);

private:
    std::optional<LetterUsage> readGroup() const;
    std::optional<LetterUsage> readDictionary() const;
    void writeGroup(const LetterUsage& usage);

    QSettings& m_store;
    Layout m_layout;
};

} // namespace velkor
