// Paying at a simulated terminal with a library, as a person does it.

#include "integration/program_run.h"
#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

QStringList pay(const QString& terminal, const QStringList& more = {})
{
    return QStringList{"pay", "--terminal", terminal, "--amount", "12.50", "--step", "20"} + more;
}

// The terminal is asked again and again what it shows; on a busy machine a text may have gone in between.
TEST(TerminalProgram, ShowsAPaymentWithTheTextsOfTheTerminal)
{
    TProgramRun run(TNV5_PROGRAM,
                    {"pay", "--terminal", "sim:1", "--amount", "12.50", "--step", "1000", "--trace"});
    EXPECT_EQ(run.exitCode(), 0) << run.complaints().toStdString();
    qsizetype from = 0;
    int shown = 0;
    for (const char* text :
         {"12.50 goes to the terminal", "Починаємо оплату", "terminal: Insert or tap the card",
          "terminal: Enter the PIN", "terminal: Asking the bank",
          "12.50 approved, reference 100001, transaction 1", "Відключення терміналу"}) {
        const qsizetype at = run.output().indexOf(text, from);
        const bool passing = QByteArray(text).startsWith("terminal: ");
        EXPECT_TRUE(at >= 0 || passing) << text << "\nin\n" << run.output().toStdString();
        shown += int(at >= 0 && passing);
        from = std::max(at, from);
    }
    EXPECT_GE(shown, 1);
}

TEST(TerminalProgram, EndsWithTheOutcomeOfEachLibrary)
{
    for (int type = 0; type < 5; ++type) {
        SCOPED_TRACE(type);
        const QString terminal = QStringLiteral("sim:%1").arg(type);
        EXPECT_EQ(TProgramRun(TNV5_PROGRAM, pay(terminal)).exitCode(), 0);
        TProgramRun declined(TNV5_PROGRAM, pay(terminal + ":decline"));
        EXPECT_EQ(declined.exitCode(), 3);
        EXPECT_TRUE(declined.says("12.50 not paid"));
        TProgramRun lost(TNV5_PROGRAM, pay(terminal + ":crash"));
        EXPECT_EQ(lost.exitCode(), 5);
        EXPECT_TRUE(lost.says("look at the terminal before you try again"));
        EXPECT_TRUE(lost.says("the process behind it has ended"));
    }
    EXPECT_EQ(TProgramRun(TNV5_PROGRAM, pay("sim:4:timeout")).exitCode(), 5); // nobody knows
    TProgramRun half(TNV5_PROGRAM, pay("sim:1:unconfirmed"));
    EXPECT_EQ(half.exitCode(), 5) << "the bank has agreed";
    EXPECT_TRUE(half.says("look at the terminal before you try again"));
}

TEST(TerminalProgram, ASignalDoesNotLeaveAPaymentAlone)
{
    TProgramRun run(TNV5_PROGRAM, {"pay", "--terminal", "sim:1", "--amount", "12.50", "--step", "1000"});
    EXPECT_TRUE(run.says("terminal: Insert or tap the card"));
    run.stop();
    EXPECT_TRUE(run.says("The terminal has the payment, and ends it."));
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_TRUE(run.says("12.50 approved"));
    TProgramRun left(TNV5_PROGRAM, {"pay", "--terminal", "sim:1", "--amount", "12.50", "--step", "60000"});
    EXPECT_TRUE(left.says("terminal: Insert or tap the card"));
    left.stop();
    EXPECT_TRUE(left.says("Ctrl-C again leaves this program"));
    left.stop();
    EXPECT_EQ(left.exitCode(), -1) << "ended by the signal";
}

TEST(TerminalProgram, AClosedTerminalDoesNotLeaveAPaymentAlone)
{
    TProgramRun run(TNV5_PROGRAM, {"pay", "--terminal", "sim:1", "--amount", "12.50", "--step", "1000"});
    EXPECT_TRUE(run.says("terminal: Insert or tap the card"));
    run.hangUp();
    EXPECT_TRUE(run.says("The terminal has the payment, and ends it."));
    run.hangUp();
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_TRUE(run.says("12.50 approved"));
}

TEST(TerminalProgram, AnOutcomeThatTheBooksDoNotTakeIsTold)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("club.sqlite"));
    host::TDatabase club{file};
    host::execute(club.connection(), QStringLiteral("CREATE TRIGGER fail BEFORE UPDATE ON payment"
                                                    " WHEN new.outcome = 'approved' BEGIN"
                                                    " SELECT raise(ABORT, 'no payments today'); END"));
    TProgramRun run(TNV5_PROGRAM, pay("sim:1", {"--db", file}));
    EXPECT_EQ(run.exitCode(), 6);
    EXPECT_TRUE(run.says("12.50 approved"));
    EXPECT_TRUE(run.says("no payments today"));
    EXPECT_EQ(club.paymentsAfter(0, 100).last().outcome, host::TOutcome::UnderWay);
}

TEST(TerminalProgram, APaymentIsInTheBooksFromBeforeItIsSent)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("club.sqlite"));
    host::TDatabase club{file};
    const auto row = [&] { return club.paymentsAfter(0, 100).last(); };
    const QStringList books{"--db", file};
    EXPECT_EQ(TProgramRun(TNV5_PROGRAM, pay("sim:1", books)).exitCode(), 0);
    EXPECT_EQ(row().outcome, host::TOutcome::Approved);
    EXPECT_EQ(row().cents, 1'250);
    EXPECT_EQ(row().reason, "reference 100001, transaction 1");
    EXPECT_EQ(TProgramRun(TNV5_PROGRAM, pay("sim:1:decline", books)).exitCode(), 3);
    EXPECT_EQ(row().outcome, host::TOutcome::Declined);
    EXPECT_EQ(TProgramRun(TNV5_PROGRAM, pay("sim:1:crash", books)).exitCode(), 5);
    EXPECT_EQ(row().outcome, host::TOutcome::Unknown);
    EXPECT_EQ(club.paymentsAfter(0, 100).size(), 3);
    TProgramRun left(TNV5_PROGRAM,
                     {"pay", "--terminal", "sim:1", "--amount", "9", "--step", "60000", "--db", file});
    EXPECT_TRUE(left.says("terminal: Insert or tap the card"));
    EXPECT_EQ(row().cents, 900);
    EXPECT_EQ(row().outcome, host::TOutcome::UnderWay);
    left.stop();
    EXPECT_TRUE(left.says("Ctrl-C again leaves this program"));
    left.stop();
    EXPECT_EQ(left.exitCode(), -1);
    TProgramRun nowhere(TNV5_PROGRAM, pay("sim:1", {"--db", folder.filePath("none.sqlite")}));
    EXPECT_EQ(nowhere.exitCode(), 1);
    EXPECT_FALSE(nowhere.output().contains("goes to the terminal"));
}

TEST(TerminalProgram, AClosedOutputDoesNotEndAPayment)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("club.sqlite"));
    host::TDatabase club{file};
    TProgramRun run("/bin/sh",
                    {"-c", "\"$0\" pay --terminal sim:1 --amount 12.50 --step 20 --db \"$1\" | head -1",
                     TNV5_PROGRAM, file});
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_EQ(run.output(), "12.50 goes to the terminal\n");
    EXPECT_EQ(club.paymentsAfter(0, 100).last().outcome, host::TOutcome::Approved);
}

TEST(TerminalProgram, SaysWhatCannotBeDone)
{
    for (const char* name : {"5", "sim", "sim:", "sim:7", "sim:1:fly", "1:decline", "x", "sim:1:decline:2"}) {
        TProgramRun run(TNV5_PROGRAM, pay(name));
        EXPECT_EQ(run.exitCode(), 1) << name;
        EXPECT_TRUE(run.says("is no terminal")) << name;
    }
    TProgramRun nothing(TNV5_PROGRAM, {"pay", "--amount", "1"});
    EXPECT_EQ(nothing.exitCode(), 1);
    EXPECT_TRUE(nothing.says("Which terminal?"));
    TProgramRun both(TNV5_PROGRAM, pay("sim:1", {"--port", "x"}));
    EXPECT_NE(both.exitCode(), 0);
}

} // namespace
} // namespace tnv5::integration
