// SPDX-License-Identifier: MIT
#include "ProcessStats.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <unistd.h>

namespace velkor::xbench {

namespace {

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

double statusMb(const QByteArray& status, const char* key)
{
    for (const QByteArray& line : status.split('\n'))
        if (line.startsWith(key))
            return line.mid(qsizetype(qstrlen(key))).trimmed().split(' ').value(0).toDouble() /
                   1024.0;
    return 0;
}

// The fields of a stat file after the command name, which sits in
// parentheses and may itself hold spaces: the state is field 0 here.
QList<QByteArray> statFields(const QByteArray& stat)
{
    const qsizetype close = stat.lastIndexOf(')');
    return close < 0 ? QList<QByteArray>() : stat.mid(close + 2).split(' ');
}

double schedstatMs(const QString& path)
{
    const QByteArray text = readFile(path);
    return text.isEmpty() ? -1 : double(text.split(' ').value(0).toULongLong()) / 1e6;
}

} // namespace

std::optional<Memory> memoryOf(qint64 pid)
{
    const QByteArray status = readFile(QStringLiteral("/proc/%1/status").arg(pid));
    if (status.isEmpty())
        return std::nullopt;
    Memory m{statusMb(status, "VmRSS:"), statusMb(status, "RssAnon:"),
             statusMb(status, "RssFile:")};
    const QByteArray rollup = readFile(QStringLiteral("/proc/%1/smaps_rollup").arg(pid));
    if (!rollup.isEmpty()) {
        m.privateMb = statusMb(rollup, "Private_Clean:") + statusMb(rollup, "Private_Dirty:");
        m.proportionalMb = statusMb(rollup, "Pss:");
    }
    return m;
}

double cpuMs(qint64 pid)
{
    const QList<QByteArray> f = statFields(readFile(QStringLiteral("/proc/%1/stat").arg(pid)));
    if (f.size() < 13)
        return -1;
    // utime and stime are fields 14 and 15 of the whole line.
    const double ticks = double(f[11].toULongLong() + f[12].toULongLong());
    return ticks * 1000.0 / double(sysconf(_SC_CLK_TCK));
}

qint64 wakeups(qint64 pid)
{
    qint64 total = 0;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& tid : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QByteArray& line :
             readFile(tasks.filePath(tid) + QLatin1String("/status")).split('\n'))
            if (line.startsWith("voluntary_ctxt_switches:") ||
                line.startsWith("nonvoluntary_ctxt_switches:"))
                total += line.split(':').value(1).trimmed().toLongLong();
    }
    return total;
}

QList<ThreadSample> threadsOf(qint64 pid)
{
    QList<ThreadSample> out;
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(pid));
    for (const QString& tid : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        ThreadSample t;
        t.tid = tid.toLongLong();
        t.name =
            QString::fromUtf8(readFile(tasks.filePath(tid) + QLatin1String("/comm")).trimmed());
        t.cpuMs = schedstatMs(tasks.filePath(tid) + QLatin1String("/schedstat"));
        // A thread that ended between the listing and the reads is gone.
        if (!t.name.isEmpty())
            out.append(t);
    }
    return out;
}

double liveThreadsCpuMs(qint64 pid)
{
    double total = 0;
    for (const ThreadSample& t : threadsOf(pid))
        total += std::max(0.0, t.cpuMs);
    return total;
}

double mainThreadCpuMs(qint64 pid)
{
    return schedstatMs(QStringLiteral("/proc/%1/task/%1/schedstat").arg(pid));
}

} // namespace velkor::xbench
