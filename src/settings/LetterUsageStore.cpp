// SPDX-License-Identifier: MIT
#include "settings/LetterUsageStore.h"

#include "settings/StoredValues.h"

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcSettings)

namespace velkor {

namespace {

const QString Key = QStringLiteral("letterUsage");

template <typename Map> std::optional<LetterUsage> usageFromMap(const Map& map)
{
    LetterUsage usage;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const auto ids = storedStringList(it.value());
        if (!ids)
            return std::nullopt;
        usage.insert(it.key(), *ids);
    }
    return usage;
}

// A dictionary as a whole, or nothing.
std::optional<LetterUsage> usageFromValue(const QVariant& value)
{
    if (value.typeId() == QMetaType::QVariantMap)
        return usageFromMap(value.toMap());
    if (value.typeId() == QMetaType::QVariantHash)
        return usageFromMap(value.toHash());
    return std::nullopt;
}

QVariantMap toVariantMap(const LetterUsage& usage)
{
    QVariantMap map;
    for (auto it = usage.cbegin(); it != usage.cend(); ++it)
        map.insert(it.key(), QVariant(it.value()));
    return map;
}

// QSettings takes "/" in a key as a group separator; an app whose name starts
// with one still has a letter. "%" is escaped too, so that the key reads back
// as it was. Every other character is QSettings' to escape.
QString groupKey(const QString& letter)
{
    QString key = letter;
    key.replace(QLatin1Char('%'), QLatin1String("%25"));
    key.replace(QLatin1Char('/'), QLatin1String("%2F"));
    return key;
}

QString letterOfGroupKey(const QString& key)
{
    QString letter;
    letter.reserve(key.size());
    for (qsizetype i = 0; i < key.size(); ++i) {
        const QStringView rest = QStringView(key).mid(i);
        if (rest.startsWith(u"%25")) {
            letter += QLatin1Char('%');
            i += 2;
        } else if (rest.startsWith(u"%2F")) {
            letter += QLatin1Char('/');
            i += 2;
        } else {
            letter += key.at(i);
        }
    }
    return letter;
}

} // namespace

LetterUsageStore::Layout LetterUsageStore::layoutFor(const QSettings& store)
{
    // QSettings' native store is an INI file everywhere but on macOS, where
    // it is a property list that keeps dictionaries as they are.
    const bool propertyList = store.format() == QSettings::NativeFormat &&
                              store.fileName().endsWith(QLatin1String(".plist"));
    return propertyList ? Layout::dictionary : Layout::group;
}

LetterUsage LetterUsageStore::read()
{
    if (m_layout == Layout::dictionary)
        return readDictionary().value_or(LetterUsage());

    m_store.beginGroup(Key);
    const bool hasGroup = !m_store.childKeys().isEmpty();
    m_store.endGroup();
    if (hasGroup || !m_store.contains(Key))
        return readGroup().value_or(LetterUsage());

    // An older version's single value: moved into the group, or, when it
    // cannot be read, left as it is until the usage is next written.
    const std::optional<LetterUsage> old = readDictionary();
    if (!old)
        return LetterUsage();
    writeGroup(*old);
    qCInfo(lcSettings).noquote() << "moved the learnt letter order of" << m_store.fileName()
                                 << "into its [letterUsage] group";
    return *old;
}

void LetterUsageStore::write(const LetterUsage& usage)
{
    if (m_layout == Layout::group) {
        writeGroup(usage);
        return;
    }
    if (readDictionary() != usage)
        m_store.setValue(Key, toVariantMap(usage));
}

std::optional<LetterUsage> LetterUsageStore::readGroup() const
{
    m_store.beginGroup(Key);
    LetterUsage usage;
    bool whole = true;
    for (const QString& key : m_store.childKeys()) {
        const auto ids = storedStringList(m_store.value(key));
        if (!ids) {
            whole = false;
            break;
        }
        usage.insert(letterOfGroupKey(key), *ids);
    }
    m_store.endGroup();
    return whole ? std::optional(usage) : std::nullopt;
}

std::optional<LetterUsage> LetterUsageStore::readDictionary() const
{
    return usageFromValue(m_store.value(Key));
}

void LetterUsageStore::writeGroup(const LetterUsage& usage)
{
    // Removing the single value takes the group with it; it is written
    // whole below.
    if (m_store.contains(Key))
        m_store.remove(Key);
    m_store.beginGroup(Key);
    for (const QString& key : m_store.childKeys()) {
        if (!usage.contains(letterOfGroupKey(key)))
            m_store.remove(key);
    }
    for (auto it = usage.cbegin(); it != usage.cend(); ++it) {
        if (it.key().isEmpty())
            continue; // QSettings has no empty key; an empty letter names nothing
        const QString key = groupKey(it.key());
        if (!storeHolds(m_store, key, QVariant(it.value())))
            m_store.setValue(key, it.value());
    }
    m_store.endGroup();
}

} // namespace velkor
