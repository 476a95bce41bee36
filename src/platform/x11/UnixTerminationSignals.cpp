// SPDX-License-Identifier: MIT
#include "platform/NativePlatform.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace velkor {

namespace {

int g_signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    // Only async-signal-safe work here; the event loop does the rest.
    [[maybe_unused]] const auto written = ::write(g_signalPipe[0], &byte, 1);
}

} // namespace

void quitOnTerminationSignals()
{
    if (g_signalPipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_signalPipe) != 0)
        return;
    auto* notifier =
        new QSocketNotifier(g_signalPipe[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, QCoreApplication::instance(), [] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(g_signalPipe[1], &byte, 1);
        QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int sig : {SIGTERM, SIGINT, SIGHUP})
        sigaction(sig, &action, nullptr);
}

} // namespace velkor
