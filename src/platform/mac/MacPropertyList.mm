// SPDX-License-Identifier: MIT
#include "platform/mac/MacPropertyList.h"

#include <CoreFoundation/CoreFoundation.h>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <vector>

namespace velkor {

namespace {

QVariant fromNumber(CFNumberRef number)
{
    if (CFNumberIsFloatType(number)) {
        double fraction = 0;
        CFNumberGetValue(number, kCFNumberDoubleType, &fraction);
        return fraction;
    }
    qlonglong integer = 0;
    CFNumberGetValue(number, kCFNumberSInt64Type, &integer);
    return integer;
}

QVariant fromArray(CFArrayRef array)
{
    QVariantList list;
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i)
        list.append(variantFromPropertyList(CFArrayGetValueAtIndex(array, i)));
    return list;
}

QVariant fromDictionary(CFDictionaryRef dictionary)
{
    const CFIndex count = CFDictionaryGetCount(dictionary);
    std::vector<const void*> keys(static_cast<size_t>(count), nullptr);
    std::vector<const void*> values(static_cast<size_t>(count), nullptr);
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    QVariantMap map;
    for (CFIndex i = 0; i < count; ++i) {
        if (CFGetTypeID(keys[size_t(i)]) != CFStringGetTypeID())
            continue;
        map.insert(QString::fromCFString(static_cast<CFStringRef>(keys[size_t(i)])),
                   variantFromPropertyList(values[size_t(i)]));
    }
    return map;
}

} // namespace

QVariant variantFromPropertyList(const void* value)
{
    if (!value)
        return {};
    const CFTypeID type = CFGetTypeID(value);
    if (type == CFStringGetTypeID())
        return QString::fromCFString(static_cast<CFStringRef>(value));
    // Booleans first: they are not numbers here, whatever their bridging says.
    if (type == CFBooleanGetTypeID())
        return bool(CFBooleanGetValue(static_cast<CFBooleanRef>(value)));
    if (type == CFNumberGetTypeID())
        return fromNumber(static_cast<CFNumberRef>(value));
    if (type == CFArrayGetTypeID())
        return fromArray(static_cast<CFArrayRef>(value));
    if (type == CFDictionaryGetTypeID())
        return fromDictionary(static_cast<CFDictionaryRef>(value));
    return {};
}

} // namespace velkor
