// SPDX-License-Identifier: MIT
#include "Report.h"

#include <QFile>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace velkor::xbench {

namespace {

QByteArray readProc(const char* path)
{
    QFile f(QString::fromLatin1(path));
    // Files under /proc report size 0; readAll reads until the end anyway.
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// The value after "key" and a colon on the first line that starts with key.
QByteArray field(const QByteArray& text, const char* key)
{
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith(key)) {
            const qsizetype colon = line.indexOf(':');
            return colon < 0 ? QByteArray() : line.mid(colon + 1).trimmed();
        }
    }
    return {};
}

struct CpuTicks
{
    quint64 busy = 0;
    quint64 total = 0;
};

// The first line of /proc/stat: the ticks of every core together.
CpuTicks allCores()
{
    const QList<QByteArray> parts =
        readProc("/proc/stat").split('\n').value(0).simplified().split(' ');
    CpuTicks t;
    for (qsizetype i = 1; i < parts.size(); ++i) {
        const quint64 v = parts[i].toULongLong();
        t.total += v;
        if (i != 4 && i != 5) // idle and iowait
            t.busy += v;
    }
    return t;
}

} // namespace

void report(const QString& name, double value)
{
    std::printf("%s=%.3f\n", qPrintable(name), value);
    std::fflush(stdout);
}

void reportText(const QString& name, const QString& value)
{
    std::printf("%s=%s\n", qPrintable(name), qPrintable(value));
    std::fflush(stdout);
}

void reportMachine()
{
    const QByteArray cpuinfo = readProc("/proc/cpuinfo");
    reportText(QStringLiteral("machine_cpu"), QString::fromLatin1(field(cpuinfo, "model name")));
    report(QStringLiteral("machine_nproc"), double(sysconf(_SC_NPROCESSORS_ONLN)));
    const QByteArray meminfo = readProc("/proc/meminfo");
    report(QStringLiteral("machine_mem_total_mb"),
           field(meminfo, "MemTotal").split(' ').value(0).toDouble() / 1024.0);
    report(QStringLiteral("machine_loadavg_1m"),
           readProc("/proc/loadavg").split(' ').value(0).toDouble());
    // The share of all cores busy over one second while this program only
    // waits: anything well above zero is someone else's work, and every
    // figure below carries that noise.
    const CpuTicks before = allCores();
    QThread::msleep(1000);
    const CpuTicks after = allCores();
    const double total = double(after.total - before.total);
    const double busy = total > 0 ? 100.0 * double(after.busy - before.busy) / total : 0;
    report(QStringLiteral("machine_busy_percent_before_run"), busy);
    reportText(QStringLiteral("machine_other_load"),
               busy > 10 ? QStringLiteral("yes") : QStringLiteral("no"));
}

double msBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

double msSince(Clock::time_point from)
{
    return msBetween(from, Clock::now());
}

double Samples::quantile(double q) const
{
    if (m_ms.empty())
        return -1;
    std::vector<double> sorted = m_ms;
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(sorted.size() - 1, size_t(q * double(sorted.size())))];
}

double Samples::mean() const
{
    if (m_ms.empty())
        return -1;
    double sum = 0;
    for (double v : m_ms)
        sum += v;
    return sum / double(m_ms.size());
}

void Samples::report(const QString& prefix) const
{
    xbench::report(prefix + QLatin1String("_median_ms"), median());
    xbench::report(prefix + QLatin1String("_p90_ms"), quantile(0.9));
    xbench::report(prefix + QLatin1String("_p99_ms"), quantile(0.99));
    xbench::report(prefix + QLatin1String("_samples"), count());
    xbench::report(prefix + QLatin1String("_failures"), failures());
}

} // namespace velkor::xbench
