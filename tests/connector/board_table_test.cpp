// The table of the boards that have spoken.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using connector::DeviceInfo;
using connector::TBoardTable;

const QString kSerial = QStringLiteral("0.0.0.0");

QString addressOf(int number)
{
    return QStringLiteral("%1").arg(number, 4, 10, QLatin1Char('0'));
}

TEST(BoardTable, StartsEmpty)
{
    const TBoardTable table;
    EXPECT_EQ(table.size(), 0);
    EXPECT_EQ(table.at(0), nullptr);
}

TEST(BoardTable, MakesARecordHeardNow)
{
    const TManualClock clock;
    TBoardTable table;
    const DeviceInfo board = table.findOrAdd(kSerial, "000A");
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(board->IP, "0.0.0.0");
    EXPECT_EQ(board->Device, "000A");
    EXPECT_EQ(board->DeviceType, "");
    EXPECT_EQ(board->DisplayLine, -1);
    EXPECT_DOUBLE_EQ(board->LastPing, platform::Now());
    EXPECT_EQ(table.size(), 1);
}

TEST(BoardTable, FindingChangesNothing)
{
    TManualClock clock;
    TBoardTable table;
    const DeviceInfo board = table.findOrAdd(kSerial, "000A");
    const platform::TDateTime heard = board->LastPing;
    board->DisplayLine = 16;
    board->DeviceType = "kept";
    clock.advance(5'000);
    EXPECT_EQ(table.findOrAdd(kSerial, "000A"), board);
    EXPECT_EQ(board->LastPing, heard);
    EXPECT_EQ(board->DisplayLine, 16);
    EXPECT_EQ(board->DeviceType, "kept");
    EXPECT_EQ(table.size(), 1);
}

TEST(BoardTable, ComparesExactly)
{
    TBoardTable table;
    const QStringList addresses{"000A", "000a", "000B", "000", " 000", "000A ", "", "АААА"};
    for (const QString& ip : {kSerial, QStringLiteral("10.0.0.7"), QString()}) {
        for (const QString& address : addresses) {
            table.findOrAdd(ip, address);
        }
    }
    EXPECT_EQ(table.size(), 3 * addresses.size());
    table.findOrAdd(kSerial + "0", "00A"); // no confusion of where one ends and the other begins
    EXPECT_EQ(table.size(), 3 * addresses.size() + 1);
}

TEST(BoardTable, HasNothingOutsideItsIndexes)
{
    TBoardTable table;
    table.findOrAdd(kSerial, "000A");
    EXPECT_NE(table.at(0), nullptr);
    for (const int index : {-1, 1, 2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(table.at(index), nullptr) << index;
    }
}

TEST(BoardTable, KeepsOrderAndIdentityOfTenThousandBoards)
{
    constexpr int kBoards = 10'000;
    TBoardTable table;
    std::vector<DeviceInfo> made;
    made.reserve(kBoards);
    for (int i = 0; i < kBoards; ++i) {
        // not in the order of the addresses
        made.push_back(table.findOrAdd(kSerial, addressOf(i * 7'919 % kBoards)));
        made.back()->DisplayLine = i;
    }
    ASSERT_EQ(table.size(), kBoards);
    for (int i = 0; i < kBoards; ++i) {
        ASSERT_EQ(table.at(i), made[std::size_t(i)]);
        ASSERT_EQ(table.at(i)->Device, addressOf(i * 7'919 % kBoards));
        ASSERT_EQ(table.at(i)->DisplayLine, i);
        ASSERT_EQ(table.findOrAdd(kSerial, addressOf(i * 7'919 % kBoards)), made[std::size_t(i)]);
    }
    EXPECT_EQ(table.size(), kBoards);
}

using Boards = TConnectorTest;

TEST_F(Boards, AreListedInOrderOfFirstAppearance)
{
    EXPECT_EQ(bus->DeviceCount(), 0);
    for (const char* line : {"$002AX", "#001B", "$002BX", "$002AX", "$001BX", "#000A"}) {
        inject(line);
    }
    QStringList addresses;
    for (int i = 0; i < bus->DeviceCount(); ++i) {
        addresses << bus->DeviceItem(i)->Device;
        EXPECT_EQ(bus->DeviceItem(i)->IP, "0.0.0.0");
    }
    EXPECT_EQ(addresses.join(u' '), "002A 001B 002B 000A");
    EXPECT_EQ(bus->DeviceItem(-1), nullptr);
    EXPECT_EQ(bus->DeviceItem(4), nullptr);
}

TEST_F(Boards, AreOnePerLinkAndAddress)
{
    inject("$000AX");
    hear("$000AX");
    EXPECT_EQ(bus->DeviceCount(), 2);
    EXPECT_EQ(bus->DeviceItem(1), board("000A", "10.0.0.7"));
    EXPECT_NE(bus->DeviceItem(0), bus->DeviceItem(1));
    EXPECT_EQ(bus->DeviceCount(), 2);
}

TEST_F(Boards, KeepTheTimeTheyWereLastHeard)
{
    inject("$000AX");
    const platform::TDateTime first = board("000A")->LastPing;
    EXPECT_DOUBLE_EQ(first, platform::Now());
    clock.advance(60'000);
    inject("$000BX");
    EXPECT_EQ(board("000A")->LastPing, first); // another board's line
    for (const char* line :
         {"$000AX", "$000APING", "$000AET", "#000ABT", "#000AET", "#000AGO", "#000A", "#000AHWGX=N/GR=NN/"}) {
        clock.advance(1'000);
        inject(line);
        EXPECT_DOUBLE_EQ(board("000A")->LastPing, platform::Now()) << line;
    }
}

TEST_F(Boards, AreNotHeardWhenTheyAreLookedUpOrCommanded)
{
    inject("$000AX");
    const platform::TDateTime first = board("000A")->LastPing;
    clock.advance(1'000);
    board("000A");
    bus->SendCommand("GO0.0.0.0:000A");
    bus->SendCommand("SH0.0.0.0:000A|a|b|c|d|L|");
    EXPECT_EQ(board("000A")->LastPing, first);
}

TEST_F(Boards, AreNeverForgotten)
{
    inject("$000AX");
    const DeviceInfo first = bus->DeviceItem(0);
    clock.advance(30 * platform::kMsPerDay);
    bus->SetConnected(false);
    bus->SetComport(nullptr);
    bus->CloseAll();
    port.reset();
    EXPECT_EQ(bus->DeviceCount(), 1);
    EXPECT_EQ(bus->DeviceItem(0), first);
}

TEST_F(Boards, StayWhereTheyAreWhenTenThousandSpeak)
{
    inject("$000AX");
    const DeviceInfo first = bus->DeviceItem(0);
    bus->SetOnGetData({});
    for (int i = 0; i < 10'000; ++i) {
        inject(u'$' + addressOf(i) + "X");
    }
    EXPECT_EQ(bus->DeviceCount(), 10'001);
    EXPECT_EQ(board("000A"), first);
    EXPECT_EQ(bus->DeviceItem(0), first);
    EXPECT_EQ(bus->DeviceItem(10'000)->Device, "9999");
}

} // namespace
