// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemServices.h"

namespace velkor::x11 {

// Launch at login through the XDG autostart folder: an entry
// $XDG_CONFIG_HOME/autostart/velkor.desktop (~/.config when the variable is
// unset) that desktop sessions start at login.
class XdgAutostartLoginItem final : public LoginItem
{
public:
    // The entry starts the running executable, or the installed one when
    // that is the same file; the config home defaults as above.
    explicit XdgAutostartLoginItem(QString runningExecutable, QString configHome = QString(),
                                   QString installedExecutable = defaultInstalledExecutable());

    Status status() override;
    bool registerItem(QString* error) override;
    bool unregisterItem(QString* error) override;

    QString entryPath() const;

    // $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
    static QString defaultConfigHome();

    // The Exec= value that starts path, quoted as desktop entries require.
    static QString execLine(const QString& path);

    // Where this build installs velkor (bin/velkor under its install prefix).
    static QString defaultInstalledExecutable();

private:
    QString m_executable;
    QString m_configHome;
};

} // namespace velkor::x11
