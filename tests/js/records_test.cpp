// Records and automation objects.

#include "script_fixture.h"
#include "tnv5/script/d24_record.h"
#include "tnv5/testing/memory_library.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;
using platform::automation::TArguments;
using platform::automation::TRegisteredClass;
using platform::automation::TValue;

using ScriptRecords = TScriptTest;

TEST_F(ScriptRecords, FieldsAreReadAndWritten)
{
    EXPECT_EQ(
        run("var r = new TRFidInfo(); Object.keys(r).join()").toString(),
        "IP,DeviceType,CardNumber,Device,Status,StatusHard,Starttime,Img,sys,InfoMess,Command,CommandAdd,"
        "CRC,Finish,CRCtime");
    EXPECT_EQ(run("r.CardNumber = 77; r.Starttime = 0.5; r.Finish = true; r.sys = '3';"
                  "[r.CardNumber, r.Starttime, r.Finish, r.sys, r.IP, r.Img]")
                  .toList(),
              (QVariantList{"77", 0.5, true, 3, "", QVariant()}));
    EXPECT_EQ(failing("r.Card = 1"), "club.js:1: TypeError: TRFidInfo has no field 'Card'");
    EXPECT_EQ(failing("r.Card"), "club.js:1: TypeError: TRFidInfo has no field 'Card'");
    EXPECT_TRUE(failing("r.sys = 'x'").contains("TypeError"));
    EXPECT_EQ(failing("TRFidInfo()"), "club.js:1: TypeError: TRFidInfo needs new, and takes no arguments");
}

TEST_F(ScriptRecords, AWrapperHoldsACopy)
{
    d24::TRFidInfo record;
    record.Device = "001T";
    proc("Given", [&] { return script::ConvertTRFidInfoToVariant(record); });
    proc("Take", [&](const QVariant& value) {
        script::ConvertVariantToTRFidInfo(value, record);
        return 0;
    });
    EXPECT_EQ(run("var a = Given(), b = Given(); a.Device = '002T'; [a.Device, b.Device]").toList(),
              (QVariantList{"002T", "001T"}));
    EXPECT_EQ(record.Device, "001T");
    run("Take(a)");
    EXPECT_EQ(record.Device, "002T");
    run("Take(5); Take(null); a.Device = 'x'");
    EXPECT_EQ(record.Device, "002T");
}

TEST_F(ScriptRecords, UnregisteredOnesAreGone)
{
    run("var make = TRFidInfo, r = new TRFidInfo()");
    registration::unload();
    EXPECT_EQ(run("typeof TRFidInfo").toString(), "undefined");
    EXPECT_EQ(failing("new make()"), "club.js:1: Error: The record is not registered any more");
    EXPECT_EQ(run("r.sys = 5; r.sys").toInt(), 5);
    registration::load(*engine);
}

struct TAutomationFixture : TScriptFixture
{
    TAutomationFixture()
    {
        library->Properties[u"LastResult"] = TValue(0);
        library->OnCall = [this](const std::u16string& name, TArguments& arguments) -> TValue {
            calls << QString::fromStdU16String(name);
            if (name == u"Fail") {
                throw platform::automation::EOleError(u"нет связи");
            }
            if (name == u"Swap") {
                arguments.at(0).value = TValue(u"changed");
                byReference = arguments.at(0).byReference && !arguments.at(1).byReference;
                return arguments.at(1).value;
            }
            return TValue(0);
        };
        run("var pos = new TBankPOS()");
    }
    std::shared_ptr<testkit::TMemoryLibrary> library = std::make_shared<testkit::TMemoryLibrary>();
    QStringList calls;
    bool byReference = false;
};
using ScriptAutomation = TTestOn<TAutomationFixture>;

TEST_F(ScriptAutomation, ThereIsNoneAtFirst)
{
    EXPECT_EQ(run("pos.IEcrInst === null").toBool(), true);
}

TEST_F(ScriptAutomation, AnObjectIsSpokenToByName)
{
    proc("Library", [this] { return QVariant::fromValue<platform::automation::TObjectPtr>(library); });
    run("var lib = Library()");
    EXPECT_EQ(run("lib.get('LastResult')").toInt(), 0);
    run("lib.set('LastResult', 7); lib.set('Text', 'a'); lib.set('Empty', null); lib.set('Self', lib)");
    EXPECT_EQ(library->Properties[u"LastResult"], TValue(std::int32_t(7)));
    EXPECT_EQ(library->Properties[u"Text"], TValue(u"a"));
    EXPECT_TRUE(library->Properties[u"Empty"].isEmpty());
    EXPECT_EQ(library->Properties[u"Self"].toObject(), library);
    library->Properties.clear();

    EXPECT_EQ(run("const x = {value: 1}; [lib.call('Swap', x, 2.5), x.value]").toList(),
              (QVariantList{2.5, "changed"}));
    EXPECT_TRUE(byReference);
    EXPECT_EQ(failing("lib.call('Fail')"), QStringLiteral("club.js:1: Error: нет связи"));
    calls.clear();
    EXPECT_TRUE(failing("lib.call('Swap', [1], 2)").contains("TypeError"));
    EXPECT_TRUE(failing("lib.call('Swap', pos, 2)").contains("TypeError"));
    EXPECT_EQ(calls, QStringList());
    EXPECT_EQ(failing("lib.nothing()"),
              "club.js:1: TypeError: Property 'nothing' of object [object Object] is not a function");
}

TEST_F(ScriptAutomation, TheTerminalsObjectIsThereOnceItIsMade)
{
    const TRegisteredClass ours(u"ECRCommX.BPOS1Lib", [this] { return library; });
    run("pos.PosType = 1");
    EXPECT_EQ(run("pos.Init()").toBool(), true);
    EXPECT_EQ(run("pos.IEcrInst.get('LastResult')").toInt(), 0);
    run("pos = null");
    endEngine();
    EXPECT_EQ(library.use_count(), 1);
}

TEST_F(ScriptAutomation, TheExamplePays)
{
    const TRegisteredClass ours(u"ECRCommX.BPOS1Lib", [this] { return library; });
    bool quit = false;
    proc("Quit", [&] { quit = true; });
    engine->RegisterConst("Arguments", QStringList("1"));
    runExample("bank.js");
    EXPECT_TRUE(quit);
    EXPECT_TRUE(trace.take().contains("print the library is there"));
    EXPECT_TRUE(calls.contains("Purchase")) << qPrintable(calls.join(u' '));
    EXPECT_EQ(failures, QStringList());
}

} // namespace
