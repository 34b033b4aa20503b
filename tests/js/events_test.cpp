// Functions of scripts as handlers of events.

#include "script_fixture.h"
#include "tnv5/turnstile/turnstile_device.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TEventFixture : TScriptFixture
{
    TEventFixture()
    {
        run("var gate = new TTurnStylerDevice(); gate.DeviceList = ['01A', '01D']; gate.ComPort = port");
        trace.take();
    }
    void card() { inject("$01AR12345678"); }
};
using ScriptEvents = TTestOn<TEventFixture>;

const QString kOpened = wrote("$01A10366\r");
const QString kRefused = wrote("$01A00064\r");

TEST_F(ScriptEvents, AHandlerDecidesByTheResultParameter)
{
    run("gate.OnCheckSQL = (sender, device, card, status, img, mode, result) => {"
        "  print(sender === gate, device, card, status, img.value, mode, result.value);"
        "  result.value = card === '12345678' ? 1 : 0; }");
    card();
    trace.expect({"print true 01A 12345678 NEW null 0 -1", kOpened});
}

TEST_F(ScriptEvents, ReturnValuesAreIgnored)
{
    run("gate.OnCheckSQL = () => 1");
    card();
    trace.expect({});
    run("gate.OnCheckSQL = (s, d, c, st, i, m, result) => { result.value = 0; return 1 }");
    clock.advance(100);
    trace.expect({kRefused});
}

TEST_F(ScriptEvents, OnlyParametersByReferenceAreWrittenBack)
{
    run("gate.OnCheckSQL = function (sender, device, card, status, img, mode, result) {"
        "  device = '02A'; card = 'x'; arguments[1] = 'y'; mode = 7; result.value = 1 }");
    card();
    trace.expect({kOpened});
    run("gate.OnCheckSQL = (s, d, c, st, i, m, result) => { result = {value: 1} }"); // another object
    inject("$01DR12345678");
    trace.expect({});
}

TEST_F(ScriptEvents, AResultThatCannotBePassedIsAnError)
{
    run("gate.OnCheckSQL = (s, d, c, st, i, m, result) => { result.value = {} };"
        "gate.OnError = (sender, text) => print(text)");
    card();
    EXPECT_EQ(failures, QStringList("club.js:1: TypeError: An object of the script cannot be passed"));
}

TEST_F(ScriptEvents, AnEventGivesItsFunctionBack)
{
    EXPECT_EQ(run("gate.OnLog === null").toBool(), true);
    EXPECT_EQ(run("var f = () => {}; gate.OnLog = f; gate.OnLog === f").toBool(), true);
    EXPECT_EQ(run("gate.OnLog = null; gate.OnLog === null").toBool(), true);
    EXPECT_EQ(run("gate.OnLog = f; gate.OnLog = undefined; gate.OnLog === null").toBool(), true);
    EXPECT_EQ(engine->handlerCount(), 0);
}

TEST_F(ScriptEvents, TakeFunctionsAndNullOnly)
{
    const QString text = "club.js:1: TypeError: TTurnStylerDevice.OnLog takes a function or null";
    for (const char* wrong : {"1", "'f'", "gate", "[]", "true"}) {
        EXPECT_EQ(failing(QStringLiteral("gate.OnLog = %1").arg(wrong)), text) << wrong;
    }
    EXPECT_EQ(failing("gate.TimeOut = () => 1"),
              "club.js:1: TypeError: TTurnStylerDevice.TimeOut is no event: it takes no function");
    EXPECT_EQ(failing("new TDeviceConnector().IsConnected = () => 1"),
              "club.js:1: TypeError: TDeviceConnector.IsConnected is no event: it takes no function");
}

TEST_F(ScriptEvents, AHandlerOfTheHostIsNoFunctionOfTheScript)
{
    turnstile::TTurnStylerDevice own;
    engine->RegisterObject("own", &own);
    run("var f = () => {}; own.OnLog = f");
    EXPECT_EQ(run("own.OnLog === f").toBool(), true);
    own.SetOnLog([](auto*, const QString&) {});
    EXPECT_EQ(run("own.OnLog === null").toBool(), true);
}

TEST_F(ScriptEvents, NullDetaches)
{
    run("gate.OnCheckSQL = (s, d, c, st, i, m, r) => { print('asked'); r.value = 1 }; gate.OnCheckSQL = "
        "null");
    card();
    trace.expect({});
}

TEST_F(ScriptEvents, AHandlerMayReplaceOrDetachItself)
{
    run("gate.OnCheckSQL = (s, d, c, st, i, m, r) => {"
        "  gate.OnCheckSQL = (s, d, c, st, i, m, r) => { print('second'); r.value = 1 };"
        "  print('first') }");
    card();
    trace.expect({"print first"});
    clock.advance(100);
    trace.expect({"print second", kOpened});
    EXPECT_EQ(engine->handlerCount(), 1);

    run("gate.OnLog = () => { gate.OnLog = null; print('once', gate.OnLog) }");
    inject("#01AWait-Card");
    inject("#01AWait-Card");
    trace.expect({"print once null"});
    EXPECT_EQ(engine->handlerCount(), 1);
}

TEST_F(ScriptEvents, AnErrorLeavesTheHandlerAsAnException)
{
    turnstile::TTurnStylerDevice own;
    engine->RegisterObject("own", &own);
    run("function inner() { nothing.there }\nown.OnLog = () => {\n  inner();\n}");
    try {
        own.OnLog()(&own, "text");
        FAIL() << "nothing is raised";
    } catch (const EScriptError& error) {
        EXPECT_EQ(error.message(), "club.js:1: ReferenceError: nothing is not defined");
        EXPECT_EQ(error.failure().File, "club.js");
        EXPECT_EQ(error.failure().Line, 1);
        EXPECT_EQ(error.failure().Text, "ReferenceError: nothing is not defined");
        EXPECT_TRUE(error.failure().Stack.startsWith("inner@club.js:1\n"))
            << qPrintable(error.failure().Stack);
        EXPECT_TRUE(error.failure().Stack.contains("@club.js:3")) << qPrintable(error.failure().Stack);
        EXPECT_FALSE(error.failure().Stack.contains("prelude")) << qPrintable(error.failure().Stack);
    }
    EXPECT_EQ(failures, QStringList("club.js:1: ReferenceError: nothing is not defined"));
}

TEST_F(ScriptEvents, TheRuleOfTheComponentForARaisingHandlerHolds)
{
    run("gate.OnError = (sender, text) => print(text);\n"
        "gate.OnCheckSQL = () => { throw new Error('no books') }");
    card();
    EXPECT_EQ(failures, QStringList("club.js:2: Error: no books"));
    const QStringList byScript = trace.take();

    TPortFixture other; // the same, raised by a handler of C++
    turnstile::TTurnStylerDevice own;
    own.SetDeviceList({"01A", "01D"});
    own.SetComport(other.port.get());
    own.SetOnError([&](auto*, const QString& text) { other.trace.note("print " + text); });
    own.SetOnCheckSQL([](auto*, auto&, auto&, auto&, auto&, auto&, auto&) {
        throw platform::Exception("club.js:2: Error: no books");
    });
    other.inject("$01AR12345678");
    EXPECT_EQ(byScript, other.trace.take());
}

TEST_F(ScriptEvents, ThrownThingsThatAreNoErrors)
{
    turnstile::TTurnStylerDevice own;
    engine->RegisterObject("own", &own);
    for (const auto& [thrown, text] :
         {std::pair{"5", "5"}, std::pair{"'text'", "text"}, std::pair{"null", "null"},
          std::pair{"undefined", "undefined"}, std::pair{"[]", ""},
          std::pair{"{toString() { throw 1 }}", "An error without a text"},
          std::pair{"Object.create(null)", "An error without a text"}}) {
        failures.clear();
        run(QStringLiteral("\nown.OnLog = () => {\n throw %1\n}").arg(thrown));
        EXPECT_THROW(own.OnLog()(&own, ""), EScriptError) << thrown;
        EXPECT_EQ(failures, QStringList(QStringLiteral("club.js:2: %1").arg(text))); // where it was assigned
    }
    EXPECT_EQ(failing("\nthrow 5"), "club.js:2: 5");
    EXPECT_EQ(failing("\n\nthrow {toString() { return 'x' }}"), "club.js:3: x");
    EXPECT_EQ(failing("new Error('only a value')"), "");
}

TEST_F(ScriptEvents, ErrorsOfAHandlerReachTheScriptThatCaused)
{
    run("var bus = new TDeviceConnector(); bus.OnGetData = () => { throw new Error('inner') }");
    EXPECT_EQ(failing("bus.GetCommand('x')"), "club.js:1: Error: club.js:1: Error: inner");
    EXPECT_EQ(run("try { bus.GetCommand('x') } catch (e) { e.message }").toString(),
              "club.js:1: Error: inner");
}

TEST_F(ScriptEvents, HandlersRunInsideOfHandlers)
{
    run("gate.OnLog = (s, text) => print('log');"
        "gate.OnCheckSQL = (s, d, c, st, i, m, r) => { gate.p_hw_relay('01A', '2', 1); r.value = 1 }");
    card();
    trace.expect({"print log", wrote("$01A20066\r"), "print log", kOpened, "print log"});
}

TEST_F(ScriptEvents, TooManyHandlersInsideOfEachOtherAreAnError)
{
    run("var bus = new TDeviceConnector(); var deepest = 0; var depth = 0;"
        "bus.OnGetData = (s, text) => { deepest = Math.max(deepest, ++depth);"
        "  try { bus.GetCommand(text) } finally { --depth } }");
    EXPECT_TRUE(failing("bus.GetCommand('x')").contains("handlers are under way, one inside the other"));
    EXPECT_EQ(run("[deepest, depth]").toList(), (QVariantList{TJsEngine::kMaxNesting - 1, 0}));
}

TEST_F(ScriptEvents, AHandlerThatWaitsLetsOthersRun)
{
    run("var scales = new TScalesDevice(); scales.ScalesType = 1; scales.ComPort = port;"
        "gate.OnCheckSQL = (s, d, c, st, i, m, r) => { print('card'); r.value = 1 };"
        "scales.OnWeight = (sender, weight) => print('weight', weight, sender === scales)");
    port->OnWritten = [this](const QByteArray& bytes) {
        if (bytes == "D") {
            port->OnWritten = {};
            card();                                    // while the script waits
            feed(QByteArray::fromHex("5500d2040000")); // 1234 g
        }
    };
    trace.take();
    EXPECT_NO_THROW(run("print(scales.GetWeight(false))"));
    EXPECT_TRUE(trace.take().contains("print card"));
}

TEST_F(ScriptEvents, TenThousandDecisionsHoldNothing)
{
    run("gate.OnCheckSQL = (s, d, c, st, i, m, r) => { r.value = m === 0 ? 0 : 1 }; gate.OnLog = () => {};"
        "gate.OnCheckStatus = () => {}; gate.OnGetImg = (s, d, img) => { }");
    port->KeepWrites = false;
    const int objects = engine->objectCount();
    const int handlers = engine->handlerCount();
    int refused = 0;
    port->OnWritten = [&](const QByteArray& bytes) { refused += bytes.startsWith("$01A0") ? 1 : 0; };
    for (int i = 0; i < 10'000; ++i) {
        card();
        clock.advance(100);
        trace.take();
    }
    EXPECT_EQ(refused, 10'000);
    EXPECT_EQ(engine->objectCount(), objects);
    EXPECT_EQ(engine->handlerCount(), handlers);
    EXPECT_EQ(engine->componentCount(), 1);
}

TEST_F(ScriptEvents, ReassigningHoldsOneFunction)
{
    for (int i = 0; i < 1'000; ++i) {
        run("gate.OnLog = () => {}");
    }
    EXPECT_EQ(engine->handlerCount(), 1);
}

TEST_F(ScriptEvents, PicturesAreHandedOn)
{
    proc("Picture", [](int size) { return QImage(size, size, QImage::Format_RGB32); });
    proc("WidthOf", [](const QVariant& image) { return image.value<QImage>().width(); });
    run("gate.OnGetImg = (sender, device, img) => { img.value = Picture(12) };"
        "gate.OnCheckSQL = (s, d, c, st, img, m, r) => { print(WidthOf(img.value)); r.value = 1 }");
    card();
    trace.expect({"print 12", kOpened});
    EXPECT_EQ(failing("Picture(3).width = 4"), "");
    EXPECT_EQ(run("Picture(3).width === undefined").toBool(), true);
}

} // namespace
