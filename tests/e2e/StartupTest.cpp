// SPDX-License-Identifier: MIT
#include "VelkorInstance.h"
#include "XDesktop.h"

#include <QProcess>
#include <QtTest>

using namespace velkor::e2e;

namespace {

struct Outcome
{
    int exitCode = -1;
    bool crashed = true;
    QString output;
};

// Runs the program in a given environment until it gives up by itself.
Outcome runWith(const QProcessEnvironment& env)
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(VelkorInstance::binary(), {});
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), process.exitStatus() != QProcess::NormalExit,
            QString::fromLocal8Bit(process.readAll()).trimmed()};
}

} // namespace

class StartupTest : public QObject
{
    Q_OBJECT

private slots:
    void startsOnAnX11DesktopAndQuitsCleanly()
    {
        XDesktop desktop;
        QVERIFY2(desktop.start(), qPrintable(desktop.error()));
        VelkorInstance velkor(desktop);
        QVERIFY2(velkor.start(), qPrintable(velkor.log()));
        QVERIFY(!velkor.log().contains(QLatin1String("failed to create event tap")));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }

    void brokenEnvironmentsGetOneLineAndAnExitCode()
    {
        XDesktop desktop; // only for its scratch folder and base environment
        QProcessEnvironment base = VelkorInstance(desktop).environment();

        QProcessEnvironment noDisplay = base;
        noDisplay.remove(QStringLiteral("DISPLAY"));
        Outcome outcome = runWith(noDisplay);
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.output.contains(QLatin1String("DISPLAY is not set")),
                 qPrintable(outcome.output));
        QCOMPARE(outcome.output.count(QLatin1Char('\n')), 0);

        QProcessEnvironment waylandOnly = noDisplay;
        waylandOnly.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0"));
        outcome = runWith(waylandOnly);
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.output.contains(QLatin1String("Wayland")), qPrintable(outcome.output));

        QProcessEnvironment deadDisplay = base;
        deadDisplay.insert(QStringLiteral("DISPLAY"), QStringLiteral(":4711"));
        outcome = runWith(deadDisplay);
        QVERIFY(!outcome.crashed);
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.output.contains(QLatin1String("cannot open the X display \":4711\"")),
                 qPrintable(outcome.output));

        // A Qt platform chosen by the user must not take Velkor off X11.
        QProcessEnvironment offscreen = noDisplay;
        offscreen.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        outcome = runWith(offscreen);
        QCOMPARE(outcome.exitCode, 1);
    }

    void aServerWithoutXTestIsNotTrusted()
    {
        XDesktop desktop;
        desktop.setServerArguments({QStringLiteral("-extension"), QStringLiteral("XTEST")});
        QVERIFY2(desktop.start(false), qPrintable(desktop.error()));
        // Not trusted: the program stays up with its onboarding window, which
        // says what is missing, and does not watch the keyboard.
        QProcess process;
        process.setProcessEnvironment(VelkorInstance(desktop).environment());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(VelkorInstance::binary(), {});
        QVERIFY(process.waitForStarted(5000));
        QString output;
        const bool explained = desktop.waitFor(
            [&] {
                output += QString::fromLocal8Bit(process.readAll());
                return output.contains(QLatin1String("lacks XTEST"));
            },
            10000);
        QVERIFY2(explained, qPrintable(output));
        QCOMPARE(process.state(), QProcess::Running);
        QVERIFY(!output.contains(QLatin1String("event tap installed")));
        process.terminate();
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "StartupTest.moc"
