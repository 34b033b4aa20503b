// What the module registers, in order, and how it goes again.

#include "recording_engine.h"
#include "support/text_printers.h"
#include "tnv5/registration/load.h"
#include "tnv5/script/units.h"

#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using tests::TRecordingEngine;

const QStringList kConnector{
    "classes TDeviceConnector",
    "const podEmpty = int 0",
    "const podComPort = int 1",
    "const podNet = int 2",
    "property TDeviceConnector.IsConnected: boolean",
    "method TDeviceConnector.GetCommand(string): nothing",
    "method TDeviceConnector.SendCommand(string): string",
    "method TDeviceConnector.SendDirectCommand(string, string): nothing",
    "method TDeviceConnector.CloseAll(): nothing",
};

const QStringList kSwitch{
    "classes TSwitchDevice",
    "const podNone = int 0",
    "const podServer = int 1",
    "const PodClient = int 2",
    "const podlog = int 0",
    "const podError = int 1",
    "const PodState = int 2",
    "method TSwitchDevice.p_hw_checktimeout(double, double): integer",
    "method TSwitchDevice.p_hw_FindDevice(string, string, string): integer",
    "method TSwitchDevice.p_hw_SendComCommand(integer): boolean",
    "method TSwitchDevice.p_hw_CheckStatus(string, string, string, string, double): string",
    "method TSwitchDevice.p_hw_ProtocolIn(string): nothing",
    "method TSwitchDevice.p_hw_relay(string, string, string): boolean",
    "method TSwitchDevice.p_hw_CheckStatusAll(): boolean",
    "method TSwitchDevice.Connected(): boolean",
    "method TSwitchDevice.StackItemsCount(): integer",
};

const QStringList kTurnstile{
    "const podNone = int 0",
    "const podServer = int 1",
    "const PodClient = int 2",
    "const podlog = int 0",
    "const podError = int 1",
    "const PodState = int 2",
    "classes TTurnStylerDevice",
    "method TTurnStylerDevice.p_hw_FindDevice(string): integer",
    "method TTurnStylerDevice.p_hw_FindDeviceByRelay(string, string): integer",
    "method TTurnStylerDevice.p_hw_CheckStatus(string, string, string): string",
    "method TTurnStylerDevice.p_hw_ProtocolIn(string): nothing",
    "method TTurnStylerDevice.p_hw_SendComCommand(integer, integer): nothing",
    "method TTurnStylerDevice.p_hw_relay(string, string, integer): nothing",
    "method TTurnStylerDevice.p_hw_CheckStatusAll(): nothing",
    "method TTurnStylerDevice.Connected(): boolean",
};

const QStringList kPanel{
    "classes TTurnStyler, TTurnStylerList (not made by scripts), TTurnStylerItem (not made by scripts)",
    "method TTurnStyler.load(): nothing",
    "method TTurnStyler.save(): nothing",
    "method TTurnStyler.FindItemByGate(string): integer",
    "method TTurnStyler.FindItemByGateEntry(string): integer",
    "method TTurnStyler.Setitemstate(string, integer, string): nothing",
    "method TTurnStyler.CTurnStylerBtnClick(object, integer, string, string): nothing",
    "method TTurnStyler.SetUpItems(): nothing",
    "method TTurnStyler.ClearItems(): nothing",
    "method TTurnStylerItem.GateABtnclick(object): nothing",
    "method TTurnStylerItem.GateBBtnclick(object): nothing",
    "method TTurnStylerItem.imgBtnclick(object): nothing",
    "proc Create(object): object",
    "proc Add(object): object",
    "property TTurnStylerList.Items[integer]: object",
};

const QStringList kD24{
    "const podNone = int 0",
    "const podServer = int 1",
    "const PodClient = int 2",
    "const podlog = int 0",
    "const podError = int 1",
    "const podState = int 2",
    "const DoorDelay = int 2",
    "const ByTimer = bool false",
    "classes TTurnStylerDeviceD24",
    "method TTurnStylerDeviceD24.p_hw_FindDevice(string, string): integer",
    "method TTurnStylerDeviceD24.p_hw_FindDeviceByRelay(string, string, string, string): integer",
    "method TTurnStylerDeviceD24.p_hw_SendComCommand(integer, integer): boolean",
    "method TTurnStylerDeviceD24.p_hw_CheckStatus(string, string, string, string, string): string",
    "method TTurnStylerDeviceD24.p_hw_ProtocolIn(string): nothing",
    "method TTurnStylerDeviceD24.p_hw_relay(string, string, string, integer): boolean",
    "method TTurnStylerDeviceD24.p_hw_CheckStatusAll(): boolean",
    "method TTurnStylerDeviceD24.Connected(): boolean",
    "method TTurnStylerDeviceD24.SetTimerInterval(integer): nothing",
    "method TTurnStylerDeviceD24.SendToMonitor(string): nothing",
    "record TRFidInfo",
};

const QStringList kCoffee{
    "const UnixStartDate = QDateTime 1970-01-01T00:00:00.000",
    "const UnixDateDelta = int 25569",
    "const SecPerMin = int 60",
    "const SecPerHour = int 3600",
    "const SecPerDay = int 86400",
    "const MinDayFraction = double 0.0006944444444444445",
    "proc _qrcodestr(integer, integer, integer, integer, integer, string): string",
};

const QStringList kScales{
    "event TLogEvent(object, string)",
    "event TWeightEvent(object, integer)",
    "classes TScalesDevice",
    "method TScalesDevice.IsConnected(): boolean",
    "method TScalesDevice.SetConnection(boolean): boolean",
    "method TScalesDevice.GetScalesList(string list): nothing",
    "method TScalesDevice.GetWeight(boolean): integer",
    "method TScalesDevice.SetUpComport(): nothing",
};

const QStringList kBank{
    "event TLogEvent(object, string)",
    "event TStatusEvent(object, integer, string)",
    "classes TBankPOS",
    "property TBankPOS.IEcrInst: object, read-only",
    "method TBankPOS.Init(): boolean",
    "method TBankPOS.IsInit(): boolean",
    "method TBankPOS.Connect(): boolean",
    "method TBankPOS.Disconnect(): boolean",
    "method TBankPOS.DeviceInfo(): boolean",
    "method TBankPOS.Test(): boolean",
    "method TBankPOS.Purchase(integer, integer, integer): boolean",
    "method TBankPOS.CashAdvance(integer, integer): boolean",
    "method TBankPOS.PurchaseReturn(integer, wide string, wide string, integer): boolean",
    "method TBankPOS.XReport(integer): boolean",
    "method TBankPOS.ZReport(integer): boolean",
};

const QList<QStringList> kUnits{kConnector, kSwitch, kTurnstile, kPanel, kD24, kCoffee, kScales, kBank};

/// What is left to remove of a unit: constants, procedures, records, events, classes; each kind last one
/// first.
QStringList removed(const QStringList& unit)
{
    QStringList lines;
    for (const char* const kind : {"const ", "proc ", "record ", "event ", "classes "}) {
        for (auto line = unit.rbegin(); line != unit.rend(); ++line) {
            if (line->startsWith(QLatin1String(kind))) {
                lines += "- " + *line;
            }
        }
    }
    return lines;
}

QStringList everything()
{
    QStringList lines;
    for (const QStringList& unit : kUnits) {
        lines += unit;
    }
    return lines;
}

QStringList everythingRemoved()
{
    QStringList lines;
    for (auto unit = kUnits.rbegin(); unit != kUnits.rend(); ++unit) {
        lines += removed(*unit);
    }
    return lines;
}

TEST(Registration, EachUnitRegistersItsTableInOrder)
{
    const auto units = script::scriptUnits();
    ASSERT_EQ(qsizetype(units.size()), kUnits.size());
    for (qsizetype i = 0; i < kUnits.size(); ++i) {
        TRecordingEngine engine;
        {
            const script::TScriptRegistration registration(engine, units[std::size_t(i)]);
            EXPECT_EQ(engine.take(), kUnits[i]);
            EXPECT_FALSE(engine.isEmpty());
        }
        EXPECT_EQ(engine.take(), removed(kUnits[i]));
        EXPECT_TRUE(engine.isEmpty());
    }
}

TEST(Registration, UnitsHaveTheirNames)
{
    QStringList names;
    for (const script::TScriptUnit& unit : script::scriptUnits()) {
        names += unit.Name;
    }
    EXPECT_EQ(names.join(u' '), "connector switch turnstile panel D24 coffee scales bank");
}

TEST(Registration, TheModuleRegistersAllAndRemovesThemInReverse)
{
    TRecordingEngine engine;
    for (int cycle = 0; cycle < 3; ++cycle) {
        registration::load(engine);
        EXPECT_EQ(engine.take(), everything());
        registration::unload();
        EXPECT_EQ(engine.take(), everythingRemoved());
        EXPECT_TRUE(engine.isEmpty());
    }
}

TEST(Registration, LoadsAreCounted)
{
    TRecordingEngine engine;
    registration::load(engine);
    engine.take();
    registration::load(engine);
    EXPECT_EQ(engine.take(), QStringList());
    registration::unload();
    EXPECT_EQ(engine.take(), QStringList());
    registration::unload();
    EXPECT_EQ(engine.take(), everythingRemoved());
    registration::unload(); // one too many
    EXPECT_EQ(engine.take(), QStringList());
    registration::load(engine);
    EXPECT_EQ(engine.take(), everything());
    registration::unload();
}

TEST(Registration, AnEngineThatRefusesIsLeftAsItWas)
{
    for (const QString& line : everything()) {
        TRecordingEngine engine;
        engine.refused = line;
        EXPECT_THROW(registration::load(engine), platform::Exception);
        EXPECT_TRUE(engine.isEmpty()) << line.toStdString();
        engine.refused.clear();
        engine.take();
        registration::load(engine);
        EXPECT_EQ(engine.take(), everything());
        registration::unload();
    }
}

TEST(Registration, AHostThatForgetsToUnloadEnds)
{
    EXPECT_EXIT(
        {
            {
                TRecordingEngine engine;
                registration::load(engine);
            }
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(Registration, EqualNamesOfOtherUnitsStay)
{
    TRecordingEngine engine;
    const auto first = std::make_unique<script::TScriptRegistration>(engine, script::switchUnit());
    {
        const script::TScriptRegistration second(engine, script::turnstileUnit());
    }
    QStringList left;
    for (const auto& [handle, line] : engine.handles) {
        left += line;
    }
    EXPECT_EQ(left, kSwitch.filter(QStringLiteral("const ")));
}

} // namespace
