// SPDX-License-Identifier: MIT
#include "windows/DisplaySpaces.h"

#include <QMetaType>
#include <QVariantList>
#include <QVariantMap>

namespace velkor {

namespace {

// A list whose every element is a map; absent for anything else.
std::optional<QList<QVariantMap>> listOfMaps(const QVariant& value)
{
    if (value.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QList<QVariantMap> maps;
    for (const QVariant& element : value.toList()) {
        if (element.typeId() != QMetaType::QVariantMap)
            return std::nullopt;
        maps.append(element.toMap());
    }
    return maps;
}

// A Space id is an unsigned 64-bit integer; booleans, strings and fractions are not ids.
std::optional<quint64> spaceId(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        if (value.toLongLong() < 0)
            return std::nullopt;
        return quint64(value.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return value.toULongLong();
    default:
        return std::nullopt;
    }
}

std::optional<quint64> managedSpaceId(const QVariantMap& space)
{
    return spaceId(space.value(QStringLiteral("ManagedSpaceID")));
}

} // namespace

std::optional<SpaceLayout> readMainDisplaySpaces(const QVariant& managedDisplays)
{
    const auto displays = listOfMaps(managedDisplays);
    if (!displays || displays->isEmpty())
        return std::nullopt;
    const QVariantMap& main = displays->first();

    SpaceLayout layout;
    const QVariant identifier = main.value(QStringLiteral("Display Identifier"));
    if (identifier.typeId() == QMetaType::QString)
        layout.displayId = identifier.toString();

    const auto spaces = listOfMaps(main.value(QStringLiteral("Spaces")));
    for (const QVariantMap& space : spaces.value_or(QList<QVariantMap>())) {
        if (const auto id = managedSpaceId(space))
            layout.spaceIds.append(*id);
    }

    const QVariant current = main.value(QStringLiteral("Current Space"));
    if (current.typeId() == QMetaType::QVariantMap) {
        if (const auto id = managedSpaceId(current.toMap()))
            layout.currentIndex = qMax(0, int(layout.spaceIds.indexOf(*id)));
    }
    return layout;
}

} // namespace velkor
