// The program itself, as a person starts and stops it.

#include "integration/program_run.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

struct TOutcome
{
    int exitCode = -1;
    QString output;
    QString complaints;
};

TOutcome outcomeOf(TProgramRun& program)
{
    const int exitCode = program.exitCode();
    return {exitCode, program.output(), program.complaints()};
}

TOutcome run(const QStringList& arguments)
{
    TProgramRun program(QStringLiteral(TNV5_PROGRAM), arguments);
    return outcomeOf(program);
}

TEST(Program, VersionAndHelp)
{
    EXPECT_TRUE(run({QStringLiteral("--version")}).output.startsWith(QStringLiteral("tnv5 ")));
    const TOutcome help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* command : {"demo", "ports", "run"}) {
        EXPECT_TRUE(help.output.contains(QString::fromLatin1(command))) << command;
    }
    EXPECT_NE(run({}).exitCode, 0);
}

TEST(Program, ListsPorts)
{
    EXPECT_EQ(run({QStringLiteral("ports")}).exitCode, 0);
}

TEST(Program, APortThatIsNotThereIsExplained)
{
    const QTemporaryDir directory;
    const host::TDatabase made(directory.filePath(QStringLiteral("club.sqlite")));
    const TOutcome outcome =
        run({QStringLiteral("run"), QStringLiteral("--port"), QStringLiteral("/dev/no-such-port"),
             QStringLiteral("--db"), directory.filePath(QStringLiteral("club.sqlite"))});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.complaints.contains(QStringLiteral("There is no device /dev/no-such-port.")))
        << qPrintable(outcome.complaints);
}

TEST(Program, AGateThatIsNoneIsExplained)
{
    const QTemporaryDir directory;
    const host::TDatabase made(directory.filePath(QStringLiteral("club.sqlite")));
    const TOutcome outcome = run({QStringLiteral("run"), QStringLiteral("--port"), QStringLiteral("x"),
                                  QStringLiteral("--db"), directory.filePath(QStringLiteral("club.sqlite")),
                                  QStringLiteral("--gates"), QStringLiteral("up")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.complaints.contains(QStringLiteral("\"up\" is no gate")));
}

TEST(Program, RunsGatesUntilItIsStopped)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath(QStringLiteral("club.sqlite"));
    host::TDatabase club(file);
    sim::TPty pty(QStringLiteral("gates"));
    sim::TClassicLine gates(pty);
    gates.addController(QStringLiteral("01A"));
    gates.Delays.AnswerLimitMs = 3'600'000; // a slow program is not a silent one
    TProgramRun program(QStringLiteral(TNV5_PROGRAM),
                        {QStringLiteral("run"), QStringLiteral("--port"), pty.path(), QStringLiteral("--db"),
                         file, QStringLiteral("--gates"), QStringLiteral("01A:hall:in")});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    const quint64 card = gates.readCard(QStringLiteral("01A"), QStringLiteral("12345678"));
    ASSERT_TRUE(eventually([&] { return gates.reading(card).Fate != sim::TFate::Waiting; }));
    EXPECT_EQ(gates.reading(card).Fate, sim::TFate::Refused);
    program.stop();
    const TOutcome outcome = outcomeOf(program);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.contains(QStringLiteral("01A  card (12345678)  refused: unknown card")))
        << qPrintable(outcome.output);

    const auto rows = club.passesAfter(0, 10);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].refusal, host::TRefusal::UnknownCard);
}

} // namespace
} // namespace tnv5::integration
