// SPDX-License-Identifier: MIT
#include "VelkorInstance.h"

#include "XDesktop.h"
#include "settings/Preferences.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <csignal>
#include <sys/prctl.h>

namespace velkor::e2e {

VelkorInstance::VelkorInstance(XDesktop& desktop, const QString& home)
    : m_desktop(desktop),
      m_home(home.isEmpty() ? desktop.scratchPath() + QLatin1String("/velkor-home") : home)
{
    QDir().mkpath(configHome());
    QDir().mkpath(dataHome() + QLatin1String("/applications"));
    // The notice of a first start would stand among the test's windows.
    preferences()->store().setValue(QStringLiteral("firstStartNoticeShown"), true);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // Gone with the test, even when the test crashes.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

VelkorInstance::~VelkorInstance()
{
    if (isRunning())
        stop();
}

QString VelkorInstance::binary()
{
    static const QString chosen = [] {
        const QString named = qEnvironmentVariable("VELKOR_TEST_BINARY");
        if (named.isEmpty())
            return QStringLiteral(VELKOR_BINARY);
        // A wrong name must not quietly test something else.
        if (!QFileInfo(named).isExecutable())
            qFatal("VELKOR_TEST_BINARY=%s is not an executable", qPrintable(named));
        qInfo("testing %s", qPrintable(named));
        return named;
    }();
    return chosen;
}

QProcessEnvironment VelkorInstance::environment() const
{
    QProcessEnvironment env = m_desktop.environment();
    env.insert(QStringLiteral("HOME"), m_home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
    env.insert(QStringLiteral("XDG_DATA_HOME"), dataHome());
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home);
    env.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.insert(m_extra);
    return env;
}

void VelkorInstance::writeDesktopEntry(const QString& id, const QString& name, const QString& exec,
                                       const QString& startupWmClass)
{
    QFile file(dataHome() + QLatin1String("/applications/") + id + QLatin1String(".desktop"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    QString text =
        QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n").arg(name, exec);
    if (!startupWmClass.isEmpty())
        text += QStringLiteral("StartupWMClass=%1\n").arg(startupWmClass);
    file.write(text.toUtf8());
}

std::unique_ptr<Preferences> VelkorInstance::preferences() const
{
    // The program's user store: the INI file QSettings keeps for the
    // "Velkor" organisation and application under XDG_CONFIG_HOME.
    return std::make_unique<Preferences>(std::make_unique<QSettings>(
        configHome() + QLatin1String("/Velkor/Velkor.conf"), QSettings::IniFormat));
}

bool VelkorInstance::launch()
{
    m_output.clear();
    m_process.setProcessEnvironment(environment());
    m_process.start(binary(), {});
    return m_process.waitForStarted(5000);
}

bool VelkorInstance::start(int timeoutMs)
{
    if (!launch())
        return false;
    // The key monitor's first word: the key grabbed, or why not.
    static const QRegularExpression verdict(
        QStringLiteral("\\[Velkor\\] (activation key .* grabbed|cannot|the activation key)"));
    const bool ready =
        m_desktop.waitFor([&] { return log().contains(verdict) || !isRunning(); }, timeoutMs);
    return ready && isRunning() && logSaysKeyGrabbed();
}

bool VelkorInstance::logSaysKeyGrabbed()
{
    static const QRegularExpression grabbed(
        QStringLiteral("\\[Velkor\\] activation key .* grabbed"));
    return log().contains(grabbed);
}

bool VelkorInstance::waitForLog(const QString& text, int timeoutMs)
{
    return m_desktop.waitFor([&] { return log().contains(text); }, timeoutMs);
}

bool VelkorInstance::stop()
{
    if (!isRunning())
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(2000);
        return false;
    }
    log();
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

std::optional<int> VelkorInstance::exitCode() const
{
    if (isRunning() || m_process.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return m_process.exitCode();
}

QString VelkorInstance::log()
{
    m_output += m_process.readAll();
    return QString::fromLocal8Bit(m_output);
}

} // namespace velkor::e2e
