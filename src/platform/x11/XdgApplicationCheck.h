// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <glib.h>

namespace velkor::x11 {

// Whether a desktop entry names an application GIO would load: Type is
// Application, it is not Hidden, and the programs its TryExec and Exec name
// are on PATH. Many entries share a program, so each PATH search is
// remembered for the life of the check.
class XdgApplicationCheck final
{
public:
    bool accepts(GKeyFile* entry);

private:
    // An empty or missing key passes; Exec names its program first.
    bool programExists(GKeyFile* entry, const char* key, bool commandLine);

    QHash<QByteArray, bool> m_programs;
};

} // namespace velkor::x11
