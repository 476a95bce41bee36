// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace velkor {

// What the command line asks for when it asks for more than running.
struct CommandLineAnswer
{
    int exitCode = 0;
    QString text; // ends with a newline
    bool toStandardError = false;
};

// Velkor takes --help (-h) and --version (-v), and nothing else.
namespace CommandLine {

// Before the application object exists the arguments still hold Qt's own
// options (-display, -session and the like), which only Qt can tell apart:
// beforeQt answers --help and --version and lets everything else through,
// so that both work without a display; afterQt also rejects what Qt has
// left behind.
enum class Stage
{
    beforeQt,
    afterQt
};

// The text to print and the status to exit with, or nothing to start Velkor.
// arguments[0] is the program.
std::optional<CommandLineAnswer> answer(const QStringList& arguments, Stage stage);

} // namespace CommandLine
} // namespace velkor
