// Paying by card from the command line, as a person does it.

#include "sim/bank_terminal.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/host/books/database.h"

#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

class TRun
{
public:
    explicit TRun(const QStringList& arguments)
    {
        FProgram.setProcessChannelMode(QProcess::MergedChannels);
        FProgram.start(QStringLiteral(TNV5_PROGRAM), arguments);
    }
    ~TRun()
    {
        FProgram.kill();
        FProgram.waitForFinished();
    }
    TRun(const TRun&) = delete;
    TRun& operator=(const TRun&) = delete;

    bool says(const QString& text)
    {
        return eventually([&] { return output().contains(text); });
    }
    int exitCode()
    {
        return eventually([&] { return FProgram.state() == QProcess::NotRunning; }) ? FProgram.exitCode()
                                                                                    : -1;
    }
    QString output()
    {
        FOutput += QString::fromUtf8(FProgram.readAll());
        return FOutput;
    }
    void stop() { FProgram.terminate(); }
    void hangUp()
    {
        ASSERT_GT(FProgram.processId(), 0) << "it has ended"; // 0 would be the test itself
        EXPECT_EQ(kill(pid_t(FProgram.processId()), SIGHUP), 0);
    }

private:
    QProcess FProgram;
    QString FOutput;
};

class BankProgram : public ::testing::Test
{
protected:
    BankProgram()
    {
        terminal.CardMs = terminal.BankMs = 100;
        terminal.AckMs = 8'000; // a busy machine is no bad line
        terminal.EndMs = 300;
    }

    QStringList pay(const QStringList& more = {})
    {
        return QStringList({QStringLiteral("pay"), QStringLiteral("--port"), pty.path(),
                            QStringLiteral("--type"), QStringLiteral("2"), QStringLiteral("--amount"),
                            QStringLiteral("12.50"), QStringLiteral("--db"), file}) +
               more;
    }

    /// Runs one payment to its end. @return the exit code
    int play(const sim::TBankScenario& scenario, const QStringList& more = {})
    {
        TRun run(pay(more));
        EXPECT_TRUE(run.says("waiting until the terminal asks"));
        EXPECT_TRUE(terminal.begin(scenario));
        const int code = run.exitCode();
        said = run.output();
        eventually([this] { return terminal.idle(); });
        return code;
    }

    /// The customer begins, and the amount goes to the terminal.
    void sendAmount(TRun& run)
    {
        EXPECT_TRUE(run.says("waiting until"));
        terminal.begin({});
        EXPECT_TRUE(run.says("goes to the terminal"));
    }

    QString outcome() const
    {
        host::TDatabase club(file);
        const QList<host::TPayment> rows = club.paymentsAfter(0, 100);
        return rows.isEmpty() ? QStringLiteral("none") : toText(rows.last().outcome);
    }

    QTemporaryDir directory;
    QString file = directory.filePath(QStringLiteral("club.sqlite"));
    host::TDatabase made{file};
    sim::TPty pty{QStringLiteral("bank")};
    sim::TSimulatedBankTerminal terminal{pty, 2};
    QString said;
};

TEST_F(BankProgram, ShowsAnApprovedPaymentStepByStep)
{
    EXPECT_EQ(play({}, {QStringLiteral("--trace")}), 0);
    const QStringList steps = {QStringLiteral("12.50: waiting"),
                               QStringLiteral("the amount 12.50 goes to the terminal"),
                               QStringLiteral("[4] Payment amount has been sent 1250"),
                               QStringLiteral("card 411111******1111 VISA"),
                               QStringLiteral("the bank answers 00"),
                               QStringLiteral("card payment  12.50  411111******1111 VISA  approved: 00")};
    qsizetype from = 0;
    for (const QString& step : steps) {
        from = said.indexOf(step, from);
        ASSERT_GE(from, 0) << step.toStdString() << "\nin\n" << said.toStdString();
    }
    EXPECT_FALSE(said.contains("4111111111111111"));
    EXPECT_EQ(outcome(), "approved");
    EXPECT_EQ(terminal.book().back().Amount.Amount, 1'250);
}

TEST_F(BankProgram, EndsWithTheOutcome)
{
    sim::TBankScenario scenario;
    scenario.Code = "51";
    scenario.BankApproves = false;
    EXPECT_EQ(play(scenario), 3) << said.toStdString();
    EXPECT_EQ(outcome(), "declined");
    scenario = {};
    scenario.CustomerLeaves = true;
    EXPECT_EQ(play(scenario), 4) << said.toStdString();
    EXPECT_EQ(outcome(), "cancelled");
    scenario = {};
    scenario.Code = "Z9";
    EXPECT_EQ(play(scenario), 5) << said.toStdString();
    EXPECT_EQ(outcome(), "unknown");
    EXPECT_TRUE(said.contains("look at the terminal"));
    scenario = {};
    scenario.Code = "77";
    EXPECT_EQ(play(scenario, {"--ok", "77;"}), 0) << said.toStdString();
    EXPECT_EQ(play(scenario, {"--error", "77;"}), 3) << said.toStdString();
}

TEST_F(BankProgram, ALostLineIsUnknown)
{
    terminal.CardMs = 60'000;
    TRun run(pay());
    sendAmount(run);
    pty.unplug();
    EXPECT_EQ(run.exitCode(), 5) << run.output().toStdString();
    EXPECT_EQ(outcome(), "unknown");
}

TEST_F(BankProgram, CtrlCBeforeTheAmountTakesNothing)
{
    TRun run(pay());
    EXPECT_TRUE(run.says("waiting until"));
    run.stop();
    EXPECT_EQ(run.exitCode(), 130);
    EXPECT_EQ(outcome(), "none");
}

TEST_F(BankProgram, CtrlCAfterTheAmountRefusesTheCard)
{
    terminal.CardMs = 1'500;
    TRun run(pay());
    sendAmount(run);
    run.stop();
    EXPECT_EQ(run.exitCode(), 4) << run.output().toStdString();
    EXPECT_EQ(outcome(), "cancelled");
}

TEST_F(BankProgram, AClosedTerminalIsACtrlC)
{
    {
        TRun run(pay());
        EXPECT_TRUE(run.says("waiting until"));
        run.hangUp();
        EXPECT_EQ(run.exitCode(), 130);
        EXPECT_EQ(outcome(), "none");
    }
    terminal.CardMs = 1'500;
    TRun run(pay());
    sendAmount(run);
    run.hangUp();
    EXPECT_EQ(run.exitCode(), 4) << run.output().toStdString();
    EXPECT_EQ(outcome(), "cancelled");
}

TEST_F(BankProgram, AnOutcomeThatTheBooksDoNotTakeIsTold)
{
    host::execute(made.connection(), QStringLiteral("CREATE TRIGGER fail BEFORE UPDATE ON payment"
                                                    " WHEN new.outcome = 'approved' BEGIN"
                                                    " SELECT raise(ABORT, 'no payments today'); END"));
    EXPECT_EQ(play({}), 6) << said.toStdString();
    EXPECT_TRUE(said.contains("  approved: 00")) << said.toStdString();
    EXPECT_TRUE(said.contains("no payments today"));
    EXPECT_EQ(outcome(), "unknown") << "as it was written before the acknowledgement";
}

TEST_F(BankProgram, APaymentThatAKilledProgramLeftIsUnknown)
{
    terminal.CardMs = 60'000;
    {
        TRun run(pay());
        sendAmount(run);
    }
    EXPECT_EQ(outcome(), "");
    terminal.restart();
    terminal.CardMs = 100;
    TRun run(pay());
    EXPECT_TRUE(run.says("unknown: the program ended meanwhile"));
    EXPECT_TRUE(run.says("waiting until"));
    run.stop();
    EXPECT_EQ(run.exitCode(), 130);
}

TEST_F(BankProgram, WhatCannotBeDoneIsSaid)
{
    for (const char* amount : {"0", "-1", "1.234", "abc"}) {
        TRun run({QStringLiteral("pay"), QStringLiteral("--port"), pty.path(), QStringLiteral("--type"),
                  QStringLiteral("2"), QStringLiteral("--amount=") + QString::fromLatin1(amount)});
        EXPECT_EQ(run.exitCode(), 1) << amount;
        EXPECT_TRUE(run.output().contains("is no amount")) << run.output().toStdString();
    }
    TRun run({QStringLiteral("pay"), QStringLiteral("--port"), QStringLiteral("/no/such/port"),
              QStringLiteral("--type"), QStringLiteral("1"), QStringLiteral("--amount"),
              QStringLiteral("1")});
    EXPECT_EQ(run.exitCode(), 1) << run.output().toStdString();
    EXPECT_TRUE(run.output().contains("/no/such/port"));
}

} // namespace
} // namespace tnv5::integration
