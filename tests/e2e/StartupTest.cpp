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
    void brokenEnvironmentsGetOneLineAndAnExitCode()
    {
        XDesktop desktop; // only for its scratch folder and base environment
        const QProcessEnvironment base = VelkorInstance(desktop).environment();
        auto with = [&](const QString& variable, const QString& value) {
            QProcessEnvironment env = base;
            env.remove(QStringLiteral("DISPLAY"));
            if (!variable.isEmpty())
                env.insert(variable, value);
            return env;
        };
        const struct
        {
            QProcessEnvironment env;
            const char* says;
        } cases[] = {
            {with({}, {}), "DISPLAY is not set"},
            {with(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-0")), "Wayland"},
            {with(QStringLiteral("DISPLAY"), QStringLiteral(":4711")),
             "cannot open the X display \":4711\""},
            // A Qt platform chosen by the user must not take Velkor off X11.
            {with(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen")),
             "DISPLAY is not set"},
        };
        for (const auto& c : cases) {
            const Outcome outcome = runWith(c.env);
            QVERIFY(!outcome.crashed);
            QCOMPARE(outcome.exitCode, 1);
            QVERIFY2(outcome.output.contains(QLatin1String(c.says)), qPrintable(outcome.output));
            QCOMPARE(outcome.output.count(QLatin1Char('\n')), 0);
        }
    }

    void aServerWithoutXTestIsNotTrusted()
    {
        XDesktop desktop;
        desktop.setServerArguments({QStringLiteral("-extension"), QStringLiteral("XTEST")});
        QVERIFY2(desktop.start(false), qPrintable(desktop.error()));
        // Not trusted: the program stays up with its onboarding window, which
        // says what is missing, and does not watch the keyboard.
        VelkorInstance velkor(desktop);
        QVERIFY(velkor.launch());
        QVERIFY2(velkor.waitForLog(QStringLiteral("lacks XTEST")), qPrintable(velkor.log()));
        QVERIFY(velkor.isRunning());
        QVERIFY2(!velkor.logSaysKeyGrabbed(), qPrintable(velkor.log()));
        QVERIFY2(velkor.stop(), qPrintable(velkor.log()));
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "StartupTest.moc"
