// Arguments and results between scripts and C++, through the registered entries.

#include "recording_engine.h"
#include "support/text_printers.h"
#include "tnv5/bank/bank_pos.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/panel/turn_styler.h"
#include "tnv5/platform/automation/automation.h"
#include "tnv5/platform/errors.h"
#include "tnv5/registration/load.h"
#include "tnv5/scales/scales_device.h"
#include "tnv5/script/convert.h"
#include "tnv5/script/d24_record.h"
#include "tnv5/switch/switch_device.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QDateTime>
#include <QSet>
#include <gtest/gtest.h>

namespace {

using namespace tnv5;
using platform::EConvertError;

class Calls : public ::testing::Test
{
protected:
    Calls() { registration::load(engine); }
    ~Calls() override { registration::unload(); }

    tests::TRecordingEngine engine;
    testkit::TManualClock clock{testkit::TManualClock::at(12, 0)};
};

TEST_F(Calls, MethodsReachTheirComponent)
{
    connector::TDeviceConnector connector;
    QString heard;
    connector.SetOnGetData([&](auto*, const QString& line) { heard = line; });
    EXPECT_EQ(engine.call("TDeviceConnector.GetCommand", &connector, {"#1"}), QVariant());
    EXPECT_EQ(heard, "#1");
    EXPECT_EQ(engine.call("TDeviceConnector.SendCommand", &connector, {"RL0.0.0.0:000A2"}),
              QVariant(connector.SendCommand("RL0.0.0.0:000A2")));
    EXPECT_EQ(engine.call("TDeviceConnector.CloseAll", &connector), QVariant());
}

TEST_F(Calls, IsConnectedReadsAndWrites)
{
    connector::TDeviceConnector connector;
    testkit::TMemoryPort port;
    connector.SetComport(&port);
    connector.SetConnectorType(connector::podComPort);
    EXPECT_EQ(engine.call("TDeviceConnector.IsConnected", &connector), QVariant(true)); // asking opens
    engine.call("TDeviceConnector.IsConnected:=", &connector, {false});
    EXPECT_FALSE(port.Connected());
    engine.call("TDeviceConnector.IsConnected:=", &connector, {"true"});
    EXPECT_TRUE(port.Connected());
}

TEST_F(Calls, ArgumentsOfAllTypes)
{
    switching::TSwitchDevice lamps;
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_CheckStatus", &lamps, {"0.0.0.0", "000A", 1, "ON", "45000.5"}),
              QVariant("ON"));
    ASSERT_EQ(engine.call("TSwitchDevice.StackItemsCount", &lamps), QVariant(1));
    EXPECT_EQ(lamps.StackItem(0)->Relay, "1");
    EXPECT_EQ(lamps.StackItem(0)->Finishtime, 45'000.5);
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_FindDevice", &lamps, {"", "000A", "1"}), QVariant(0));
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_checktimeout", &lamps, {0.5, 0.25}), QVariant(1));
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_SendComCommand", &lamps, {1}), QVariant(true));
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_relay", &lamps, {"", "000A", "1"}), QVariant(true));
    EXPECT_EQ(engine.call("TSwitchDevice.p_hw_CheckStatusAll", &lamps), QVariant(true));
    EXPECT_EQ(engine.call("TSwitchDevice.Connected", &lamps), QVariant(lamps.Connected()));
}

TEST_F(Calls, MethodsOfTheClassicController)
{
    turnstile::TTurnStylerDevice gate;
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_CheckStatus", &gate, {"01A", "77", "NEW"}),
              QVariant("NEW"));
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_FindDevice", &gate, {"01A"}), QVariant(0));
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_FindDeviceByRelay", &gate, {"02A", "78"}), QVariant(1));
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_SendComCommand", &gate, {0, 1}), QVariant());
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_relay", &gate, {"01A", "1", 1}), QVariant());
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_CheckStatusAll", &gate), QVariant());
    QStringList log;
    gate.SetOnLog([&](auto*, const QString& text) { log += text; });
    EXPECT_EQ(engine.call("TTurnStylerDevice.p_hw_ProtocolIn", &gate, {"#x"}), QVariant());
    EXPECT_FALSE(log.isEmpty());
}

TEST_F(Calls, MethodsOfTheNetworkedController)
{
    d24::TTurnStylerDeviceD24 gates;
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.p_hw_CheckStatus", &gates, {"1", "001G", "G", "77", "NEW"}),
              QVariant("NEW"));
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.p_hw_FindDevice", &gates, {"1", "001G"}), QVariant(0));
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.p_hw_FindDeviceByRelay", &gates, {"1", "001G", "G", "77"}),
              QVariant(0));
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.p_hw_SendComCommand", &gates, {0, 1}), QVariant(true));
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.p_hw_relay", &gates, {"1", "001G", "1", 1}), QVariant(true));
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.SendToMonitor", &gates, {"LOG!x&"}), QVariant());
    EXPECT_EQ(engine.call("TTurnStylerDeviceD24.SetTimerInterval", &gates, {50}), QVariant());
}

TEST_F(Calls, AStringListIsFilledInPlace)
{
    scales::TScalesDevice scale;
    QStringList families;
    scale.GetScalesList(families);
    QVariantList args{QStringList{"old"}};
    EXPECT_EQ(engine.call("TScalesDevice.GetScalesList", &scale, args), QVariant());
    EXPECT_EQ(args.at(0), QVariant(families));
    EXPECT_EQ(engine.call("TScalesDevice.IsConnected", &scale), QVariant(false));
    EXPECT_EQ(engine.call("TScalesDevice.GetWeight", &scale, {true}), QVariant(-1));
    EXPECT_EQ(engine.call("TScalesDevice.SetConnection", &scale, {true}), QVariant(false));
}

TEST_F(Calls, TheCodeOfTheCoffeeMachine)
{
    const QString key = QStringLiteral("00112233445566778899aabbccddeeff");
    const QVariant code = engine.call("_qrcodestr", nullptr, {1, 2, 3, 250, 1, key});
    EXPECT_EQ(code.typeId(), int(QMetaType::QString));
    EXPECT_EQ(code.toString().size(), 34);
    EXPECT_THROW(engine.call("_qrcodestr", nullptr, {1, 2, 3, 250, 1, "no key"}), EConvertError);
}

TEST_F(Calls, WhatCannotBeConvertedCallsNothing)
{
    turnstile::TTurnStylerDevice gate;
    const auto refused = [&](const QVariantList& args) {
        QVariantList copy = args;
        EXPECT_THROW(engine.call("TTurnStylerDevice.p_hw_CheckStatus", &gate, copy), EConvertError);
    };
    refused({});
    refused({"01A", "77"});
    refused({"01A", "77", "NEW", "more"});
    refused({"01A", "77", QVariant()});
    refused({"01A", "77", QVariantList{}});
    EXPECT_THROW(engine.call("TTurnStylerDevice.p_hw_SendComCommand", &gate, {"x", 1}), EConvertError);
    EXPECT_EQ(gate.StackItemsCount(), 0);
}

TEST_F(Calls, AnObjectOfAnotherClassIsRefused)
{
    turnstile::TTurnStylerDevice gate;
    scales::TScalesDevice scale;
    EXPECT_THROW(engine.call("TTurnStylerDevice.Connected", &scale), EConvertError);
    EXPECT_THROW(engine.call("TTurnStylerDevice.Connected", nullptr), EConvertError);
    EXPECT_THROW(engine.call("Add", nullptr, {QVariant::fromValue<QObject*>(&gate)}), EConvertError);
    EXPECT_THROW(engine.call("Add", nullptr, {QVariant()}), EConvertError);
}

TEST_F(Calls, ListsOfGatesAreMadeAndFilled)
{
    panel::TTurnStyler gates;
    const QVariant list = engine.call("Create", nullptr, {QVariant::fromValue<QObject*>(&gates)});
    auto* const made = qobject_cast<panel::TTurnStylerList*>(list.value<QObject*>());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetOwner(), &gates);
    EXPECT_EQ(made->parent(), &gates);
    const QVariant first = engine.call("Add", nullptr, {list});
    engine.call("Add", nullptr, {list});
    EXPECT_EQ(made->Count(), 2);
    EXPECT_EQ(engine.call("TTurnStylerList.Items", made, {0}), first);
    EXPECT_EQ(engine.call("TTurnStylerList.Items", made, {2}).value<QObject*>(), nullptr);
    EXPECT_EQ(engine.call("TTurnStylerList.Items", made, {-1}).value<QObject*>(), nullptr);
    auto* const own = new panel::TTurnStylerItem;
    engine.call("TTurnStylerList.Items:=", made, {1, QVariant::fromValue<QObject*>(own)});
    EXPECT_EQ(made->GetTurnStylerItem(1), own);
    const std::unique_ptr<QObject> nobodys(engine.call("Create", nullptr, {QVariant()}).value<QObject*>());
    EXPECT_EQ(nobodys->parent(), nullptr);
}

TEST_F(Calls, AClickByHand)
{
    panel::TTurnStyler gates;
    auto* const item = gates.TurnStylerList()->Add();
    item->SetGateA("01A");
    QStringList clicks;
    gates.SetOnTurnStylerBtnClick(
        [&](auto*, const QVariant& index, const QVariant& ip, const QVariant& gate) {
            clicks += index.toString() + "/" + ip.toString() + "/" + gate.toString();
        });
    const QVariant sender = QVariant::fromValue<QObject*>(item);
    engine.call("TTurnStyler.CTurnStylerBtnClick", &gates, {sender, 3, "10.0.0.1", "01B"});
    engine.call("TTurnStylerItem.GateABtnclick", item, {sender});
    engine.call("TTurnStylerItem.imgBtnclick", item, {QVariant()});
    EXPECT_EQ(clicks, QStringList({"3/10.0.0.1/01B", "0//01A"}));
    EXPECT_EQ(engine.call("TTurnStyler.FindItemByGate", &gates, {"01A"}), QVariant(0));
}

TEST_F(Calls, GatesOfAListMadeByHandReachTheirPanel)
{
    auto gates = std::make_unique<panel::TTurnStyler>();
    const QVariant owner = QVariant::fromValue<QObject*>(gates.get());
    const QVariant list = engine.call("Create", nullptr, {owner});
    const QVariant first = engine.call("Add", nullptr, {list});
    auto* const item =
        qobject_cast<panel::TTurnStylerItem*>(engine.call("Add", nullptr, {list}).value<QObject*>());
    item->SetGateB("02B");
    QStringList clicks;
    gates->SetOnTurnStylerBtnClick(
        [&](auto* sender, const QVariant& index, const QVariant&, const QVariant& gate) {
            clicks += index.toString() + "/" + gate.toString() + (sender == item ? "" : "?");
        });
    engine.call("TTurnStylerItem.GateBBtnclick", item, {QVariant()});
    EXPECT_EQ(clicks, QStringList{"1/02B"});
    EXPECT_EQ(gates->ASelectedIndex(), 1);
    engine.call("TTurnStylerItem.imgBtnclick", first.value<QObject*>(), {QVariant()});
    EXPECT_EQ(gates->ASelectedIndex(), 0);
    gates.reset(); // with its lists
}

TEST_F(Calls, AListWhosePanelIsGoneIsNobodys)
{
    auto gates = std::make_unique<panel::TTurnStyler>();
    panel::TTurnStylerList list(gates.get());
    auto* const item = list.Add();
    EXPECT_EQ(list.GetOwner(), gates.get());
    gates.reset();
    EXPECT_EQ(list.GetOwner(), nullptr);
    item->GateABtnclick(nullptr);
    list.Clear();
}

/// A library that refuses everything and writes it down.
class TLibrary : public platform::automation::TAutomationObject
{
public:
    using TValue = platform::automation::TValue;
    using TArguments = platform::automation::TArguments;

    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds /*limit*/) override
    {
        QString line = QString::fromUtf16(name.data(), qsizetype(name.size()));
        for (const auto& argument : arguments) {
            line += " " + QString::fromStdU16String(argument.value.toText());
        }
        calls += line;
        return TValue(std::int32_t(1));
    }
    TValue get(std::u16string_view /*name*/) override { return TValue(std::int32_t(1)); }
    void put(std::u16string_view /*name*/, const TValue& /*value*/) override {}
    void setEventHandler(platform::automation::TEventHandler /*handler*/) override {}

    static inline QStringList calls;
};

TEST_F(Calls, TheAutomationObjectIsThereAfterInit)
{
    bank::TBankPOS pos;
    EXPECT_FALSE(engine.call("TBankPOS.IEcrInst", &pos).isValid());
    EXPECT_FALSE(engine.calls.at("TBankPOS.IEcrInst:="));
    const platform::automation::TRegisteredClass ours(u"ECRCommX.BPOS1Lib",
                                                      [] { return std::make_shared<TLibrary>(); });
    pos.SetPosType(1);
    EXPECT_EQ(engine.call("TBankPOS.Init", &pos), QVariant(true));
    EXPECT_EQ(engine.call("TBankPOS.IEcrInst", &pos).value<platform::automation::TObjectPtr>(),
              pos.Instance());
}

TEST_F(Calls, CashAdvanceHasNoMerchant)
{
    bank::TBankPOS pos;
    const platform::automation::TRegisteredClass ours(u"ECRCommX.BPOS1Lib",
                                                      [] { return std::make_shared<TLibrary>(); });
    pos.SetPosType(1);
    ASSERT_TRUE(pos.Init());
    const auto calls = [](const auto& operation) {
        TLibrary::calls.clear();
        operation();
        return TLibrary::calls;
    };
    EXPECT_EQ(calls([&] {
                  engine.call("TBankPOS.CashAdvance", &pos, {100, 7});
              }),
              calls([&] { pos.CashAdvance(100, 7, 0); }));
    EXPECT_NE(calls([&] { pos.CashAdvance(100, 7, 0); }), calls([&] { pos.CashAdvance(100, 7, 5); }));
    EXPECT_THROW(engine.call("TBankPOS.CashAdvance", &pos, {100, 7, 5}), EConvertError);
}

/// What an operation of a terminal tells and calls.
template <class Operation>
QStringList doneBy(bank::TBankPOS& pos, const Operation& operation)
{
    TLibrary::calls.clear();
    QStringList told;
    pos.SetOnLog([&](auto*, const QString& text) { told << text; });
    const bool result = operation();
    pos.SetOnLog({});
    return told + TLibrary::calls + QStringList{result ? "true" : "false"};
}

TEST_F(Calls, EveryOperationOfATerminalIsItself)
{
    bank::TBankPOS pos;
    const platform::automation::TRegisteredClass ours(u"ECRCommX.BPOS1Lib",
                                                      [] { return std::make_shared<TLibrary>(); });
    pos.SetPosType(1);
    ASSERT_TRUE(pos.Init());
    struct TOperation
    {
        const char* name;
        QVariantList args;
        std::function<bool()> direct;
    };
    const std::vector<TOperation> operations{
        {"IsInit", {}, [&] { return pos.IsInit(); }},
        {"Connect", {}, [&] { return pos.Connect(); }},
        {"Disconnect", {}, [&] { return pos.Disconnect(); }},
        {"DeviceInfo", {}, [&] { return pos.DeviceInfo(); }},
        {"Test", {}, [&] { return pos.Test(); }},
        {"Purchase", {100, 7, 5}, [&] { return pos.Purchase(100, 7, 5); }},
        {"PurchaseReturn", {100, "RRN", "ID", 5}, [&] { return pos.PurchaseReturn(100, "RRN", "ID", 5); }},
        {"XReport", {5}, [&] { return pos.XReport(5); }},
        {"ZReport", {5}, [&] { return pos.ZReport(5); }},
    };
    QSet<QStringList> all;
    for (const TOperation& operation : operations) {
        const QStringList direct = doneBy(pos, operation.direct);
        EXPECT_EQ(
            doneBy(pos,
                   [&] {
                       QVariantList args = operation.args;
                       return engine.call(QStringLiteral("TBankPOS.") + operation.name, &pos, args).toBool();
                   }),
            direct)
            << operation.name;
        EXPECT_FALSE(all.contains(direct)) << operation.name << " cannot be told from another one";
        all.insert(direct);
    }
}

TEST_F(Calls, CommandsForOneAddress)
{
    connector::TDeviceConnector connector;
    testkit::TMemoryPort port;
    connector.SetComport(&port);
    connector.SetConnectorType(connector::podComPort);
    port.Open();
    connector.SendDirectCommand("000A", "RL2");
    const QByteArray written = port.takeWritten();
    EXPECT_FALSE(written.isEmpty());
    engine.call("TDeviceConnector.SendDirectCommand", &connector, {"000A", "RL2"});
    EXPECT_EQ(port.takeWritten(), written);
}

TEST_F(Calls, AScaleSetsUpItsPort)
{
    scales::TScalesDevice scale;
    testkit::TMemoryPort port;
    scale.SetComport(&port);
    scale.SetScalesType(1);
    engine.call("TScalesDevice.SetUpComport", &scale);
    EXPECT_EQ(port.BaudRate(), 4800);
}

TEST(Record, AWrapperHoldsACopy)
{
    d24::TRFidInfo record;
    record.CardNumber = "77";
    const QVariant variant = script::ConvertTRFidInfoToVariant(record);
    const auto wrapper = variant.value<script::PRecordWrapper>();
    EXPECT_EQ(wrapper->Fields().join(u' '),
              "IP DeviceType CardNumber Device Status StatusHard Starttime Img sys InfoMess "
              "Command CommandAdd CRC Finish CRCtime");
    EXPECT_EQ(wrapper->Value("CardNumber"), QVariant("77"));
    wrapper->SetValue("CardNumber", 78);
    EXPECT_EQ(record.CardNumber, "77");
    script::ConvertVariantToTRFidInfo(variant, record);
    EXPECT_EQ(record.CardNumber, "78");
}

TEST(Record, EveryFieldIsReadAndWritten)
{
    const auto wrapper = script::d24Record().Create().value<script::PRecordWrapper>();
    int number = 0;
    for (const QString& field : wrapper->Fields()) {
        QVariant value = QString::number(++number);
        if (field == "Img") {
            QImage image(1, 1, QImage::Format_RGB32);
            image.fill(Qt::red);
            value = image;
        } else if (field == "Finish") {
            value = true;
        } else if (field == "Starttime" || field == "CRCtime") {
            value = 0.25 * number;
        } else if (field == "sys") {
            value = number;
        }
        wrapper->SetValue(field, value);
        EXPECT_EQ(wrapper->Value(field), value) << field.toStdString();
    }
    d24::TRFidInfo record;
    script::d24Record().FromVariant(QVariant::fromValue(wrapper), &record);
    EXPECT_EQ(record.IP, "1");
    EXPECT_EQ(record.CRCtime, 0.25 * 15);
    EXPECT_TRUE(record.Finish);
    EXPECT_EQ(script::d24Record().ToVariant(&record).value<script::PRecordWrapper>()->Value("IP"),
              QVariant("1"));
    EXPECT_THROW(wrapper->SetValue("sys", "x"), EConvertError);
    EXPECT_THROW(wrapper->SetValue("Ip", "1"), EConvertError);
    EXPECT_THROW(wrapper->Value("Nothing"), EConvertError);
}

TEST(Record, WhatIsNoWrapperChangesNothing)
{
    class TOther : public script::TRecordWrapper
    {
        QStringList Fields() const override { return {}; }
        QVariant Value(const QString& /*field*/) const override { return {}; }
        void SetValue(const QString& /*field*/, const QVariant& /*value*/) override {}
    };
    d24::TRFidInfo record;
    record.Device = "001G";
    for (const QVariant& value :
         {QVariant(), QVariant("001T"), QVariant(5), QVariant::fromValue(script::PRecordWrapper()),
          QVariant::fromValue(script::PRecordWrapper(std::make_shared<TOther>()))}) {
        script::ConvertVariantToTRFidInfo(value, record);
        EXPECT_EQ(record.Device, "001G");
    }
}

struct TConversion
{
    QVariant given;
    QVariant boolean; // nothing: refused
    QVariant number;
    QVariant text;
};

TEST(Convert, Table)
{
    const QVariant none;
    const QList<TConversion> table{
        {true, true, 1.0, "true"},
        {0, false, 0.0, "0"},
        {2.5, true, 2.5, "2.5"},
        {3e9, true, 3e9, "3000000000"},
        {1e6F, true, 1e6, "1000000"},
        {-9007199254740992.0, true, -9007199254740992.0, "-9007199254740992"},
        {1e21, true, 1e21, "1e+21"},
        {QDateTime(QDate(1970, 1, 1), QTime(12, 0)), none, 25569.5, none},
        {QDate(1899, 12, 29), none, -1.0, none},
        {QTime(6, 0), none, 0.25, none},
        {"True", true, none, "True"},
        {"false", false, none, "false"},
        {" 1 ", true, 1.0, " 1 "},
        {"0", false, 0.0, "0"},
        {"x", none, none, "x"},
        {none, none, none, none},
        {QVariantList{1}, none, none, none},
        {"", none, none, ""},
    };
    const auto tried = [](const auto& conversion) -> QVariant {
        try {
            return conversion();
        } catch (const EConvertError&) {
            return {};
        }
    };
    for (const TConversion& row : table) {
        EXPECT_EQ(tried([&] { return script::ToBoolean(row.given); }), row.boolean)
            << row.given.toString().toStdString();
        EXPECT_EQ(tried([&] { return script::ToDouble(row.given); }), row.number)
            << row.given.toString().toStdString();
        EXPECT_EQ(tried([&] { return script::ToText(row.given); }), row.text)
            << row.given.toString().toStdString();
    }
    EXPECT_EQ(script::ToTextList(QVariantList({"a", 1})), QStringList({"a", "1"}));
    EXPECT_THROW(script::ToTextList("a"), EConvertError);
    EXPECT_THROW(script::ToTextList(QVariantList{QVariant()}), EConvertError);
    EXPECT_TRUE(script::ToImage({}).isNull());
    EXPECT_TRUE(script::ToImage("").isNull());
    EXPECT_THROW(script::ToImage("/no/such.png"), EConvertError);
}

} // namespace
