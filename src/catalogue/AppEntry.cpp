// SPDX-License-Identifier: MIT
#include "catalogue/AppEntry.h"

namespace velkor {

namespace {
template <typename T> size_t hashOptional(const std::optional<T>& value, size_t seed)
{
    using ::qHash;
    seed = qHashMulti(seed, value.has_value());
    return value ? qHash(*value, seed) : seed;
}
} // namespace

size_t qHash(const AppEntry& entry, size_t seed)
{
    seed = qHashMulti(seed, entry.id, entry.name);
    seed = hashOptional(entry.url, seed);
    seed = hashOptional(entry.bundleId, seed);
    return hashOptional(entry.pid, seed);
}

} // namespace velkor
