// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <memory>
#include <optional>

namespace velkor {
class Preferences;
}

namespace velkor::e2e {

class XDesktop;

// The velkor program on a test desktop, with a home, config and data folder
// of its own, so that nothing of the user's settings or desktop entries
// leaks in, and so that a second run can see what the first one stored.
class VelkorInstance final
{
public:
    // home: the folder to run in; by default one inside the desktop's scratch.
    explicit VelkorInstance(XDesktop& desktop, const QString& home = QString());
    ~VelkorInstance();

    // The program under test: the build's own, or the one VELKOR_TEST_BINARY
    // names (as when CI tests the installed package).
    static QString binary();

    QString configHome() const { return m_home + QLatin1String("/config"); }
    QString dataHome() const { return m_home + QLatin1String("/data"); }
    QProcessEnvironment environment() const;
    // A variable the next start adds to that environment.
    void setEnvironment(const QString& name, const QString& value) { m_extra.insert(name, value); }

    // Writes applications/<id>.desktop under the data folder.
    void writeDesktopEntry(const QString& id, const QString& name, const QString& exec,
                           const QString& startupWmClass = QString());

    // The settings the program reads at its next start, through the same
    // store it uses.
    std::unique_ptr<Preferences> preferences() const;

    // Starts it and waits for the key monitor's verdict; true once the
    // activation key is grabbed. The first-start notice has been seen
    // already, unless the store was told otherwise.
    bool start(int timeoutMs = 10000);
    // Starts it without waiting for anything but the exec, for callers that
    // watch the start-up themselves (the start-up benchmark).
    bool launch();
    // SIGTERM and wait; true when it exited on its own with status 0.
    bool stop();
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    // The status it exited with by itself; absent while it runs or after a crash.
    std::optional<int> exitCode() const;
    qint64 pid() const { return m_process.processId(); }

    // Everything it wrote to stdout and stderr so far.
    QString log();
    // Waits until the log holds text.
    bool waitForLog(const QString& text, int timeoutMs = 10000);
    // Whether the log says the activation key was grabbed.
    bool logSaysKeyGrabbed();

private:
    XDesktop& m_desktop;
    QString m_home;
    QProcess m_process;
    QByteArray m_output;
    QProcessEnvironment m_extra;
};

} // namespace velkor::e2e
