// SPDX-License-Identifier: MIT
// velkor-x11-bench: Velkor's figures on a private Xvfb + openbox desktop,
// as name=value lines. See bench/README.md for what each one measures.
//
//   velkor-x11-bench [MODE]... [--rounds N] [--trials N] [--seed S]
//   modes: --key-to-focus (the default), --idle, --soak N, --overlay,
//          --startup, --scale, --all (every mode but the soak)
#include "Benches.h"
#include "Report.h"

#include <QCoreApplication>
#include <QStringList>
#include <cstdio>
#include <functional>
#include <vector>

using namespace velkor::xbench;

namespace {

void usage()
{
    std::fprintf(stderr,
                 "usage: velkor-x11-bench [--key-to-focus] [--idle] [--soak N] [--overlay]\n"
                 "                        [--startup] [--scale] [--all]\n"
                 "                        [--rounds N] [--trials N] [--seed S]\n");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    Options options;
    std::vector<std::function<int(const Options&)>> modes;
    const auto number = [&](qsizetype& i, int& into) {
        bool ok = false;
        into = args.value(++i).toInt(&ok);
        return ok && into > 0;
    };
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        int seed = 0;
        bool ok = true;
        if (a == QLatin1String("--key-to-focus"))
            modes.push_back(runKeyToFocus);
        else if (a == QLatin1String("--idle"))
            modes.push_back(runIdle);
        else if (a == QLatin1String("--soak")) {
            ok = number(i, options.soakGestures);
            modes.push_back(runSoak);
        } else if (a == QLatin1String("--overlay"))
            modes.push_back(runOverlay);
        else if (a == QLatin1String("--startup"))
            modes.push_back(runStartup);
        else if (a == QLatin1String("--scale"))
            modes.push_back(runScale);
        else if (a == QLatin1String("--all"))
            modes.insert(modes.end(), {runKeyToFocus, runIdle, runOverlay, runStartup, runScale});
        else if (a == QLatin1String("--rounds"))
            ok = number(i, options.rounds);
        else if (a == QLatin1String("--trials"))
            ok = number(i, options.trials);
        else if (a == QLatin1String("--seed")) {
            ok = number(i, seed);
            options.seed = quint32(seed);
        } else if (a.toInt(&ok) > 0) // the old form: a bare number of rounds
            options.rounds = a.toInt();
        if (!ok) {
            usage();
            return 2;
        }
    }
    if (modes.empty())
        modes.push_back(runKeyToFocus);

    reportMachine();
    report(QStringLiteral("seed"), options.seed);
    int status = 0;
    for (const auto& mode : modes)
        status = std::max(status, mode(options));
    return status;
}
