// SPDX-License-Identifier: MIT
#include "app/CommandLine.h"

#include <QCommandLineParser>

namespace velkor::CommandLine {

namespace {

const char* const HelpText =
    "Usage: velkor [--help | --version]\n"
    "\n"
    "Velkor switches between apps and windows from the keyboard: hold the\n"
    "activation key and press the first letter of an app's name. It runs in\n"
    "the background; its settings open from its tray icon or when it is started\n"
    "a second time.\n"
    "\n"
    "  -h, --help     Show this help and exit.\n"
    "  -v, --version  Show the version and exit.\n";

} // namespace

std::optional<CommandLineAnswer> answer(const QStringList& arguments, Stage stage)
{
    QCommandLineParser parser;
    // Qt's options are single-dash words; read them as one option each
    // rather than as a cluster of letters that might contain h or v.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOptions({help, version});
    const bool understood = parser.parse(arguments);

    if (parser.isSet(help))
        return CommandLineAnswer{0, QString::fromLatin1(HelpText)};
    if (parser.isSet(version))
        return CommandLineAnswer{0,
                                 QStringLiteral("Velkor %1\n").arg(QStringLiteral(VELKOR_VERSION))};
    if (stage == Stage::beforeQt)
        return std::nullopt;

    QString mistake;
    if (!understood)
        mistake = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        mistake =
            QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first());
    if (mistake.isEmpty())
        return std::nullopt;
    return CommandLineAnswer{2, QStringLiteral("velkor: %1 Try 'velkor --help'.\n").arg(mistake),
                             true};
}

} // namespace velkor::CommandLine
