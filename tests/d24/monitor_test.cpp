// The texts of the monitor stream, beside the events that they repeat, and client mode.

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class Monitor : public TD24Test
{
protected:
    Monitor() { serve(); }
};

TEST_F(Monitor, ALineIsLoggedWithoutTheAsterisk)
{
    inject("x");
    trace.expect({read("x"), monitor("LOG!%Считано с порта% x&")});
}

TEST_F(Monitor, EveryEventOfAPassIsRepeated)
{
    Answers = {{0, 1}};
    inject("$10.0.0.5:001TRQ77AB");
    trace.expect({read("$10.0.0.5:001TRQ77AB"), monitor("LOG!%Считано с порта% $10.0.0.5:001TRQ77AB&"),
                  "img 001T", looked(kT, "77", "NEW"), monitor("STATUS!CHECK!10.0.0.5!001T!T!77!RQ!NEW&"),
                  come(kT, "77", "NEW"), monitor("STATUS!COME!10.0.0.5!001T!T!77!NEW!NEW&"),
                  stack(kT, "77", "NEW"), monitor("STATUS!STACK!10.0.0.5!001T!T!77!NEW!NEW&"),
                  check(kT, "77", "NEW", 0), commanded("GO10.0.0.5:001T"), loggedSend("GO10.0.0.5:001T"),
                  monitor("LOG!%Отправлено на порт% GO10.0.0.5:001T&")});
    clock.advance(10);
    trace.expect({stack(kT, "77", "OPEN"), monitor("STATUS!STACK!10.0.0.5!001T!T!77!OPEN!OPEN&")});
}

TEST_F(Monitor, StateLinesAreRepeated)
{
    inject("#10.0.0.5:001Tping00");
    trace.expect({read("#10.0.0.5:001Tping00"), monitor("LOG!%Считано с порта% #10.0.0.5:001Tping00&"),
                  noted(kT, "PING"), monitor("STATUS!STACK!10.0.0.5!001T!T!!PING!PING&"), heard(kT, "ping"),
                  monitor("STATUS!COME!10.0.0.5!001T!T!NOCARDNUMBER!ping!ping&")});
    clock.advance(2'000);
    trace.expect({noted(kT, "NOPING"), monitor("STATUS!STACK!10.0.0.5!001T!T!!NOPING!NOPING&")});
}

TEST_F(Monitor, ErrorsAreRepeatedWithTheirCodes)
{
    makePass(kT, "77");
    const QString text = "Порт не открыт или не назначен";
    for (const auto& call : std::initializer_list<std::function<void()>>{
             [&] { gate->p_hw_SendComCommand(0, 0); }, [&] { gate->p_hw_SendComCommand(0, 1); },
             [&] { gate->p_hw_relay("1", "001T", "1", 0); }, [&] { gate->p_hw_CheckStatusAll(); }}) {
        link->UpNext = {false}; // the command finds it closed, the monitor open again
        call();
        trace.expect({"error [04] " + text, monitor("ERROR![04] " + text + "&")});
    }
    link->Failures = {{"GO", "cut"}, {"PH", "torn"}};
    gate->p_hw_SendComCommand(0, 0);
    trace.expect({commanded("PH10.0.0.5:001T"), "error [044] torn", monitor("ERROR![044] torn&"),
                  loggedSend("PH10.0.0.5:001T"), monitor("LOG!%Отправлено на порт% PH10.0.0.5:001T&")});
    gate->p_hw_SendComCommand(0, 1); // the two codes differ
    trace.expect({commanded("GO10.0.0.5:001T"), "error [04] cut", monitor("ERROR![045] cut&"),
                  loggedSend("GO10.0.0.5:001T"), monitor("LOG!%Отправлено на порт% GO10.0.0.5:001T&")});
}

TEST_F(Monitor, GetsEverythingAlsoWithoutHandlers)
{
    gate->SetOnLog({});
    gate->SetOnError({});
    gate->SetOnCheckStatus({});
    link->Failures = {{"PH", "torn"}};
    Answers = {{0, 0}};
    inject("$10.0.0.5:001TRQ77AB");
    trace.expect({monitor("LOG!%Считано с порта% $10.0.0.5:001TRQ77AB&"), "img 001T",
                  monitor("STATUS!CHECK!10.0.0.5!001T!T!77!RQ!NEW&"),
                  monitor("STATUS!COME!10.0.0.5!001T!T!77!NEW!NEW&"),
                  monitor("STATUS!STACK!10.0.0.5!001T!T!77!NEW!NEW&"), check(kT, "77", "NEW", 0),
                  commanded("PH10.0.0.5:001T"), monitor("ERROR![044] torn&"),
                  monitor("LOG!%Отправлено на порт% PH10.0.0.5:001T&")});
}

TEST_F(Monitor, AReportFollowsTheErrorOfItsHandler)
{
    trace.each("status", [] { throw std::runtime_error("host trouble"); });
    inject("#10.0.0.5:001Tx00");
    trace.expect({read("#10.0.0.5:001Tx00"), monitor("LOG!%Считано с порта% #10.0.0.5:001Tx00&"),
                  heard(kT, "x"), "error [07] host trouble",
                  monitor("STATUS!COME!10.0.0.5!001T!T!NOCARDNUMBER!x!x&")});
}

TEST_F(Monitor, TextIsOneByteACharacter)
{
    gate->p_hw_ProtocolIn(QStringLiteral("Я\u4e16"));
    trace.expect({read(QStringLiteral("Я\u4e16")), monitor("LOG!%Считано с порта% Я?&")});
}

TEST_F(Monitor, ShowingAStatusIsNotAReport)
{
    gate->ShowinternalStatus(gate.get(), "N", "1", "2", "3", "4", "5", "6");
    trace.expect({"status N!1!2!3!4!5!6"});
}

TEST_F(Monitor, ShowingAStatusNamesTheGivenSender)
{
    TTurnStylerDeviceD24 other;
    const TComponent* sender = nullptr;
    gate->SetOnCheckStatus([&](TComponent* Sender, auto&&...) { sender = Sender; });
    gate->ShowinternalStatus(&other, "N", "1", "2", "3", "4", "5", "6");
    EXPECT_EQ(sender, &other);
}

TEST_F(Monitor, AlarmAndResendAreNotLogged)
{
    gate->SetCheckCross(true);
    gate->SetCheckET(true);
    inject("#10.0.0.9:009TCROSS00");
    trace.take();
    makePass(kT, "77", "WAIT")->Command = "GO1";
    clock.advance(3'000);
    runPass();
    trace.expect({commanded("GO1")});
}

TEST(StandAlone, NothingGoesToTheMonitor)
{
    TD24Fixture fixture;
    fixture.Answers = {{0, 1}};
    fixture.link->Failures = {{"GO", "cut"}};
    fixture.inject("$10.0.0.5:001TRQ77AB");
    fixture.inject("#10.0.0.5:001TPING00");
    fixture.clock.advance(4'000);
    fixture.gate->SetConnector(nullptr);
    fixture.gate->p_hw_CheckStatusAll();
    EXPECT_EQ(fixture.trace.countOf("monitor"), 0);
    EXPECT_GT(fixture.trace.countOf("error"), 1);
}

class Client : public TD24Test
{
protected:
    Client() { follow(); }
};

TEST_F(Client, ALineIsOnlyLoggedAndForwarded)
{
    for (const QString line : {"$10.0.0.5:001TRQ77AB", "#10.0.0.5:001TPING00", "#10.0.0.5:001TCROSS00", "x",
                               "", "#10.0.0.5:001TBTPH00"}) {
        inject(line);
        trace.expect({read(line), monitor(line)});
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_EQ(gate->DeviceList().size(), 0);
}

TEST_F(Client, ALineRefreshesNoController)
{
    gate->DevicePing("10.0.0.5", "001T", "T");
    const double heardAt = gate->DeviceList().at(0)->Pingtime;
    clock.advance(1'000);
    inject("#10.0.0.5:001TPING00");
    EXPECT_EQ(gate->DeviceList().at(0)->Pingtime, heardAt);
}

TEST_F(Client, ALineStartsNoPass)
{
    makePass(kT, "77");
    inject("x");
    trace.expect({read("x"), monitor("x")});
    clock.advance(1'000);
    trace.expect({});
}

TEST_F(Client, ALineIsForwardedWithoutLogHandlerToo)
{
    gate->SetOnLog({});
    inject("$Я");
    trace.expect({monitor("$Я")});
}

TEST_F(Client, PassesThatArePendingGoOn)
{
    gate->SetRemoutDevice(d24::podNone);
    Answers = {{0, 0}};
    startTicks();
    makePass(kT, "77");
    gate->SetRemoutDevice(d24::PodClient);
    clock.advance(10);
    const QString first = stack(kT, "77", "NEW");
    trace.expect({first, echoOf(first), check(kT, "77", "NEW", 0), commanded("PH10.0.0.5:001T"),
                  loggedSend("PH10.0.0.5:001T"), monitor("LOG!%Отправлено на порт% PH10.0.0.5:001T&")});
}

TEST_F(Client, AManualPassIsForwarded)
{
    gate->p_hw_manual("10.0.0.5", "001T", "OPEN");
    trace.expect({read("$10.0.0.5:001TRQ-1-1-1-1-100"), monitor("$10.0.0.5:001TRQ-1-1-1-1-100")});
    EXPECT_EQ(gate->StackItemsCount(), 0);
}

} // namespace
