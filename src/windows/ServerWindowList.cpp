// SPDX-License-Identifier: MIT
#include "windows/ServerWindowList.h"

#include <QMetaType>
#include <QVariantList>
#include <QVariantMap>

namespace velkor {

namespace {

// An integer within [low, high]; booleans, text and fractions are not.
std::optional<qint64> integerIn(const QVariant& value, qint64 low, qint64 high)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULong:
        break;
    case QMetaType::ULongLong:
        if (value.toULongLong() > quint64(high))
            return std::nullopt;
        break;
    default:
        return std::nullopt;
    }
    const qint64 integer = value.toLongLong();
    if (integer < low || integer > high)
        return std::nullopt;
    return integer;
}

} // namespace

QList<ServerWindow> readServerWindows(const QVariant& windowInfo, const WindowInfoKeys& keys)
{
    QList<ServerWindow> windows;
    if (windowInfo.typeId() != QMetaType::QVariantList)
        return windows;
    for (const QVariant& entry : windowInfo.toList()) {
        if (entry.typeId() != QMetaType::QVariantMap)
            continue;
        const QVariantMap info = entry.toMap();
        const auto number =
            integerIn(info.value(keys.number), 0, std::numeric_limits<quint32>::max());
        const auto owner = integerIn(info.value(keys.ownerPid), 0, std::numeric_limits<Pid>::max());
        if (!number || !owner)
            continue;
        const auto layer = integerIn(info.value(keys.layer), std::numeric_limits<int>::min() + 1,
                                     std::numeric_limits<int>::max());
        windows.append({quint32(*number), Pid(*owner), layer ? int(*layer) : UnknownWindowLayer});
    }
    return windows;
}

} // namespace velkor
