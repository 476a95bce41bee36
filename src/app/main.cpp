// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"
#include "platform/NativePlatform.h"
#include "settings/Preferences.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char** argv)
{
    // Before the application object: Qt aborts when its platform plugin
    // cannot start, so a broken environment is caught here with one line.
    if (const auto problem = velkor::prepareNativeEnvironment()) {
        std::fprintf(stderr, "velkor: %s\n", qPrintable(*problem));
        return 1;
    }

    QApplication app(argc, argv);
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
        return 2;
    return QApplication::exec();
}
