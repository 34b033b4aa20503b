// What lives how long, and engines that end while their scripts run.

#include "script_fixture.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QPointer>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using ScriptLives = TScriptTest;

/// Tells when it goes.
class TWitness : public platform::TComponent
{
public:
    explicit TWitness(QObject* owner = nullptr) : TComponent(owner), FNumber(++Made) {}
    ~TWitness() override { Gone << FNumber; }

    static inline int Made = 0;
    static inline QList<int> Gone;

private:
    int FNumber;
};

TEST_F(ScriptLives, ComponentsGoWithTheEngineTheLastOneFirst)
{
    TWitness::Made = 0;
    TWitness::Gone.clear();
    engine->RegisterClassesInScript({script::scriptClass<TWitness>()});
    run("new TComponent(); var second = new TComponent(); { const third = new TComponent(); }");
    EXPECT_EQ(engine->componentCount(), 3);
    EXPECT_EQ(TWitness::Gone, QList<int>());
    endEngine();
    EXPECT_EQ(TWitness::Gone, (QList<int>{3, 2, 1}));
}

TEST_F(ScriptLives, ObjectsOfTheHostStay)
{
    const QPointer<TMemoryPort> known(port.get());
    run("var gate = new TTurnStylerDevice(); gate.ComPort = port");
    endEngine();
    EXPECT_TRUE(known);
    inject("$01AR12345678"); // nobody hears it
}

TEST_F(ScriptLives, HandlersOfObjectsOfTheHostAreSilentWithoutTheEngine)
{
    turnstile::TTurnStylerDevice own;
    engine->RegisterObject("own", &own);
    run("own.OnLog = () => { throw new Error('still here') }");
    const auto handler = own.OnLog();
    EXPECT_THROW(handler(&own, ""), EScriptError);
    endEngine();
    EXPECT_NO_THROW(handler(&own, ""));
    EXPECT_NO_THROW(own.OnLog()(&own, ""));
}

TEST_F(ScriptLives, TheEngineMayEndInAHandler)
{
    proc("endAll", [this] { endEngine(); });
    run("var gate = new TTurnStylerDevice(); gate.DeviceList = ['01A']; gate.ComPort = port;"
        "gate.OnCheckSQL = (s, d, c, st, i, m, result) => { endAll(); print('never'); result.value = 1 }");
    trace.take();
    inject("$01AR12345678");
    EXPECT_FALSE(engine);
    trace.expect({});
    clock.advance(10'000);
    trace.expect({});
}

TEST_F(ScriptLives, TheEngineMayEndInNestedHandlersAndScripts)
{
    turnstile::TTurnStylerDevice own;
    engine->RegisterObject("own", &own);
    proc("endAll", [this] { endEngine(); });
    proc("callLog", [&] { own.OnLog()(&own, ""); });
    run("own.OnLog = () => { endAll(); while (true); }");
    EXPECT_FALSE(run("try { callLog(); while (true); } finally { while (true); }").isValid());
    EXPECT_FALSE(engine);
}

TEST_F(ScriptLives, TheEngineMayEndWhileItTellsAnError)
{
    engine->OnError = [this](const TScriptFailure&) { endEngine(); };
    EXPECT_EQ(failing("nothing.there"), "club.js:1: ReferenceError: nothing is not defined");
    EXPECT_FALSE(engine);
}

TEST_F(ScriptLives, TheEngineMayEndWhileItPrints)
{
    engine->OnPrint = [this](const QString&) { endEngine(); };
    run("print('x'); while (true);");
    EXPECT_FALSE(engine);
}

TEST_F(ScriptLives, AHandlerMayDestroyItsObjectOfTheHost)
{
    auto own = std::make_unique<turnstile::TTurnStylerDevice>();
    engine->RegisterObject("own", own.get());
    proc("destroy", [&] { own.reset(); });
    run("own.DeviceList = ['01A']; own.ComPort = port;"
        "own.OnCheckSQL = (s, d, c, st, i, m, result) => { destroy(); try { s.TimeOut } catch (e) { "
        "print(e.message) } }");
    trace.take();
    inject("$01AR12345678");
    trace.expect({"print The object has been destroyed"});
    EXPECT_EQ(engine->handlerCount(), 0);
}

TEST_F(ScriptLives, AnErrorHandlerThatFailsIsReported)
{
    engine->OnError = [](const TScriptFailure&) { throw platform::Exception("no log"); };
    EXPECT_EQ(failing("x"), "club.js:1: ReferenceError: x is not defined");
    trace.expect({raised("no log")});
}

TEST_F(ScriptLives, ScriptsRunInsideOfScripts)
{
    proc("load", [this](const QString& text) { return run(text); });
    EXPECT_EQ(run("load('var x = 5; x') + x").toInt(), 10);
    EXPECT_EQ(failing("load('nonsense(')"), "club.js:1: Error: club.js:1: SyntaxError: Expected token `)'");
}

TEST_F(ScriptLives, SyntaxErrorsTellTheirLine)
{
    EXPECT_TRUE(failing("1 + 1;\nlet = = 5;").startsWith("club.js:2: SyntaxError: "));
    try {
        engine->evaluate("\nx", "/some/where/club.js");
    } catch (const EScriptError& error) {
        EXPECT_EQ(error.failure().File, "/some/where/club.js");
        EXPECT_EQ(error.failure().Line, 2);
    }
}

TEST_F(ScriptLives, ManyEnginesOneAfterTheOther)
{
    for (int i = 0; i < 20; ++i) {
        endEngine();
        engine = std::make_unique<TJsEngine>();
        registration::load(*engine);
        EXPECT_EQ(run("new TTurnStylerDevice().TimeOut").toInt(), 5);
    }
}

TEST_F(ScriptLives, AProcedureGivesAnObjectOfTheHosts)
{
    TMemoryPort other;
    proc("otherPort", [&]() -> QObject* { return &other; });
    proc("noPort", []() -> QObject* { return nullptr; });
    EXPECT_EQ(run("otherPort() === otherPort() && noPort() === null").toBool(), true);
    endEngine();
    EXPECT_FALSE(other.Connected());
}

} // namespace
