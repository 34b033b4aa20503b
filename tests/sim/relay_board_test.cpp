// Relay boards: what they keep, what they report by themselves, and what becomes of it without power.

#include "sim/board_bus.h"
#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace tnv5::sim {
namespace {

const QString k000A = QStringLiteral("000A");
const QString k000B = QStringLiteral("000B");

class RelayBoards : public ::testing::Test
{
protected:
    RelayBoards()
    {
        bus.addPair(QStringLiteral("000"));
        bus.OnRelay = [this](const QString& address, int relay, bool on) {
            seen << QStringLiteral("%1 %2 %3").arg(address).arg(relay).arg(on ? 1 : 0);
        };
    }

    void command(const QByteArray& line)
    {
        stream.feed(line + boardChecksum(line));
        clock.advance(100);
    }

    /// What a board answers to "HW".
    QByteArray relaysOf(const QByteArray& address)
    {
        stream.takeWrites();
        command('$' + address + "HW");
        const QByteArray answer = stream.takeWritten();
        const qsizetype at = answer.indexOf("GR=") + 3;
        return answer.mid(at, answer.indexOf('/', at) - at);
    }

    testkit::TManualClock clock; // noon on 2026-01-05
    TMemoryStream stream;
    TBoardBus bus{stream};
    QStringList seen;
};

TEST_F(RelayBoards, EveryRelayOfBothSidesIsToldByHardware)
{
    EXPECT_EQ(relaysOf("000A"), "NN");
    EXPECT_EQ(relaysOf("000B"), "NNN");
    for (const char* const line :
         {"$000ARL100N", "$000ARL200N", "$000BRL100N", "$000BRL200N", "$000BRL300N"}) {
        command(line);
    }
    EXPECT_EQ(relaysOf("000A"), "YY");
    EXPECT_EQ(relaysOf("000B"), "YYY");
    command("$000ARL100N"); // the same command switches off
    command("$000BRL200N");
    EXPECT_EQ(relaysOf("000A"), "NY");
    EXPECT_EQ(relaysOf("000B"), "YNY");
    EXPECT_EQ(bus.counts(k000A).RelayOrders, 3);
    EXPECT_EQ(bus.counts(k000B).RelayOrders, 4);
}

TEST_F(RelayBoards, ABoardThatDoesNotReportIsSilentAboutItsRelays)
{
    EXPECT_TRUE(bus.switchRelay(k000A, 1, true, 5'000));
    command("$000ARL200N");
    clock.advance(10'000);
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    EXPECT_EQ(relaysOf("000A"), "NY");
}

TEST_F(RelayBoards, WhatIsSwitchedAtTheBoardIsReportedWithItsTime)
{
    bus.setReporting(k000A);
    EXPECT_TRUE(bus.switchRelay(k000A, 2, true, 90'000));
    EXPECT_EQ(stream.takeWritten(), "$000ASS2N05.01.2026 12:01:30\r")
        << "no check characters behind the time";
    EXPECT_TRUE(bus.relayOn(k000A, 2));
    clock.advance(89'999);
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    clock.advance(1);
    EXPECT_EQ(stream.takeWritten(), "$000ASS2F05.01.2026 12:01:30\r");
    EXPECT_FALSE(bus.relayOn(k000A, 2));
    EXPECT_EQ(bus.counts(k000A).RelayReports, 2);
}

TEST_F(RelayBoards, WithoutAnEndTheTimeIsTheMoment)
{
    bus.setReporting(k000B);
    EXPECT_TRUE(bus.switchRelay(k000B, 3, true));
    EXPECT_EQ(stream.takeWritten(), "$000BSS3N05.01.2026 12:00:00\r");
    clock.advance(3'600'000);
    EXPECT_TRUE(bus.relayOn(k000B, 3));
    EXPECT_TRUE(bus.switchRelay(k000B, 3, false, 5'000)) << "off has no end";
    EXPECT_EQ(stream.takeWritten(), "$000BSS3F05.01.2026 13:00:00\r");
    clock.advance(60'000);
    EXPECT_EQ(stream.takeWritten(), QByteArray());
}

TEST_F(RelayBoards, CommandsAreReportedToo)
{
    bus.setReporting(k000A);
    command("$000ARL100N");
    EXPECT_EQ(stream.takeWritten(), "$000ASS1N05.01.2026 12:00:00\r");
    command("$000ARL100N");
    EXPECT_EQ(stream.takeWritten(), "$000ASS1F05.01.2026 12:00:00\r");
    bus.setReporting(k000A, false);
    command("$000ARL100N");
    EXPECT_EQ(stream.takeWritten(), QByteArray());
}

TEST_F(RelayBoards, OnlyWhatChangesIsReported)
{
    bus.setReporting(k000A);
    bus.switchRelay(k000A, 1, false);
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    bus.switchRelay(k000A, 1, true);
    stream.takeWrites();
    bus.switchRelay(k000A, 1, true);
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    bus.switchRelay(k000A, 1, true, 60'000); // now it has an end
    EXPECT_EQ(stream.takeWritten(), "$000ASS1N05.01.2026 12:01:00\r");
}

TEST_F(RelayBoards, ACommandEndsTheTimeSetAtTheBoard)
{
    bus.switchRelay(k000A, 1, true, 5'000);
    command("$000ARL100N"); // off
    command("$000ARL100N"); // on, until told otherwise
    clock.advance(60'000);
    EXPECT_TRUE(bus.relayOn(k000A, 1));
}

TEST_F(RelayBoards, TimesGoOnAcrossMidnight)
{
    clock.jumpTo(testkit::TManualClock::at(23, 59, 30));
    bus.setReporting(k000A);
    bus.switchRelay(k000A, 1, true, 60'000);
    EXPECT_EQ(stream.takeWritten(), "$000ASS1N06.01.2026 00:00:30\r");
    clock.advance(60'000);
    EXPECT_EQ(stream.takeWritten(), "$000ASS1F06.01.2026 00:00:30\r");
}

TEST_F(RelayBoards, NoSuchBoardOrRelay)
{
    EXPECT_FALSE(bus.switchRelay(QStringLiteral("777A"), 1, true));
    EXPECT_FALSE(bus.switchRelay(k000A, 0, true));
    EXPECT_FALSE(bus.switchRelay(k000A, 3, true)) << "side A has two";
    EXPECT_TRUE(bus.switchRelay(k000B, 3, true));
    EXPECT_FALSE(bus.switchRelay(k000B, 4, true));
    bus.setReporting(QStringLiteral("777A"));
    bus.restart(QStringLiteral("777A"));
}

TEST_F(RelayBoards, ADeadBoardKeepsItsRelaysAndTellsNothing)
{
    bus.setReporting(k000A);
    bus.switchRelay(k000A, 1, true);
    stream.takeWrites();
    bus.setFaults(k000A, {.Dead = true});
    EXPECT_FALSE(bus.switchRelay(k000A, 1, false));
    command("$000ARL100N");
    command("$000AHW");
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    EXPECT_TRUE(bus.relayOn(k000A, 1));
    bus.setFaults(k000A, {});
    EXPECT_EQ(relaysOf("000A"), "YN");
}

TEST_F(RelayBoards, ASilentBoardDoesNotReport)
{
    bus.setReporting(k000A);
    bus.setFaults(k000A, {.Silent = true});
    EXPECT_TRUE(bus.switchRelay(k000A, 1, true));
    EXPECT_EQ(stream.takeWritten(), QByteArray());
    EXPECT_EQ(bus.counts(k000A).RelayReports, 0);
}

TEST_F(RelayBoards, WithoutPowerTheRelaysFallOff)
{
    bus.setReporting(k000A);
    bus.switchRelay(k000A, 1, true, 5'000);
    bus.switchRelay(k000A, 2, true);
    bus.switchRelay(k000B, 1, true);
    stream.takeWrites();
    seen.clear();
    bus.restart(k000A);
    EXPECT_EQ(seen, QStringList({QStringLiteral("000A 1 0"), QStringLiteral("000A 2 0")}));
    clock.advance(10'000);
    EXPECT_EQ(stream.takeWritten(), QByteArray()) << "nobody is told, and the time is forgotten";
    EXPECT_EQ(relaysOf("000A"), "NN");
    EXPECT_EQ(relaysOf("000B"), "YNN");
}

TEST(RelayBoardsLife, HookMayDestroyTheBus)
{
    const testkit::TManualClock clock;
    TMemoryStream stream;
    for (const bool byRestart : {false, true}) {
        auto bus = std::make_unique<TBoardBus>(stream);
        bus->addPair(QStringLiteral("000"));
        bus->setReporting(k000A);
        bus->switchRelay(k000A, 1, true);
        bus->switchRelay(k000A, 2, true);
        bus->OnRelay = [&](const QString&, int, bool) { bus.reset(); };
        if (byRestart) {
            bus->restart(k000A);
        } else {
            bus->switchRelay(k000A, 1, false);
        }
        EXPECT_EQ(bus, nullptr);
    }
}

} // namespace
} // namespace tnv5::sim
