// The program itself, as a person starts and stops it.

#include "integration/program_run.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <csignal>
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
    EXPECT_TRUE(outcome.complaints.contains(QStringLiteral("add --wait")));
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
                         file, QStringLiteral("--gates"), QStringLiteral("01A:hall:in"),
                         QStringLiteral("--socket"), directory.filePath(QStringLiteral("club.socket"))});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    const quint64 card = gates.readCard(QStringLiteral("01A"), QStringLiteral("12345678"));
    ASSERT_TRUE(eventually([&] { return gates.reading(card).Fate != sim::TFate::Waiting; }));
    EXPECT_EQ(gates.reading(card).Fate, sim::TFate::Refused);
    program.stop();
    const TOutcome outcome = outcomeOf(program);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(
        outcome.output.contains(QStringLiteral(" info 01A: card (12345678)  refused: unknown card\n")))
        << qPrintable(outcome.output);

    const auto rows = club.passesAfter(0, 10);
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows[0].refusal, host::TRefusal::UnknownCard);
}

/// Gates of a port, without a club's file. Anna may go in at 01A.
class PortRun : public ::testing::Test
{
protected:
    PortRun()
    {
        host::TDatabase books(file);
        const qint64 anna = books.addMember(QStringLiteral("Anna Berg"));
        books.addCard(QStringLiteral("1"), anna);
        books.addMembership(anna, {QDate(2000, 1, 1), QDate(2100, 1, 1), {QStringLiteral("hall")}});
        books.setGate({QStringLiteral("01A"), QStringLiteral("hall"), host::TDirection::In});
        gates.addController(QStringLiteral("01A"));
        gates.Delays.AnswerLimitMs = 3'600'000;
    }

    QStringList arguments() const
    {
        return {QStringLiteral("run"),
                QStringLiteral("--port"),
                pty.path(),
                QStringLiteral("--db"),
                file,
                QStringLiteral("--socket"),
                socket};
    }

    std::unique_ptr<TProgramRun> start()
    {
        auto program = std::make_unique<TProgramRun>(QStringLiteral(TNV5_PROGRAM), arguments());
        EXPECT_TRUE(eventually([&] { return pty.opened(); })) << qPrintable(program->complaints());
        return program;
    }

    bool isOpen(const quint64 card)
    {
        return card != 0 && eventually([&] {
                   const auto passes = host::TDatabase(file).passesAfter(0, 10);
                   return !passes.isEmpty() && passes.last().underWay();
               });
    }

    QTemporaryDir directory;
    QString file = directory.filePath(QStringLiteral("club.sqlite"));
    QString socket = directory.filePath(QStringLiteral("club.socket"));
    sim::TPty pty{QStringLiteral("gates")};
    sim::TClassicLine gates{pty};
};

TEST_F(PortRun, WhatAKilledOneLeftOpenIsAbandoned)
{
    gates.Delays.PassageMs = 3'600'000;
    {
        const auto killed = start();
        ASSERT_TRUE(isOpen(gates.readCard(QStringLiteral("01A"), QStringLiteral("1"))));
        kill(pid_t(killed->pid()), SIGKILL);
        EXPECT_EQ(killed->exitCode(), -1);
    }
    ASSERT_TRUE(eventually([&] { return !pty.opened(); }));
    const auto program = start();
    EXPECT_TRUE(program->says(QStringLiteral(" warning 1 passes were left open by a host that was killed")));
    EXPECT_EQ(host::TDatabase(file).passesAfter(0, 10).at(0).ending, host::TEnding::Abandoned);
    program->stop();
    EXPECT_EQ(program->exitCode(), 0);
}

TEST_F(PortRun, APortThatGoesAwayIsAnOutage)
{
    const auto program = start();
    EXPECT_TRUE(program->says(QStringLiteral(" is open\n")));
    pty.unplug();
    EXPECT_TRUE(program->says(QStringLiteral(" went away (")));
    EXPECT_TRUE(eventually([&] { return host::TDatabase(file).outagesAfter(0, 10).size() == 1; }));
    program->stop();
    EXPECT_EQ(program->exitCode(), 0);
    EXPECT_NE(host::TDatabase(file).outagesAfter(0, 10).at(0).ended, 0);
}

TEST_F(PortRun, IsAskedOverItsSocketAndReadsTheBooksAgain)
{
    const auto program = start();
    const QStringList where = {QStringLiteral("--club"), socket};
    const TOutcome status = run(QStringList({QStringLiteral("status")}) + where);
    EXPECT_EQ(status.exitCode, 0) << qPrintable(status.complaints);
    EXPECT_TRUE(status.output.startsWith(QStringLiteral("club-"))) << qPrintable(status.output);
    EXPECT_TRUE(status.output.contains(QStringLiteral("01A ")));
    EXPECT_FALSE(status.output.contains(QStringLiteral("02A")));
    host::TDatabase(file).setGate({QStringLiteral("02A"), QStringLiteral("hall"), host::TDirection::Out});
    EXPECT_EQ(run(QStringList({QStringLiteral("reload")}) + where).exitCode, 0);
    EXPECT_TRUE(run(QStringList({QStringLiteral("status")}) + where).output.contains(QStringLiteral("02A")));
    program->stop();
    EXPECT_EQ(program->exitCode(), 0);
}

TEST_F(PortRun, WorksWithoutASocket)
{
    socket = QStringLiteral("/proc/no/such.socket");
    const auto program = start();
    EXPECT_TRUE(program->says(QStringLiteral(" warning nobody can ask this club: ")));
    EXPECT_TRUE(isOpen(gates.readCard(QStringLiteral("01A"), QStringLiteral("1"))));
    program->stop();
    EXPECT_EQ(program->exitCode(), 0);
}

TEST_F(PortRun, WaitsForAPortWhenToldTo)
{
    pty.unplug();
    TProgramRun program(QStringLiteral(TNV5_PROGRAM), arguments() + QStringList({QStringLiteral("--wait")}));
    EXPECT_TRUE(program.says(QStringLiteral("it will be opened when that is over")));
    pty.plug();
    EXPECT_TRUE(eventually([&] { return pty.opened(); }));
    program.stop();
    EXPECT_EQ(program.exitCode(), 0);
}

} // namespace
} // namespace tnv5::integration
