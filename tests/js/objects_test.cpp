// Objects, their properties and methods, as a script sees them.

#include "script_fixture.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TObjectFixture : TScriptFixture
{
    TObjectFixture() { run("var gate = new TTurnStylerDevice()"); }
};
using ScriptObjects = TTestOn<TObjectFixture>;

TEST_F(ScriptObjects, PublishedPropertiesAreReadAndWritten)
{
    run("gate.TimeOut = 7; gate.DoorIndex = 'ABD'; gate.DeviceList = ['01A', '02A']; gate.RemoutDevice = 2");
    EXPECT_EQ(run("[gate.TimeOut, gate.DoorIndex, gate.DeviceList, gate.RemoutDevice]").toList(),
              (QVariantList{7, "ABD", QVariantList{"01A", "02A"}, 2}));
    EXPECT_EQ(run("gate.RemoutDevice === PodClient").toBool(), true);
    EXPECT_EQ(run("gate.ComPort").isValid(), false);
    run("gate.ComPort = port");
    EXPECT_EQ(run("gate.ComPort === port && gate.ComPort.Connected").toBool(), true);
    run("gate.ComPort = null");
    EXPECT_EQ(run("gate.ComPort === null").toBool(), true);
}

TEST_F(ScriptObjects, ValuesAreConvertedOrRefused)
{
    run("gate.TimeOut = '12'; gate.DoorIndex = 5");
    EXPECT_EQ(run("[gate.TimeOut, gate.DoorIndex]").toList(), (QVariantList{12, "5"}));
    for (const char* wrong : {"'abc'", "null", "undefined", "[1]", "gate", "4e9", "NaN"}) {
        EXPECT_TRUE(failing(QStringLiteral("gate.TimeOut = %1").arg(wrong))
                        .startsWith("club.js:1: TypeError: TTurnStylerDevice.TimeOut: "))
            << wrong;
    }
    EXPECT_EQ(failing("gate.TimeOut = {}"), "club.js:1: TypeError: An object of the script cannot be passed");
    EXPECT_EQ(failing("gate.TimeOut = Symbol()"), "club.js:1: TypeError: A symbol cannot be passed");
    run("gate.RemoutDevice = 7"); // any number is harmless
    EXPECT_EQ(failing("gate.ComPort = gate"), "club.js:1: TypeError: TTurnStylerDevice.ComPort: "
                                              "'' is not an object of the class TComPort");
    EXPECT_EQ(run("[gate.TimeOut, gate.RemoutDevice, gate.ComPort]").toList(),
              (QVariantList{12, 7, QVariant()}));
}

TEST_F(ScriptObjects, UnknownNamesAreErrors)
{
    const QString unknown = "club.js:1: TypeError: TTurnStylerDevice has no property '%1'";
    EXPECT_EQ(failing("gate.OnChekSQL = () => {}"), unknown.arg("OnChekSQL"));
    EXPECT_EQ(failing("gate.Timeout = 1"), unknown.arg("Timeout"));
    EXPECT_EQ(failing("gate.timeout"), unknown.arg("timeout"));
    EXPECT_EQ(failing("'use strict'; gate.connected()"), unknown.arg("connected"));
    for (const char* hidden : {"objectName", "deleteLater", "destroyed", "p_hw_CallStackArray",
                               "StackItemsCount", "SetTimerInterval", "StackArray"}) {
        EXPECT_EQ(failing(QStringLiteral("gate.%1").arg(hidden)), unknown.arg(hidden)) << hidden;
        EXPECT_EQ(failing(QStringLiteral("gate.%1 = 1").arg(hidden)), unknown.arg(hidden)) << hidden;
    }
    EXPECT_EQ(failing("delete gate.TimeOut"),
              "club.js:1: TypeError: TTurnStylerDevice cannot be changed in this way");
    EXPECT_EQ(failing("Object.defineProperty(gate, 'x', {value: 1})"),
              "club.js:1: TypeError: TTurnStylerDevice cannot be changed in this way");
}

TEST_F(ScriptObjects, ExactlyTheRegisteredMethodsAreThere)
{
    EXPECT_EQ(run("var all = ''; for (const name of ['p_hw_FindDevice', 'p_hw_FindDeviceByRelay', "
                  "'p_hw_CheckStatus', 'p_hw_ProtocolIn', 'p_hw_SendComCommand', 'p_hw_relay', "
                  "'p_hw_CheckStatusAll', 'Connected']) all += typeof gate[name] + (name in gate); all")
                  .toString(),
              QStringLiteral("functiontrue").repeated(8));
    EXPECT_EQ(run("'p_hw_SQLCheck' in gate").toBool(), false);
}

TEST_F(ScriptObjects, KeysArePublishedProperties)
{
    EXPECT_EQ(run("Object.keys(port)").toList(),
              (QVariantList{"Port", "BaudRate", "DataBits", "Parity", "StopBits", "ReadGap", "Connected"}));
    EXPECT_EQ(run("'TimeOut' in gate").toBool(), true);
    EXPECT_EQ(run("'objectName' in gate").toBool(), false);
}

TEST_F(ScriptObjects, HaveOneWrapperEach)
{
    EXPECT_EQ(run("gate === gate && new TTurnStylerDevice() !== gate").toBool(), true);
    EXPECT_EQ(run("gate instanceof TTurnStylerDevice").toBool(), true);
    EXPECT_EQ(run("gate instanceof TScalesDevice").toBool(), false);
    EXPECT_EQ(run("gate.constructor === TTurnStylerDevice && TTurnStylerDevice.name").toString(),
              "TTurnStylerDevice");
    EXPECT_EQ(run("gate.Connected === new TTurnStylerDevice().Connected").toBool(), true);
}

TEST_F(ScriptObjects, AreMadeWithNew)
{
    EXPECT_EQ(failing("TScalesDevice()"), "club.js:1: TypeError: TScalesDevice needs new");
    EXPECT_EQ(failing("new TScalesDevice(1)"), "club.js:1: TypeError: TScalesDevice takes no arguments");
    EXPECT_EQ(failing("new TTurnStylerList()"),
              "club.js:1: TypeError: TTurnStylerList is not made by scripts");
    EXPECT_EQ(engine->componentCount(), 1);
}

TEST_F(ScriptObjects, AllSevenClassesAreMade)
{
    EXPECT_EQ(run("String([new TDeviceConnector(), new TSwitchDevice(), new TTurnStylerDevice(), "
                  "new TTurnStylerDeviceD24(), new TScalesDevice(), new TBankPOS()])")
                  .toString(),
              "[object TDeviceConnector],[object TSwitchDevice],[object TTurnStylerDevice],"
              "[object TTurnStylerDeviceD24],[object TScalesDevice],[object TBankPOS]");
}

TEST_F(ScriptObjects, OfTheHostHavePropertiesOnly)
{
    run("port.BaudRate = 19200; port.Connected = false");
    EXPECT_EQ(port->BaudRate(), 19200);
    EXPECT_FALSE(port->Connected());
    EXPECT_EQ(failing("port.Open()"), "club.js:1: TypeError: TMemoryPort has no property 'Open'");
    port->OpenFailure = "no such port";
    EXPECT_EQ(failing("port.Connected = true"), "club.js:1: Error: no such port");
    EXPECT_EQ(run("try { port.Connected = true } catch (e) { e.message }").toString(), "no such port");
}

TEST_F(ScriptObjects, ReadOnlyPropertiesStayAsTheyAre)
{
    EXPECT_EQ(failing("new TBankPOS().LastError = 1"),
              "club.js:1: TypeError: TBankPOS.LastError is read-only");
    EXPECT_EQ(failing("new TBankPOS().IEcrInst = null"),
              "club.js:1: TypeError: TBankPOS.IEcrInst is read-only");
}

TEST_F(ScriptObjects, DestroyedOnesAreErrors)
{
    auto other = std::make_unique<TMemoryPort>();
    const auto handle = engine->RegisterObject("other", other.get());
    EXPECT_EQ(run("gate.ComPort = other; other.BaudRate").toInt(), 9600);
    const int objects = engine->objectCount();
    other.reset();
    EXPECT_EQ(engine->objectCount(), objects - 1);
    EXPECT_EQ(failing("other.BaudRate"), "club.js:1: Error: The object has been destroyed");
    EXPECT_EQ(failing("other.BaudRate = 1"), "club.js:1: Error: The object has been destroyed");
    EXPECT_EQ(failing("gate.ComPort = other"), "club.js:1: Error: The object has been destroyed");
    EXPECT_EQ(run("gate.ComPort").isValid(), false);
    engine->UnregisterObject(handle);
    EXPECT_EQ(run("typeof other").toString(), "undefined");
}

TEST_F(ScriptObjects, RegisteredPropertiesGoBeforePublishedOnes)
{
    run("var bus = new TDeviceConnector(); bus.ConnectorType = podComPort; bus.ComPort = port");
    EXPECT_EQ(run("bus.IsConnected").toBool(), true);
    run("bus.IsConnected = false");
    EXPECT_FALSE(port->Connected());
    EXPECT_EQ(failing("bus.IsConnected = 'perhaps'"), "club.js:1: TypeError: 'perhaps' is not a truth value");
}

TEST_F(ScriptObjects, MethodsConvertTheirArguments)
{
    run("gate.ComPort = port");
    trace.take();
    EXPECT_EQ(run("[gate.Connected(), gate.p_hw_FindDevice('01A')]").toList(), (QVariantList{true, -1}));
    EXPECT_EQ(run("gate.p_hw_relay('01A', 2, '1')").isValid(), false);
    EXPECT_EQ(trace.take(), QStringList({wrote("$01A20066\r")}));
}

TEST_F(ScriptObjects, WrongArgumentsRaiseAndNothingIsCalled)
{
    run("gate.ComPort = port");
    trace.take();
    EXPECT_EQ(failing("gate.p_hw_relay('01A', '2')"),
              "club.js:1: TypeError: p_hw_relay takes 3 arguments, not 2");
    EXPECT_EQ(failing("gate.p_hw_relay('01A', '2', 1, 1)"),
              "club.js:1: TypeError: p_hw_relay takes 3 arguments, not 4");
    EXPECT_EQ(failing("gate.p_hw_FindDevice()"),
              "club.js:1: TypeError: p_hw_FindDevice takes 1 argument, not 0");
    for (const char* wrong :
         {"'01A', '2', 'no number'", "'01A', '2', null", "'01A', null, 1", "undefined, '2', 1",
          "'01A', [], 1", "{}, '2', 1", "() => 1, '2', 1", "gate, '2', 1", "'01A', '2', 3000000000"}) {
        EXPECT_TRUE(failing(QStringLiteral("gate.p_hw_relay(%1)").arg(wrong)).contains("TypeError")) << wrong;
    }
    trace.expect({});
}

TEST_F(ScriptObjects, MethodsNeedTheirObject)
{
    EXPECT_EQ(failing("const f = gate.Connected; f()"),
              "club.js:1: TypeError: Connected is a method of TTurnStylerDevice");
    EXPECT_EQ(failing("gate.Connected.call(port)"),
              "club.js:1: TypeError: TMemoryPort has no method 'Connected'");
    EXPECT_EQ(run("gate.Connected.call(new TTurnStylerDevice())").toBool(), false);
}

TEST_F(ScriptObjects, StringListsAreArraysFilledInPlace)
{
    EXPECT_EQ(
        run("const list = ['old']; const same = list; new TScalesDevice().GetScalesList(list); "
            "[same === list, list.length > 7, list[0]]")
            .toList(),
        run("const given = []; new TScalesDevice().GetScalesList(given); [true, true, given[0]]").toList());
    EXPECT_EQ(failing("new TScalesDevice().GetScalesList('text')"),
              "club.js:1: TypeError: GetScalesList needs an array to fill");
    EXPECT_EQ(failing("new TScalesDevice().GetScalesList([{}])"),
              "club.js:1: TypeError: An object of the script cannot be passed");
}

TEST_F(ScriptObjects, ParametersByReferenceAreObjectsWithAValue)
{
    proc("Swap", [](int& number, const QString& by, QString& text) {
        text += by + QString::number(number);
        number = 7;
        return 5;
    });
    EXPECT_EQ(run("const a = {value: 1}, b = {value: 'x'}; [Swap(a, '-', b), a.value, b.value]").toList(),
              (QVariantList{5, 7, "x-1"}));
    const QString needed =
        "club.js:1: TypeError: Swap changes this argument: it needs an object with a value";
    for (const char* wrong : {"1", "null", "[1]", "{}", "gate", "'x'"}) {
        EXPECT_EQ(failing(QStringLiteral("Swap(%1, '-', {value: 'x'})").arg(wrong)), needed) << wrong;
    }
    EXPECT_TRUE(failing("Swap({value: 'x'}, '-', {value: 'x'})").contains("TypeError"));
    EXPECT_EQ(failing("Swap({get value() { throw new Error('mine') }}, '-', {value: 'x'})"),
              "club.js:1: Error: mine");
}

TEST_F(ScriptObjects, ExceptionsOfTheComponentsAreErrorsToCatch)
{
    proc("Fail", [] { throw platform::EComPort("cable is out"); });
    proc("Odd", [] { throw 5; });
    EXPECT_EQ(failing("\nFail()"), "club.js:2: Error: cable is out");
    EXPECT_EQ(run("try { Fail() } catch (e) { [e instanceof Error, e.message] }").toList(),
              (QVariantList{true, "cable is out"}));
    EXPECT_EQ(failing("Odd()"), "club.js:1: Error: Unknown exception");
    EXPECT_EQ(run("1 + 1").toInt(), 2);
}

TEST_F(ScriptObjects, ValuesGoThroughUnchanged)
{
    proc("Echo", [](const QVariant& value) { return value; });
    EXPECT_EQ(
        run("[0, -0, 1, -7, 2.5, 2147483647, -2147483648, 4294967296, true, false, '', 'Ы', null, undefined]"
            ".every(v => Echo(v) === (v === undefined ? null : v))")
            .toBool(),
        true);
    EXPECT_EQ(run("JSON.stringify(Echo([1, [2, ['x', null]], true]))").toString(),
              "[1,[2,[\"x\",null]],true]");
    EXPECT_EQ(run("Echo(gate) === gate && Echo([port])[0] === port").toBool(), true);
    EXPECT_TRUE(failing("const a = []; a[0] = a; Echo(a)").contains("RangeError: Maximum call stack"));
}

TEST_F(ScriptObjects, EntriesOfDeviceListsAreObjectsWithFields)
{
    run("var lamps = new TSwitchDevice(); lamps.p_hw_ProtocolIn('#10.0.0.5:000APING5A')");
    EXPECT_EQ(run("lamps.DeviceList.length").toInt(), 1);
    EXPECT_EQ(run("const one = lamps.DeviceList[0]; [one.IP, one.Device, typeof one.DeviceType, typeof "
                  "one.Pingtime]")
                  .toList(),
              (QVariantList{"10.0.0.5", "000A", "string", "number"}));
    EXPECT_EQ(failing("lamps.DeviceList = []"),
              "club.js:1: TypeError: TSwitchDevice.DeviceList is read-only");
}

TEST_F(ScriptObjects, TheCoffeeProcedureIsThere)
{
    EXPECT_EQ(run("typeof _qrcodestr").toString(), "function");
    EXPECT_TRUE(failing("_qrcodestr(1)").contains("_qrcodestr takes 6 arguments, not 1"));
}

} // namespace
