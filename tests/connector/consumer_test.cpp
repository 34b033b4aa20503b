// The one consumer: what a device component does to sit on the connector, and what it may do while it is
// called.

#include "connector_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using connector::DeviceInfo;

/// As much of a device component as the connector sees of it.
class TConsumer
{
public:
    ~TConsumer() { SetConnector(nullptr); }

    void SetConnector(TDeviceConnector* Value)
    {
        if (FConnector && !Value) {
            FConnector->SetOnGetData({});
        }
        FConnector = Value;
        if (FConnector) {
            FConnector->SetOnGetData([this](TComponent* Sender, const QString& AMess) {
                EXPECT_EQ(Sender, FConnector);
                lines << AMess;
            });
        }
    }

    QStringList lines;

private:
    TDeviceConnector* FConnector = nullptr;
};

using Consumer = TConnectorTest;

TEST_F(Consumer, LastOneToAttachHearsEverything)
{
    TConsumer first;
    TConsumer second;
    first.SetConnector(bus.get());
    inject("$000AX");
    second.SetConnector(bus.get());
    inject("$001AX");
    EXPECT_EQ(first.lines, QStringList("$0.0.0.0:000AX"));
    EXPECT_EQ(second.lines, QStringList("$0.0.0.0:001AX"));
    first.SetConnector(bus.get());
    inject("$002AX");
    EXPECT_EQ(first.lines.size(), 2);
    EXPECT_EQ(second.lines.size(), 1);
    first.SetConnector(nullptr);
    inject("$003AX");
    EXPECT_EQ(first.lines.size() + second.lines.size(), 3);
    EXPECT_FALSE(bus->OnGetData());
}

TEST_F(Consumer, ReentersSendCommand)
{
    QString result;
    trace.once("route ", [&] { result = bus->SendCommand("RL0.0.0.0:000A2"); });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + sent("$000ARL200N") +
                 sent("$000AHW") + sent("$000BHW"));
    EXPECT_EQ(result, "CC");
}

TEST_F(Consumer, CommandsBetweenTheRelaysOfOneReply)
{
    trace.OnLine = [this](const QString& line) {
        if (line.contains("RELAY")) {
            bus->SendCommand("GO0.0.0.0:000B");
        }
    };
    inject("#000BHWGX=N/GR=NNN/");
    trace.expect(routedChecked("#0.0.0.0:000BRELAY3N") + sent("$000BGO") +
                 routedChecked("#0.0.0.0:000BRELAY4N") + sent("$000BGO") +
                 routedChecked("#0.0.0.0:000BRELAY5N") + sent("$000BGO") +
                 routed("#0.0.0.0:000BHWGX=N/GR=NNN/"));
}

TEST_F(Consumer, ShowsOnTheDisplayItHasJustHeardOf)
{
    trace.once("route ", [this] { bus->SendCommand("SH0.0.0.0:000A|ab|||||"); });
    inject("#000AHWGX=G4x1/GR=NN/");
    trace.expect(routedChecked("#0.0.0.0:000ARELAY1N") + sent("$000ACS") + sent("$000APSN1001 ab ") +
                 linesSent("$000APSN1001 ab ") + routedChecked("#0.0.0.0:000ARELAY2N") +
                 routed("#0.0.0.0:000AHWGX=G4x1/GR=NN/"));
}

TEST_F(Consumer, MakesBoards)
{
    DeviceInfo spoken = nullptr;
    trace.once("route ", [&] {
        spoken = board("000A");
        for (int i = 0; i < 5'000; ++i) {
            board(QString::number(i));
        }
    });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + sent("$000AHW") + sent("$000BHW"));
    EXPECT_EQ(bus->DeviceCount(), 5'001);
    EXPECT_EQ(bus->DeviceItem(0), spoken);
}

TEST_F(Consumer, ProcessesAnotherLine)
{
    trace.once("route ", [this] { bus->ProcessDataToDevice("0.0.0.0", "#000AHWGX=N/GR=NY/"); });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") +
                 routedChecked("#0.0.0.0:000ARELAY1N") + routedChecked("#0.0.0.0:000ARELAY2Y") +
                 routed("#0.0.0.0:000AHWGX=N/GR=NY/")); // by now the display is known
    EXPECT_EQ(board("000A")->DisplayLine, 0);
}

TEST_F(Consumer, HandsALineToItself)
{
    trace.once("route ", [this] { bus->GetCommand("inner"); });
    inject("$000AETx");
    trace.expect(routedChecked("#0.0.0.0:000APING") + routed("inner") + routed("$0.0.0.0:000AETx"));
}

TEST_F(Consumer, PumpsMessages)
{
    trace.once("route ", [this] { port->feed("$001AX\r#002AGO\r"); });
    port->feed("$000AX\r$000BX\r");
    QStringList lines = trace.take();
    EXPECT_EQ(lines.front(), "route $0.0.0.0:000AX");
    lines.sort();
    QStringList all = routed("$0.0.0.0:000AX") + routed("$0.0.0.0:000BX") + routed("$0.0.0.0:001AX") +
                      routedChecked("#0.0.0.0:002ACROSS");
    all.sort();
    EXPECT_EQ(lines, all);
}

TEST_F(Consumer, ClosesThePortDuringAPingAndTheRequestsOpenItAgain)
{
    port->OnOpening = [this] { trace.add("opening"); };
    trace.once("route ", [this] { bus->SetConnected(false); });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING") + QStringList("opening") +
                 sent("$000AHW") + sent("$000BHW"));
    EXPECT_TRUE(port->Connected());
}

TEST_F(Consumer, ClosesThePortDuringAReply)
{
    trace.once("route ", [this] { bus->SetConnected(false); });
    inject("#000AHWGX=N/GR=NN/");
    EXPECT_EQ(trace.take().size(), 3); // the line that has begun is finished
    EXPECT_FALSE(port->Connected());
}

TEST_F(Consumer, ChangesTheType)
{
    trace.once("route ", [this] { bus->SetConnectorType(connector::podNet); });
    inject("$000APING");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
}

TEST_F(Consumer, TakesThePortAway)
{
    trace.once("route ", [this] { bus->SetComport(nullptr); });
    port->feed("$000APING\r$000AX\r#000AGO\r");
    trace.expect(sent("$000AECHO") + routedChecked("#0.0.0.0:000APING"));
}

TEST_F(Consumer, ChangesThePort)
{
    TMemoryPort second;
    trace.once("route ", [&] { bus->SetComport(&second); });
    inject("$000APING");
    EXPECT_EQ(port->takeWritten(), "$000AECHOB6");
    EXPECT_EQ(second.takeWrites(), QByteArrayList({"$000AHW29", "$000BHWE3"}));
    bus->SetComport(nullptr);
}

TEST_F(Consumer, DetachesItself)
{
    trace.once("route ", [this] { bus->SetOnGetData({}); });
    inject("#000AHWGX=N/GR=NN/");
    trace.expect(routedChecked("#0.0.0.0:000ARELAY1N"));
    inject("$000AETx");
    trace.expect({});
    trace.attach(*bus);
    trace.once("route ", [this] { bus->SetOnGetData({}); });
    inject("$000AETx");
    trace.expect(routedChecked("#0.0.0.0:000APING"));
}

TEST_F(Consumer, PutsAnotherOneInItsPlace)
{
    QStringList others;
    auto held = std::make_shared<QString>("still here");
    bus->SetOnGetData([this, held, &others](TComponent*, const QString& line) {
        bus->SetOnGetData([&others](TComponent*, const QString& next) { others << next; });
        trace.add(*held + " " + line); // the handler that runs is not gone
    });
    held.reset();
    inject("$000AETx");
    trace.expect({"still here " + checked("#0.0.0.0:000APING")});
    EXPECT_EQ(others, QStringList("$0.0.0.0:000AETx"));
}

TEST_F(Consumer, LogHandlerReplacesItselfAndSends)
{
    QStringList others;
    auto held = std::make_shared<QString>("first");
    bus->SetOnLog([this, held, &others](TComponent*, const QString& line) {
        bus->SetOnLog([&others](TComponent*, const QString& next) { others << next; });
        bus->SendCommand("GO0.0.0.0:000B");
        trace.add(*held + " " + line);
    });
    held.reset();
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect({"write $000AGO4A", wroteChecked("$000BGO"), "first $000AGO4A"});
    EXPECT_EQ(others, QStringList(checked("$000BGO")));
}

TEST_F(Consumer, ErrorHandlerMayTryAgain)
{
    port->Close();
    port->OpenFailure = "no";
    trace.once("error ", [this] {
        port->OpenFailure.reset();
        EXPECT_TRUE(bus->GetConnected());
    });
    bus->SendCommand("GO0.0.0.0:000A");
    trace.expect({"error [03] no"}); // the write that met the error is dropped all the same
    EXPECT_TRUE(port->Connected());
}

} // namespace
