#include "sim/board_bus.h"
#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>

namespace tnv5::sim {

namespace {

QByteArray checked(const QByteArray& line)
{
    return line + boardChecksum(line);
}

QByteArray said(const QByteArray& line)
{
    return checked(line) + '\r';
}

class BoardBus : public ::testing::Test
{
protected:
    BoardBus()
    {
        bus.addPair(QStringLiteral("000"), 20, 0);
        bus.addBoard(QStringLiteral("001T"), 16);
    }

    void hear(const QByteArray& bytes)
    {
        stream.feed(bytes);
        clock.advance(100);
    }

    void command(const QByteArray& line) { hear(checked(line)); }

    testkit::TManualClock clock;
    TMemoryStream stream;
    TBoardBus bus{stream};
};

const QString k000A = QStringLiteral("000A");
const QString k000B = QStringLiteral("000B");
const QString k001T = QStringLiteral("001T");

TEST(BoardChecksum, KnownValues)
{
    EXPECT_EQ(boardChecksum("123456789"), "F7");
    EXPECT_EQ(boardChecksum(""), "FF");
}

TEST_F(BoardBus, AddressesAreFourCapitalsAndDigitsAndTakenOnce)
{
    EXPECT_FALSE(bus.addBoard(k000A));
    EXPECT_FALSE(bus.addPair(QStringLiteral("000")));
    EXPECT_FALSE(bus.addBoard(QStringLiteral("00A")));
    EXPECT_FALSE(bus.addBoard(QStringLiteral("00-A")));
    EXPECT_EQ(bus.addresses(), QStringList({k000A, k000B, k001T}));
}

TEST_F(BoardBus, EveryBoardPingsOnceInAnInterval)
{
    bus.setPingInterval(3'000);
    clock.advance(3'000);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("$000APING"), said("$000BPING"), said("$001TPING")}));
    clock.advance(30'000);
    EXPECT_EQ(stream.takeWrites().size(), 30);
    EXPECT_EQ(bus.counts(k000B).Pings, 11);
    bus.setPingInterval(0);
    clock.advance(30'000);
    EXPECT_TRUE(stream.takeWrites().isEmpty());
}

TEST_F(BoardBus, HardwareIsTold)
{
    command("$000AHW");
    EXPECT_EQ(stream.takeWritten(), said("#000AHWGX=n020x4/GR=NN/"));
    command("$000BHW");
    EXPECT_EQ(stream.takeWritten(), said("#000BHWGX=N/GR=NNN/"));
    command("$000ARL200N");
    command("$000AHW");
    EXPECT_EQ(stream.takeWritten(), said("#000AHWGX=n020x4/GR=NY/"));
}

TEST_F(BoardBus, RelayChangesOver)
{
    QStringList seen;
    bus.OnRelay = [&](const QString& address, int relay, bool on) {
        seen << QStringLiteral("%1 %2 %3").arg(address).arg(relay).arg(on ? 1 : 0);
    };
    command("$000ARL100N");
    EXPECT_TRUE(bus.relayOn(k000A, 1));
    command("$000ARL100N");
    EXPECT_FALSE(bus.relayOn(k000A, 1));
    command("$000ARL300N"); // side A has two
    EXPECT_EQ(seen, QStringList({QStringLiteral("000A 1 1"), QStringLiteral("000A 1 0")}));
}

TEST_F(BoardBus, RelayPulses)
{
    bus.Delays.RelayPulseMs = 500;
    command("$000BRL300N");
    EXPECT_TRUE(bus.relayOn(k000B, 3));
    clock.advance(500);
    EXPECT_FALSE(bus.relayOn(k000B, 3));
}

TEST_F(BoardBus, AlarmIsARelayForATime)
{
    command("$000BRL320N");
    EXPECT_EQ(bus.counts(k000B).Alarms, 1);
    EXPECT_TRUE(bus.relayOn(k000B, 3));
    clock.advance(2'000);
    EXPECT_FALSE(bus.relayOn(k000B, 3));
}

TEST_F(BoardBus, DisplayShowsRows)
{
    command("$000ACS");
    command("$000APSN1002" + QByteArray("      Hello"));
    command("$000APSN1004" + QByteArray(25, 'x'));
    EXPECT_EQ(bus.rows(k000A), QStringList({QString(20, u' '), QStringLiteral("      Hello         "),
                                            QString(20, u' '), QString(20, u'x')}));
    command("$000ACS");
    EXPECT_EQ(bus.rows(k000A).join(QString()), QString(80, u' '));
    command("$000BPSN1001Hello");
    EXPECT_TRUE(bus.rows(k000B).isEmpty());
    EXPECT_EQ(bus.badCommands(), 0);
}

TEST_F(BoardBus, FlagsReachBothBoardsOfThePair)
{
    command("$000BFL1");
    command("$000BES");
    for (const QString& address : {k000A, k000B}) {
        EXPECT_EQ(bus.counts(address).Lights, 1);
        EXPECT_EQ(bus.counts(address).Sounds, 1);
    }
    EXPECT_EQ(bus.counts(k001T).Lights, 0);
}

TEST_F(BoardBus, CardOpenedAndPassed)
{
    EXPECT_TRUE(bus.readCard(k001T, QStringLiteral("12345678")));
    EXPECT_EQ(stream.takeWritten(), said("$001TRQ12345678"));
    stream.feed(checked("$001TGO"));
    EXPECT_TRUE(bus.gateOpen(k001T));
    clock.advance(1'000);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("$001TET"), said("$001TPR"), said("$001TGR")}));
    EXPECT_FALSE(bus.gateOpen(k001T));
    EXPECT_EQ(bus.counts(k001T).Passed, 1);
}

TEST_F(BoardBus, PersonGivesUpOrWalksAway)
{
    bus.readCard(k001T, QStringLiteral("1"), TBehaviour::GivesUp);
    command("$001TGO");
    clock.advance(2'000);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("$001TRQ1"), said("$001TET"), said("$001TFK")}));
    bus.readCard(k001T, QStringLiteral("1"), TBehaviour::WalksAway);
    command("$001TGO");
    clock.advance(10'000);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("$001TRQ1"), said("$001TET")}));
    EXPECT_FALSE(bus.gateOpen(k001T));
}

TEST_F(BoardBus, RefusalIsConfirmed)
{
    bus.readCard(k001T, QStringLiteral("1"));
    stream.takeWrites();
    command("$001TPH");
    EXPECT_EQ(stream.takeWritten(), said("$001TET"));
    EXPECT_EQ(bus.counts(k001T).Refused, 1);
}

TEST_F(BoardBus, ButtonCrossingAndAnyLine)
{
    EXPECT_TRUE(bus.pressButton(k000A));
    EXPECT_TRUE(bus.walkThrough(k000A));
    EXPECT_TRUE(bus.say(k000B, '#', "ET5"));
    EXPECT_FALSE(bus.say(k000B, '!', "ET5"));
    EXPECT_FALSE(bus.say(k000B, '$', "a\rb"));
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("#000ABT"), said("#000AGO"), said("#000BET5")}));
}

TEST_F(BoardBus, TheButtonOfABoardThatStandsAloneOpensIt)
{
    for (const char* const type : {"G", "T", "D"}) {
        const QString address = QStringLiteral("002") + QLatin1String(type);
        const QByteArray wire = address.toLatin1();
        ASSERT_TRUE(bus.addBoard(address));
        EXPECT_TRUE(bus.pressButton(address));
        EXPECT_TRUE(bus.gateOpen(address)) << type;
        clock.advance(1'000);
        EXPECT_EQ(stream.takeWrites(),
                  QByteArrayList({said('#' + wire + "BT"), said('$' + wire + "PR"), said('$' + wire + "GR")}))
            << type;
        EXPECT_FALSE(bus.gateOpen(address)) << type;
        EXPECT_EQ(bus.counts(address).Opened, 1) << type;
        EXPECT_EQ(bus.counts(address).Passed, 1) << type;
    }
    EXPECT_TRUE(bus.pressButton(k000A));
    EXPECT_FALSE(bus.gateOpen(k000A)) << "a board of a pair waits for its command";
}

TEST_F(BoardBus, EveryTypeAsksAndShowsAndADisplayHasNoGate)
{
    for (const char* const type : {"G", "T", "D", "I"}) {
        const QString address = QStringLiteral("003") + QLatin1String(type);
        const QByteArray wire = address.toLatin1();
        const bool gate = address != QStringLiteral("003I");
        ASSERT_TRUE(bus.addBoard(address, 16));
        EXPECT_TRUE(bus.readCard(address, QStringLiteral("12345678")));
        command('$' + wire + "PSN1001Anna Berg");
        stream.feed(checked('$' + wire + "GO"));
        EXPECT_EQ(bus.gateOpen(address), gate) << type;
        clock.advance(5'000);
        command('$' + wire + "PH");
        const QByteArrayList asked = {said('$' + wire + "RQ12345678")};
        const QByteArrayList opened = {said('$' + wire + "ET"), said('$' + wire + "PR"),
                                       said('$' + wire + "GR"), said('$' + wire + "ET")};
        EXPECT_EQ(stream.takeWrites(), gate ? asked + opened : asked) << type;
        EXPECT_EQ(bus.rows(address).value(0), QStringLiteral("Anna Berg       ")) << type;
        EXPECT_EQ(bus.counts(address).Refused, gate ? 1 : 0) << type;
    }
    EXPECT_EQ(bus.strayCommands(), 0);
}

TEST_F(BoardBus, WhoCrossesAClosedGateIsReportedAndWhoCrossesAnOpenOneHasPassed)
{
    EXPECT_TRUE(bus.walkThrough(k001T));
    EXPECT_EQ(stream.takeWritten(), said("#001TGO"));
    bus.readCard(k001T, QStringLiteral("1"), TBehaviour::WalksAway);
    stream.feed(checked("$001TGO"));
    stream.takeWrites();
    EXPECT_TRUE(bus.walkThrough(k001T));
    clock.advance(1'000);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList({said("$001TET"), said("$001TPR"), said("$001TGR")}));
}

TEST_F(BoardBus, WrongChecksumIsNotedAndNotObeyed)
{
    QByteArrayList wrong;
    bus.OnCommand = [&](const TReceivedCommand& heard) {
        if (!heard.Right) {
            wrong << heard.Line;
        }
    };
    hear("$000AGO00");
    EXPECT_EQ(wrong, QByteArrayList({"$000AGO00"}));
    EXPECT_EQ(bus.badCommands(), 1);
    EXPECT_FALSE(bus.gateOpen(k000A));
}

TEST_F(BoardBus, CommandsInAnyCut)
{
    const QByteArray all = checked("$000AECHO") + checked("$000AHW") + checked("$000ACS") +
                           checked("$000APSN1001 pay $5 now") + checked("$000BHW") + checked("$000BES");
    for (qsizetype size = 1; size <= all.size(); ++size) {
        const qint64 before = bus.rightCommands();
        for (qsizetype at = 0; at < all.size(); at += size) {
            stream.feed(all.mid(at, size));
        }
        clock.advance(100);
        EXPECT_EQ(bus.rightCommands() - before, 6) << size;
        EXPECT_EQ(bus.rows(k000A).value(0), QStringLiteral(" pay $5 now         "));
    }
    EXPECT_EQ(bus.badCommands(), 0);
}

TEST_F(BoardBus, RowAtTheEndOfARead)
{
    stream.feed(checked("$000APSN1001Hello"));
    EXPECT_EQ(bus.rightCommands(), 0); // more text may follow
    clock.advance(20);
    EXPECT_EQ(bus.rightCommands(), 1);
}

TEST_F(BoardBus, DamagedCommandDoesNotSwallowTheNext)
{
    hear("$000AGO0" + checked("$000AHW") + checked("$000BHW"));
    EXPECT_EQ(bus.rightCommands(), 2);
    EXPECT_EQ(bus.badCommands(), 1);
}

TEST_F(BoardBus, StrayCommandsAreCounted)
{
    command("$777AGO");
    command("$000AXYZ");
    EXPECT_EQ(bus.strayCommands(), 2);
    EXPECT_EQ(bus.badCommands(), 0);
}

TEST_F(BoardBus, SilentObeysDeadDoesNot)
{
    bus.setFaults(k000A, {.Silent = true});
    command("$000ARL100N");
    command("$000AHW");
    EXPECT_TRUE(bus.relayOn(k000A, 1));
    EXPECT_FALSE(bus.readCard(k000A, QStringLiteral("1")));
    bus.setFaults(k000A, {.Dead = true});
    command("$000ARL100N");
    EXPECT_TRUE(bus.relayOn(k000A, 1));
    EXPECT_FALSE(bus.ping(k000A));
    EXPECT_TRUE(stream.takeWritten().isEmpty());
}

TEST_F(BoardBus, LateAnswer)
{
    bus.setFaults(k000A, {.LateAnswerMs = 1'000});
    command("$000AHW");
    EXPECT_TRUE(stream.takeWritten().isEmpty());
    clock.advance(1'000);
    EXPECT_EQ(stream.takeWritten(), said("#000AHWGX=n020x4/GR=NN/"));
}

TEST_F(BoardBus, BabblingEndsInACarriageReturn)
{
    bus.setFaults(k000A, {.Babbles = true});
    EXPECT_TRUE(bus.ping(k000A));
    const QByteArray noise = stream.takeWritten();
    EXPECT_TRUE(noise.endsWith('\r'));
    EXPECT_FALSE(noise.contains("PING"));
}

TEST_F(BoardBus, EndlessNoiseIsBounded)
{
    stream.feed(QByteArray(100'000, '$'));
    stream.feed('$' + QByteArray(100'000, 'x'));
    EXPECT_LE(bus.commands().size(), TBoardBus::kMaxRemembered);
    command("$000AHW");
    EXPECT_EQ(bus.counts(k000A).Hardware, 1);
}

TEST(BoardBusLife, HookMayDestroyTheBus)
{
    const testkit::TManualClock clock;
    TMemoryStream stream;
    auto bus = std::make_unique<TBoardBus>(stream);
    bus->addBoard(k000A, 20);
    bus->OnOpened = [&](const QString&) { bus.reset(); };
    stream.feed(checked("$000AGO") + checked("$000AHW"));
    EXPECT_EQ(bus, nullptr);
    EXPECT_FALSE(stream.OnRead);
}

TEST(BoardBusLife, HookMayDestroyTheBusAtAButton)
{
    const testkit::TManualClock clock;
    TMemoryStream stream;
    auto bus = std::make_unique<TBoardBus>(stream);
    bus->addBoard(k001T);
    bus->OnOpened = [&](const QString&) { bus.reset(); };
    EXPECT_TRUE(bus->pressButton(k001T));
    EXPECT_EQ(bus, nullptr);
}

} // namespace
} // namespace tnv5::sim
