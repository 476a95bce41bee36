// SPDX-License-Identifier: MIT
#include "Bench.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>
#include <cstdio>

namespace velkor::bench {

namespace {
std::vector<std::pair<QString, BenchFn>>& benches()
{
    static std::vector<std::pair<QString, BenchFn>> all;
    return all;
}
} // namespace

bool registerBench(const char* name, BenchFn fn)
{
    benches().emplace_back(QString::fromLatin1(name), std::move(fn));
    return true;
}

void report(const QString& name, double value)
{
    report(name, QString::number(value, 'g', 6));
}

void report(const QString& name, const QString& value)
{
    std::printf("%s=%s\n", qPrintable(name), qPrintable(value));
    std::fflush(stdout);
}

} // namespace velkor::bench

// Runs every benchmark, or those whose names are given on the command line.
int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList only = app.arguments().mid(1);
    for (const auto& [name, fn] : velkor::bench::benches()) {
        if (only.isEmpty() || only.contains(name))
            fn();
    }
    return 0;
}
