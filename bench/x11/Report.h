// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <chrono>
#include <vector>

// Printing figures: one "name=value" line each, as every Velkor benchmark
// does, and the order statistics of timed samples.
namespace velkor::xbench {

using Clock = std::chrono::steady_clock;

void report(const QString& name, double value);
void reportText(const QString& name, const QString& value);

// The lines that say where the figures come from: cores, CPU model, memory,
// and how busy the machine was just before the run (other engineers'
// builds, a browser), since every figure here is wall-clock time.
void reportMachine();

double msBetween(Clock::time_point from, Clock::time_point to);
double msSince(Clock::time_point from);

// Timed samples in milliseconds, and the trials that timed out.
class Samples
{
public:
    void add(double ms) { m_ms.push_back(ms); }
    void fail() { ++m_failures; }

    bool isEmpty() const { return m_ms.empty(); }
    int count() const { return int(m_ms.size()); }
    int failures() const { return m_failures; }
    // Nearest rank: the value below which a share q of the samples lie;
    // -1 without samples.
    double quantile(double q) const;
    double median() const { return quantile(0.5); }
    double mean() const;

    // <prefix>_median_ms, _p90_ms, _p99_ms, _samples, _failures.
    void report(const QString& prefix) const;

private:
    std::vector<double> m_ms;
    int m_failures = 0;
};

} // namespace velkor::xbench
