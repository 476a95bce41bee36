// SPDX-License-Identifier: MIT
#include "settings/StoredValues.h"

#include <cmath>

namespace velkor {

namespace {

bool isNumber(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

} // namespace

std::optional<bool> storedBool(const QVariant& value)
{
    // Anything but a real boolean or QSettings' own words ("yes", 1, a
    // list) is not a boolean.
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (text == QLatin1String("true"))
            return true;
        if (text == QLatin1String("false"))
            return false;
    }
    return std::nullopt;
}

std::optional<double> storedNumber(const QVariant& value)
{
    double number = 0;
    if (isNumber(value)) {
        number = value.toDouble();
    } else if (value.typeId() == QMetaType::QString) {
        bool ok = false;
        number = value.toString().toDouble(&ok);
        if (!ok)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (!std::isfinite(number))
        return std::nullopt;
    return number;
}

std::optional<QString> storedString(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<QStringList> storedStringList(const QVariant& value)
{
    if (!value.isValid())
        return QStringList();
    if (value.typeId() == QMetaType::QString) {
        const QString single = value.toString();
        return single.isEmpty() ? QStringList() : QStringList{single};
    }
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList();
    if (value.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QStringList strings;
    for (const QVariant& element : value.toList()) {
        if (element.typeId() != QMetaType::QString)
            return std::nullopt;
        strings.append(element.toString());
    }
    return strings;
}

bool storeHolds(const QSettings& store, const QString& key, const QVariant& wanted)
{
    if (!store.contains(key))
        return false;
    const QVariant stored = store.value(key);
    switch (wanted.typeId()) {
    case QMetaType::Bool:
        return storedBool(stored) == wanted.toBool();
    case QMetaType::Double:
        return storedNumber(stored) == wanted.toDouble();
    case QMetaType::QString:
        return storedString(stored) == wanted.toString();
    case QMetaType::QStringList:
        return storedStringList(stored) == wanted.toStringList();
    default:
        return false;
    }
}

} // namespace velkor
