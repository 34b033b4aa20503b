// More boards than the table takes: noise has filled it, and real boards speak up.

#include "connector_fixture.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using connector::DeviceInfo;
using connector::TBoardTable;

const QString kSerial = QStringLiteral("0.0.0.0");

/// An address that noise invents; no board's, as it has no side letter.
QString noise(std::size_t number)
{
    return QStringLiteral("~%1").arg(number);
}

/// The lines of a ping of a board on side "A" whose display is not known.
QStringList pinged(const QString& pair)
{
    return sent("$" + pair + "AECHO") + routedChecked("#0.0.0.0:" + pair + "APING") +
           sent("$" + pair + "AHW") + sent("$" + pair + "BHW");
}

class FullTable : public TConnectorTest
{
protected:
    FullTable()
    {
        giveDisplay("000A", 20);
        while (std::size_t(bus->DeviceCount()) < TBoardTable::kMaxBoards) {
            board(noise(std::size_t(bus->DeviceCount())));
        }
    }
    ~FullTable() override
    {
        if (bus) {
            EXPECT_EQ(std::size_t(bus->DeviceCount()), TBoardTable::kMaxBoards);
        }
    }
};

TEST_F(FullTable, ServesThoseItHas)
{
    const DeviceInfo first = bus->DeviceItem(0);
    const DeviceInfo last = bus->DeviceItem(int(TBoardTable::kMaxBoards) - 1);
    clock.advance(1'000);
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
    EXPECT_EQ(board("000A"), first);
    EXPECT_DOUBLE_EQ(first->LastPing, platform::Now());
    EXPECT_EQ(board(noise(TBoardTable::kMaxBoards - 1)), last);
    bus->SendCommand("SH0.0.0.0:000A|Hello|||||");
    trace.expect(sent("$000ACS") + sent("$000APSN1001        Hello       ") +
                 linesSent("$000APSN1001        Hello       "));
}

TEST_F(FullTable, ForgetsNobody)
{
    const DeviceInfo first = bus->DeviceItem(0);
    for (int i = 0; i < 1'000; ++i) {
        inject(QStringLiteral("$%1X").arg(i, 4, 10, QLatin1Char('0')));
    }
    EXPECT_EQ(bus->DeviceItem(0), first);
    EXPECT_EQ(first->Device, "000A");
    EXPECT_EQ(first->DisplayLine, 20);
    for (std::size_t i = 1; i < TBoardTable::kMaxBoards; ++i) {
        ASSERT_EQ(bus->DeviceItem(int(i))->Device, noise(i));
    }
    EXPECT_EQ(bus->DeviceItem(int(TBoardTable::kMaxBoards)), nullptr);
}

TEST_F(FullTable, AnswersAPingOfAnotherBoard)
{
    inject("$001APING");
    trace.expect(pinged("001"));
}

TEST_F(FullTable, RemembersNothingOfAnotherBoardBetweenItsLines)
{
    for (int i = 0; i < 3; ++i) {
        inject("$001APING");
        trace.expect(pinged("001"));
        inject("#001AHWGX=n020x4/GR=NY/");
        trace.expect(routedChecked("#0.0.0.0:001ARELAY1N") + routedChecked("#0.0.0.0:001ARELAY2Y") +
                     routed("#0.0.0.0:001AHWGX=n020x4/GR=NY/"));
    }
}

TEST_F(FullTable, RoutesEveryLineOfAnotherBoard)
{
    inject("#001BBT");
    trace.expect(routedChecked("#0.0.0.0:001BBTPH"));
    inject("#001BET5");
    trace.expect(routed("$0.0.0.0:001BET5"));
    inject("#001BGO");
    trace.expect(routedChecked("#0.0.0.0:001BCROSS"));
    inject("#001BX");
    trace.expect({});
    inject("$001BET");
    trace.expect(routedChecked("#0.0.0.0:001BPING") + routed("$0.0.0.0:001BET"));
    inject("$001BRQ12345678");
    trace.expect(routed("$0.0.0.0:001BRQ12345678"));
    hear("$001BX");
    trace.expect(routed("$10.0.0.7:001BX"));
    hear("!001BX");
    trace.expect({});
}

TEST_F(FullTable, ReportsAWidthThatIsNoNumber)
{
    QString message;
    const auto previous =
        platform::setExceptionHandler([&](const QString& text, const auto&) { message = text; });
    inject("#001AHWGX=nabcx4/GR=NN/");
    platform::setExceptionHandler(previous);
    EXPECT_FALSE(message.isEmpty());
    trace.expect({});
}

TEST_F(FullTable, DisplayCommandToAnotherBoardWritesNothing)
{
    EXPECT_EQ(bus->SendCommand("SH0.0.0.0:001A|a|b|c|d|LS|"), "");
    trace.expect(kNoLinesSent);
    EXPECT_EQ(bus->SendCommand("GO0.0.0.0:001A"), secondPass("$001AGO"));
    trace.expect(sent("$001AGO"));
}

TEST_F(FullTable, LinesInsideOneAnotherKeepTheirBoards)
{
    trace.once("route ", [this] {
        inject("#002AHWGX=n020x4/GR=NN/"); // would make its width known for both
        bus->ProcessDataToDevice(kSerial, "$002BPING");
        bus->SendCommand("SH0.0.0.0:003A|a|||||");
        board("004A")->DisplayLine = 16;
    });
    bus->ProcessDataToDevice(kSerial, "$001APING");
    const QStringList inside = routedChecked("#0.0.0.0:002ARELAY1N") + routedChecked("#0.0.0.0:002ARELAY2N") +
                               routed("#0.0.0.0:002AHWGX=n020x4/GR=NN/") + sent("$002BECHO") +
                               routedChecked("#0.0.0.0:002BPING") + sent("$002BHW") + sent("$002AHW") +
                               kNoLinesSent;
    trace.expect(sent("$001AECHO") + routedChecked("#0.0.0.0:001APING") + inside + sent("$001AHW") +
                 sent("$001BHW"));
}

TEST_F(FullTable, HandlerMayDestroyTheConnectorInALineOfAnotherBoard)
{
    trace.once("route ", [this] { bus.reset(); });
    inject("$001APING");
    trace.expect(sent("$001AECHO") + routedChecked("#0.0.0.0:001APING"));
}

TEST_F(FullTable, LookingUpAnotherBoardGivesTheSpareRecord)
{
    clock.advance(1'000);
    const DeviceInfo spare = board("001A");
    ASSERT_NE(spare, nullptr);
    EXPECT_EQ(spare->IP, "0.0.0.0");
    EXPECT_EQ(spare->Device, "001A");
    EXPECT_EQ(spare->DeviceType, "");
    EXPECT_EQ(spare->DisplayLine, -1);
    EXPECT_DOUBLE_EQ(spare->LastPing, platform::Now());
}

TEST_F(FullTable, TheSpareRecordIsOneAndStaysWhereItIs)
{
    const DeviceInfo spare = board("001A");
    spare->DisplayLine = 16;
    spare->DeviceType = "kept";
    EXPECT_EQ(board("001A"), spare); // the same board again
    EXPECT_EQ(spare->DisplayLine, 16);
    EXPECT_EQ(spare->DeviceType, "kept");
    clock.advance(1'000);
    EXPECT_EQ(board("001A", "10.0.0.7"), spare); // another link, another board
    EXPECT_EQ(spare->IP, "10.0.0.7");
    EXPECT_EQ(spare->DisplayLine, -1);
    EXPECT_EQ(spare->DeviceType, "");
    EXPECT_DOUBLE_EQ(spare->LastPing, platform::Now());
    EXPECT_EQ(board("002B"), spare);
    EXPECT_EQ(spare->IP, "0.0.0.0");
    EXPECT_EQ(spare->Device, "002B");
    EXPECT_NE(board("000A"), spare); // those of the table are not touched
    EXPECT_EQ(spare->Device, "002B");
}

TEST_F(FullTable, LinesLeaveTheSpareRecordAlone)
{
    const DeviceInfo spare = board("001A");
    const platform::TDateTime asked = spare->LastPing;
    clock.advance(1'000);
    inject("#001AHWGX=n020x4/GR=NN/");
    inject("$002APING");
    EXPECT_EQ(spare->Device, "001A");
    EXPECT_EQ(spare->DisplayLine, -1);
    EXPECT_EQ(spare->LastPing, asked);
}

} // namespace
