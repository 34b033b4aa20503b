// Relays from the command line, as a person switches them.

#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/text_printers.h"
#include "support/wait.h"

#include <QProcess>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

const QString k012A = QStringLiteral("012A");
const QString k012B = QStringLiteral("012B");

class RelayProgram : public ::testing::Test
{
protected:
    RelayProgram() { bus.addPair(QStringLiteral("012"), 20); }

    /// Runs "tnv5 relay" with these words and keeps what it said.
    /// @return exit code
    int run(const QString& words)
    {
        QProcess program;
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(TNV5_PROGRAM),
                      QStringList({QStringLiteral("relay"), QStringLiteral("--port"), pty.path(),
                                   QStringLiteral("--pair"), QStringLiteral("012")}) +
                          words.split(u' ', Qt::SkipEmptyParts));
        const bool ended = eventually([&] { return program.state() == QProcess::NotRunning; });
        output = QString::fromUtf8(program.readAll());
        return ended ? program.exitCode() : -1;
    }

    sim::TPty pty{QStringLiteral("relays")};
    sim::TBoardBus bus{pty};
    QString output;
};

TEST_F(RelayProgram, ShowsAllRelaysOfThePair)
{
    bus.switchRelay(k012A, 2, true);
    bus.switchRelay(k012B, 3, true);
    EXPECT_EQ(run(QString()), 0);
    QStringList lines = output.split(u'\n', Qt::SkipEmptyParts);
    lines.sort();
    EXPECT_EQ(lines, QStringList({QStringLiteral("relay 1 (board 012A) is off"),
                                  QStringLiteral("relay 2 (board 012A) is on"),
                                  QStringLiteral("relay 3 (board 012B) is off"),
                                  QStringLiteral("relay 4 (board 012B) is off"),
                                  QStringLiteral("relay 5 (board 012B) is on")}));
    EXPECT_EQ(run(QStringLiteral("show --relay 5")), 0);
    EXPECT_EQ(output, QStringLiteral("relay 5 (board 012B) is on\n"));
}

TEST_F(RelayProgram, SwitchesOnOffAndOver)
{
    EXPECT_EQ(run(QStringLiteral("on --relay 4")), 0);
    EXPECT_EQ(output, QStringLiteral("relay 4 (board 012B) is on\n"));
    EXPECT_TRUE(bus.relayOn(k012B, 2));
    EXPECT_EQ(run(QStringLiteral("on --relay 4")), 0);
    EXPECT_TRUE(bus.relayOn(k012B, 2)) << "it is on already, and the command would switch it off";
    EXPECT_EQ(run(QStringLiteral("toggle --relay 4")), 0);
    EXPECT_EQ(output, QStringLiteral("relay 4 (board 012B) is off\n"));
    EXPECT_FALSE(bus.relayOn(k012B, 2));
    EXPECT_EQ(run(QStringLiteral("toggle --relay 1")), 0);
    EXPECT_TRUE(bus.relayOn(k012A, 1));
    EXPECT_EQ(run(QStringLiteral("off --relay 1")), 0);
    EXPECT_EQ(run(QStringLiteral("off --relay 1")), 0);
    EXPECT_FALSE(bus.relayOn(k012A, 1));
    EXPECT_EQ(bus.counts(k012A).RelayOrders, 2);
    EXPECT_EQ(bus.counts(k012B).RelayOrders, 2);
}

TEST_F(RelayProgram, ABusyBusDoesNotConfuseIt)
{
    bus.addPair(QStringLiteral("013"));
    bus.setPingInterval(200);
    bus.setReporting(k012A);
    EXPECT_EQ(run(QStringLiteral("on --relay 2")), 0);
    EXPECT_TRUE(bus.relayOn(k012A, 2));
    EXPECT_EQ(bus.counts(k012A).RelayOrders, 1);
}

TEST_F(RelayProgram, SaysWhichBoardDoesNotAnswer)
{
    bus.setFaults(k012B, {.Dead = true});
    EXPECT_EQ(run(QString()), 1);
    EXPECT_TRUE(output.contains(QStringLiteral("relay 1 (board 012A) is off"))) << qPrintable(output);
    EXPECT_TRUE(output.contains(QStringLiteral("Board 012B does not answer."))) << qPrintable(output);
    EXPECT_EQ(run(QStringLiteral("on --relay 3")), 1);
    EXPECT_EQ(bus.counts(k012B).RelayOrders, 0) << "no command into the dark";
}

TEST_F(RelayProgram, SaysWhenTheRelayStaysAsItWas)
{
    bus.OnRelay = [this](const QString& address, int relay, bool on) {
        if (on) {
            bus.switchRelay(address, relay, false); // somebody holds it off
        }
    };
    EXPECT_EQ(run(QStringLiteral("on --relay 1")), 1);
    EXPECT_TRUE(output.contains(QStringLiteral("got the command"))) << qPrintable(output);
    EXPECT_EQ(bus.counts(k012A).RelayOrders, 1) << "given once";
}

TEST_F(RelayProgram, WrongWords)
{
    EXPECT_EQ(run(QStringLiteral("on")), 1);
    EXPECT_TRUE(output.contains(QStringLiteral("Which relay?")));
    EXPECT_NE(run(QStringLiteral("on --relay 6")), 0);
    EXPECT_NE(run(QStringLiteral("blink --relay 1")), 0);
    EXPECT_NE(run(QStringLiteral("on --relay 1 --pair 0123")), 0);
}

} // namespace
} // namespace tnv5::integration
