// SPDX-License-Identifier: MIT
#include "app/CommandLine.h"

#include <QTest>

using namespace velkor;
using velkor::CommandLine::Stage;

class CommandLineTest : public QObject
{
    Q_OBJECT

    static std::optional<CommandLineAnswer> answer(QStringList arguments, Stage stage)
    {
        arguments.prepend(QStringLiteral("/usr/bin/velkor"));
        return CommandLine::answer(arguments, stage);
    }

private slots:
    void helpAndVersionAnswerAtEitherStage()
    {
        for (const Stage stage : {Stage::beforeQt, Stage::afterQt}) {
            for (const char* asked : {"--help", "-h", "-help"}) {
                const auto help = answer({QString::fromLatin1(asked)}, stage);
                QVERIFY2(help, asked);
                QCOMPARE(help->exitCode, 0);
                QVERIFY(!help->toStandardError);
                QVERIFY(
                    help->text.startsWith(QLatin1String("Usage: velkor [--help | --version]\n")));
                QVERIFY(help->text.contains(QLatin1String("-v, --version")));
            }
            for (const char* asked : {"--version", "-v"}) {
                const auto version = answer({QString::fromLatin1(asked)}, stage);
                QVERIFY2(version, asked);
                QCOMPARE(version->exitCode, 0);
                QCOMPARE(version->text, QStringLiteral("Velkor " VELKOR_VERSION "\n"));
            }
        }
        // Among Qt's options, before Qt has taken them out.
        const auto version =
            answer({QStringLiteral("-display"), QStringLiteral(":1"), QStringLiteral("-session"),
                    QStringLiteral("abc"), QStringLiteral("--version")},
                   Stage::beforeQt);
        QVERIFY(version && version->text.startsWith(QLatin1String("Velkor ")));
    }

    void qtOptionsPassUntilQtHasHadThemAndLeftoversAreRejected()
    {
        QVERIFY(!answer({}, Stage::beforeQt));
        QVERIFY(!answer({}, Stage::afterQt));
        // Qt's own options, and words that are neither h nor v, wait for Qt.
        QVERIFY(!answer({QStringLiteral("-session"), QStringLiteral("1a2b")}, Stage::beforeQt));
        QVERIFY(!answer({QStringLiteral("-hv")}, Stage::beforeQt));
        QVERIFY(!answer({QStringLiteral("--bogus")}, Stage::beforeQt));

        const struct
        {
            QStringList arguments;
            const char* says;
        } leftovers[] = {
            {{QStringLiteral("--bogus")}, "Unknown option 'bogus'."},
            {{QStringLiteral("-hv")}, "Unknown option 'hv'."},
            {{QStringLiteral("file.txt")}, "Unexpected argument 'file.txt'."},
        };
        for (const auto& leftover : leftovers) {
            const auto rejected = answer(leftover.arguments, Stage::afterQt);
            QVERIFY2(rejected, leftover.says);
            QCOMPARE(rejected->exitCode, 2);
            QVERIFY(rejected->toStandardError);
            QCOMPARE(rejected->text, QStringLiteral("velkor: %1 Try 'velkor --help'.\n")
                                         .arg(QLatin1String(leftover.says)));
        }
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLineTest.moc"
