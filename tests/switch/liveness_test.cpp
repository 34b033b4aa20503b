// The boards that ping.

#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// A report about a board: the relay is empty, the word stands twice.
QString noted(const QString& board, const QString& word)
{
    return report("STACK", board + "!!" + word + u'!' + word);
}

class Liveness : public TSwitchTest
{
protected:
    Liveness()
    {
        inject("x");
        trace.take();
    }
};

TEST_F(Liveness, APingMakesAnEntryWithTheDateAndLaterTheTimeOfDay)
{
    inject("#0.0.0.0:000GPING5A");
    trace.expect({read("#0.0.0.0:000GPING5A"), noted("000G", "PING")});
    ASSERT_EQ(device->DeviceList().size(), 1);
    const auto board = device->DeviceList().at(0);
    EXPECT_EQ(board->IP, kLink);
    EXPECT_EQ(board->Device, "000G");
    EXPECT_EQ(board->DeviceType, "G");
    EXPECT_DOUBLE_EQ(board->Pingtime, 46'027.5);
    clock.advance(1'000);
    inject("#0.0.0.0:000Gping5A"); // in any case
    trace.expect({read("#0.0.0.0:000Gping5A"), noted("000G", "PING")});
    EXPECT_EQ(device->DeviceList().size(), 1);
    EXPECT_DOUBLE_EQ(board->Pingtime, 0.5 + 1.0 / 86'400);
}

TEST_F(Liveness, ATypeThatIsNoneIsT)
{
    inject("#0.0.0.0:000APING5A");
    EXPECT_EQ(device->DeviceList().at(0)->DeviceType, "T");
}

TEST_F(Liveness, AReportTellsWhatThePingTold)
{
    device->DevicePing(kLink, kBoard, "G");
    trace.take();
    serve();
    device->DevicePing(kLink, kBoard, "I");
    EXPECT_EQ(device->DeviceList().at(0)->DeviceType, "G"); // the entry stays
    trace.expect({noted(kBoard, "PING"), monitor("STATUS!STACK!0.0.0.0!000A!I!!PING!PING&")});
}

TEST_F(Liveness, LinkAndAddressTogetherAreABoard)
{
    inject("#0.0.0.0:000APING5A");
    inject("#1.1.1.1:000APING5A");
    EXPECT_EQ(device->DeviceList().size(), 2);
    EXPECT_EQ(device->DevicePingFind("1.1.1.1", "000A"), 1);
    EXPECT_EQ(device->DevicePingFind("1.1.1.1", "000B"), -1);
}

TEST_F(Liveness, ASilentBoardIsReportedAtEveryTick)
{
    device->DevicePing(kLink, kBoard, "T");
    device->DevicePing(kLink, kBoard, "T"); // the second ping counts
    trace.take();
    device->SetOnLog({});
    clock.advance(15'999); // 15 seconds and a fraction: not more
    EXPECT_EQ(trace.take().filter("NOPING").size(), 0);
    clock.advance(1);
    EXPECT_EQ(trace.take().filter("NOPING"), QStringList{noted(kBoard, "NOPING")});
    clock.advance(4'000);
    EXPECT_EQ(trace.take().filter("NOPING").size(), 2);
    inject("#0.0.0.0:000APING5A");
    clock.advance(14'000);
    EXPECT_EQ(trace.take().filter("NOPING").size(), 0);
    EXPECT_EQ(device->DeviceList().size(), 1);
}

TEST_F(Liveness, SilentIsMoreThanTheDelayInWholeSeconds)
{
    device->DevicePing(kLink, kBoard, "T");
    for (const int delay : {0, 1, 15, 60}) {
        device->Setpingdelay(delay);
        device->DevicePing(kLink, kBoard, "T");
        trace.take();
        clock.jumpTo(clock.nowMs() + (delay + 1) * 1'000 - 1);
        device->DevicePingTime(nullptr);
        trace.expect({});
        clock.jumpTo(clock.nowMs() + 1);
        device->DevicePingTime(nullptr);
        trace.expect({noted(kBoard, "NOPING")});
    }
}

TEST_F(Liveness, OfEqualEntriesTheLastOneIsMeant)
{
    device->DevicePing(kLink, kBoard, "T");
    device->DevicePing(kLink, "000B", "T");
    device->DeviceList().at(1)->Device = kBoard;
    EXPECT_EQ(device->DevicePingFind(kLink, kBoard), 1);
    const double before = device->DeviceList().at(0)->Pingtime;
    device->DevicePing(kLink, kBoard, "T");
    EXPECT_EQ(device->DeviceList().at(0)->Pingtime, before);
    EXPECT_DOUBLE_EQ(device->DeviceList().at(1)->Pingtime, 0.5);
}

TEST_F(Liveness, AFreshEntryIsSilentUntilItsSecondPing)
{
    device->DevicePing(kLink, kBoard, "T");
    trace.take();
    device->DevicePingTime(nullptr);
    trace.expect({noted(kBoard, "NOPING")});
    device->DevicePing(kLink, kBoard, "T");
    trace.take();
    device->DevicePingTime(nullptr);
    trace.expect({});
}

TEST_F(Liveness, OtherLinesKeepNobodyAlive)
{
    device->DevicePing(kLink, kBoard, "T");
    device->DevicePing(kLink, kBoard, "T");
    device->Setpingdelay(0);
    clock.jumpTo(clock.nowMs() + 1'000);
    inject("#0.0.0.0:000ARELAY1Y5A");
    inject("$0.0.0.0:000ASS1F");
    trace.take();
    device->DevicePingTime(nullptr);
    trace.expect({noted(kBoard, "NOPING")});
}

TEST_F(Liveness, AFullTableServesAPingWithoutAnEntry)
{
    device->SetOnCheckStatus({});
    for (std::size_t i = 0; i < connector::TLivenessTable::kMaxRecords; ++i) {
        device->DevicePing("1", QString::number(i), "T");
    }
    attach();
    inject("#0.0.0.0:000APING5A");
    trace.expect({read("#0.0.0.0:000APING5A"), noted(kBoard, "PING")});
    EXPECT_EQ(device->DevicePingFind(kLink, kBoard), -1);
}

} // namespace
