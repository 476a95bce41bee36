// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <utility>
#include <vector>

// A tiny harness: each benchmark registers itself and prints one
// "name=value" line per figure. Not a test: figures are for reading and for
// comparing against peers run in the same harness.
namespace velkor::bench {

void report(const QString& name, double value);
void report(const QString& name, const QString& value);

using BenchFn = std::function<void()>;
bool registerBench(const char* name, BenchFn fn);

// Seconds taken by fn, best of `rounds` runs.
template <typename Fn> double bestOf(int rounds, Fn&& fn)
{
    double best = 1e300;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        fn();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count());
    }
    return best;
}

} // namespace velkor::bench

#define VELKOR_BENCH(name)                                                                         \
    static void name();                                                                            \
    static const bool name##_registered = velkor::bench::registerBench(#name, &name);              \
    static void name()
