// Lines that begin with "#".

#include "d24_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class StateLine : public TD24Test
{
protected:
    StateLine() { startTicks(); }
};

QString line(const QString& state)
{
    return "#10.0.0.5:001T" + state + "00";
}

TEST_F(StateLine, ConnectionAndItsLoss)
{
    inject(line("DC"));
    trace.expect({read(line("DC")), noted(kT, "CONNECTED"), heard(kT, "DC")});
    inject(line("CC"));
    trace.expect({read(line("CC")), noted(kT, "DISCONNECTED"), heard(kT, "CC")});
}

TEST_F(StateLine, Ping)
{
    inject(line("PING"));
    trace.expect({read(line("PING")), noted(kT, "PING"), heard(kT, "PING")});
    EXPECT_EQ(gate->DeviceList().size(), 1);
    inject(line("PING"));
    trace.expect({read(line("PING")), noted(kT, "PING"), heard(kT, "PING")});
    EXPECT_EQ(gate->DeviceList().size(), 1);
}

TEST_F(StateLine, WordsMatchInAnyCaseAndAreReportedAsReceived)
{
    inject(line("dc"));
    trace.expect({read(line("dc")), noted(kT, "CONNECTED"), heard(kT, "dc")});
    inject(line("cC"));
    trace.expect({read(line("cC")), noted(kT, "DISCONNECTED"), heard(kT, "cC")});
    inject(line("Ping"));
    trace.expect({read(line("Ping")), noted(kT, "PING"), heard(kT, "Ping")});
    inject(line("cRoSs"));
    trace.expect({read(line("cRoSs")), noted(kT, "CROSS"), heard(kT, "cRoSs")});
    inject(line("btph"));
    trace.expect({read(line("btph")), "img 001T", looked(kT, kButtonCard, "NEW"), heard(kT, "btph")});
}

TEST_F(StateLine, WordsMatchWhole)
{
    for (const char* state : {"", "D", "DCX", "XDC", " DC", "DC ", "PINGS", "CROSSX", "XCROSS", "BTPH1",
                              "RELAY1Y", "HWGX=N/", "RQ77", "ДС"}) {
        inject(line(state));
        trace.expect({read(line(state)), heard(kT, state)});
    }
    EXPECT_EQ(gate->StackItemsCount(), 0);
    EXPECT_EQ(gate->DeviceList().size(), 0);
}

TEST_F(StateLine, TheTypeIsReportedAsParsed)
{
    inject("#10.0.0.5:002GDC00");
    inject("#10.0.0.5:003ICROSS00");
    inject("#10.0.0.5:004Dx00");
    trace.expect({read("#10.0.0.5:002GDC00"), noted(kG, "CONNECTED"), heard(kG, "DC"),
                  read("#10.0.0.5:003ICROSS00"), noted(kI, "CROSS"), heard(kI, "CROSS"),
                  read("#10.0.0.5:004Dx00"), heard("10.0.0.5!004D!T", "x")});
}

TEST_F(StateLine, AShortOneIsHandledWithWhatItHas)
{
    inject("#");
    trace.expect({read("#"), heard("!#!T", "")});
    inject("#1:");
    trace.expect({read("#1:"), heard("1!!T", "")});
    inject("#01TDC00");
    trace.expect({read("#01TDC00"), noted("!#01T!T", "CONNECTED"), heard("!#01T!T", "DC")});
}

// Crossings

TEST_F(StateLine, ACrossingIsReportedWithoutAlarm)
{
    inject(line("CROSS"));
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), heard(kT, "CROSS")});
}

TEST_F(StateLine, ACrossingSoundsTheAlarm)
{
    gate->SetCheckCross(true);
    inject(line("CROSS"));
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), commanded("AL10.0.0.5:001T"), heard(kT, "CROSS")});
}

TEST_F(StateLine, AnAlarmWithoutConnectorIsSkipped)
{
    gate->SetCheckCross(true);
    gate->SetConnector(nullptr);
    gate->p_hw_ProtocolIn(line("CROSS"));
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), heard(kT, "CROSS")});
    gate->SetConnector(link.get());
    link.reset();
    gate->p_hw_ProtocolIn(line("CROSS"));
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), heard(kT, "CROSS")});
}

TEST_F(StateLine, ACrossingDuringAPassOfThatLinkIsSilent)
{
    gate->SetCheckCross(true);
    makePass("10.0.0.5!009G!G", "77", "WAIT"); // another controller of the link
    inject(line("CROSS"));
    trace.expect({read(line("CROSS")), heard(kT, "CROSS")});
    gate->StackItem(0)->IP = "10.0.0.6";
    gate->StackItem(0)->Device = "001T"; // the same controller by another link
    inject(line("CROSS"));
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), commanded("AL10.0.0.5:001T"), heard(kT, "CROSS")});
}

TEST_F(StateLine, AFailingAlarmEndsTheLine)
{
    gate->SetCheckCross(true);
    link->Failures["AL"] = "cut";
    EXPECT_THROW(inject(line("CROSS")), platform::EComPort);
    trace.expect({read(line("CROSS")), noted(kT, "CROSS"), commanded("AL10.0.0.5:001T")});
}

// The exit button

TEST_F(StateLine, TheButtonMakesAPass)
{
    inject(line("BTPH"));
    trace.expect({read(line("BTPH")), "img 001T", looked(kT, kButtonCard, "NEW"), heard(kT, "BTPH")});
    ASSERT_EQ(gate->StackItemsCount(), 1);
    EXPECT_EQ(gate->StackItem(0)->CardNumber, kButtonCard);
    EXPECT_EQ(gate->StackItem(0)->IP, "10.0.0.5");
    EXPECT_EQ(gate->StackItem(0)->DeviceType, "T");
    EXPECT_EQ(statusOf(0), "NEW");
}

TEST_F(StateLine, TheButtonOpensANewPass)
{
    const d24::PRFidInfo pass = makePass("1!001T!G", "77");
    pass->InfoMess = "|Hello|";
    trace.OnLine = [&](const QString& seen) {
        EXPECT_EQ(pass->Status, seen.startsWith("status COME") ? "OPEN" : "NEW"); // opened after the commands
    };
    inject(line("BTPH"));
    trace.OnLine = {};
    trace.expect({read(line("BTPH")), commanded("SH1:001T|Hello|"), commanded("GO1:001T|Hello|"),
                  loggedSend("GO1:001T|Hello|"), heard(kT, "BTPH")});
    EXPECT_EQ(pass->Status, "OPEN");
    EXPECT_EQ(gate->StackItemsCount(), 1);
}

TEST_F(StateLine, TheButtonOpensANewPassAlsoWithoutLink)
{
    const d24::PRFidInfo pass = makePass(kT, "77");
    link->Up = false;
    inject(line("BTPH"));
    trace.expect({read(line("BTPH")), kPortClosed, heard(kT, "BTPH")});
    EXPECT_EQ(pass->Status, "OPEN");
}

TEST_F(StateLine, TheButtonLeavesAPassInAnyOtherState)
{
    const d24::PRFidInfo pass = makePass(kT, "77");
    for (const char* status : {"OPEN", "CLOSE", "NOANSWER", "FINISH", "PROGRESSSTART", "PROGRESS", "TIMEOUT",
                               "CRC-ERROR", "new", ""}) {
        pass->Status = status;
        inject(line("BTPH"));
        trace.expect({read(line("BTPH")), heard(kT, "BTPH")});
        EXPECT_EQ(pass->Status, status);
        EXPECT_EQ(gate->StackItemsCount(), 1);
    }
}

TEST_F(StateLine, TheButtonPassRunsAtOnceWhenTheTimerIsOff)
{
    TD24Fixture fixture;
    fixture.Answers = {{0, 1}};
    fixture.inject(line("BTPH"));
    fixture.trace.expect({read(line("BTPH")), "img 001T", looked(kT, kButtonCard, "NEW"), heard(kT, "BTPH"),
                          stack(kT, kButtonCard, "NEW"), check(kT, kButtonCard, "NEW", 0)});
    EXPECT_EQ(fixture.statusOf(0), "OPEN"); // no command: the controller opens by itself
    fixture.clock.advance(10);
    fixture.trace.expect({stack(kT, kButtonCard, "OPEN")});
    EXPECT_EQ(fixture.statusOf(0), "FINISH");
}

} // namespace
