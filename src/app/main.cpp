// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "platform/NativePlatform.h"
#include "settings/Preferences.h"

#include <QApplication>
#include <cstdio>

namespace {

// Prints the answer and gives the status to exit with.
int print(const velkor::CommandLineAnswer& answer)
{
    std::fputs(answer.text.toLocal8Bit().constData(), answer.toStandardError ? stderr : stdout);
    return answer.exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    using velkor::CommandLine::Stage;

    // --help and --version first: they need no display, no session bus and no
    // settings, and create no file.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (const auto answer = velkor::CommandLine::answer(arguments, Stage::beforeQt))
        return print(*answer);

    // Before the application object: Qt aborts when its platform plugin
    // cannot start, so a broken environment is caught here with one line.
    if (const auto problem = velkor::prepareNativeEnvironment()) {
        std::fprintf(stderr, "velkor: %s\n", qPrintable(*problem));
        return 1;
    }

    QApplication app(argc, argv);
    // Qt has taken its own options out; anything left is a mistake.
    if (const auto answer = velkor::CommandLine::answer(QApplication::arguments(), Stage::afterQt))
        return print(*answer);
    velkor::Preferences::setApplicationIdentity();
    QApplication::setApplicationVersion(QStringLiteral(VELKOR_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    velkor::quitOnTerminationSignals();

    velkor::AppDelegate delegate(velkor::createPlatform());
    // A second start hands over to the running Velkor, which shows its
    // settings window.
    if (!delegate.claimSingleInstance())
        return 0;
    if (!delegate.start())
        return 1;
    return QApplication::exec();
}
