// Scripts that never end, or take everything.

#include "script_fixture.h"
#include "tnv5/js/watchdog.h"
#include "tnv5/turnstile/turnstile_device.h"

#include <QElapsedTimer>
#include <thread>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

struct TLimitFixture : TScriptFixture
{
    TLimitFixture()
    {
        engine->RegisterObject("own", &own);
        engine->setTimeBudget(50ms);
    }
    /// What the handler of `own.OnLog` raises.
    QString raisedByHandler(const QString& handler)
    {
        run("own.OnLog = " + handler);
        try {
            own.OnLog()(&own, "text");
        } catch (const EScriptError& error) {
            return error.message();
        }
        return {};
    }
    turnstile::TTurnStylerDevice own;
};
using ScriptLimits = TTestOn<TLimitFixture>;

TEST_F(ScriptLimits, AnEndlessLoopIsInterrupted)
{
    for (const char* loop :
         {"while (true);", "while (true) own.TimeOut;", "for (;;) { try { while (true); } catch (e) {} }",
          "try { while (true); } finally { while (true); }",
          "for (const i of (function* () { while (true) yield 1 })());",
          "[1].forEach(() => { while (true); })", "const o = {toString() { while (true); }}; '' + o;",
          "print({toString() { while (true); }})",
          "own.TimeOut = [{get x() {}}, 1].map(() => { while (true); })", "new Array(4e8).join('x')",
          "JSON.stringify({toJSON() { while (true); }})"}) {
        EXPECT_EQ(raisedByHandler(QStringLiteral("() => { %1 }").arg(loop)),
                  "club.js:1: interrupted after 50 ms")
            << loop;
        EXPECT_EQ(run("1 + 1").toInt(), 2) << loop;
    }
    EXPECT_EQ(failing("\nwhile (true);"), "club.js: interrupted after 50 ms");
    EXPECT_EQ(run("own.TimeOut").toInt(), 5);
    EXPECT_EQ(failures.size(), 12);
}

TEST_F(ScriptLimits, EndlessGettersOfArgumentsAreInterrupted)
{
    proc("Change", [](int& value) { return ++value; });
    proc("Take", [](const QVariant&) { return 0; });
    EXPECT_EQ(failing("Change({get value() { while (true); }})"), "club.js: interrupted after 50 ms");
    EXPECT_EQ(failing("Change({get value() { return 1 }, set value(v) { while (true); }})"),
              "club.js: interrupted after 50 ms");
    EXPECT_EQ(failing("const a = [1]; Object.defineProperty(a, 0, {get() { while (true); }}); Take(a)"),
              "club.js: interrupted after 50 ms");
    EXPECT_EQ(raisedByHandler("() => 1"), "");
}

TEST_F(ScriptLimits, TimeInsideOfNativeCallsDoesNotCount)
{
    proc("Slow", [] {
        std::this_thread::sleep_for(120ms);
        return 1;
    });
    EXPECT_EQ(run("Slow() + Slow()").toInt(), 2);
    EXPECT_EQ(raisedByHandler("() => { Slow(); Slow(); }"), "");
    EXPECT_EQ(failing("Slow(); while (true);"), "club.js: interrupted after 50 ms");
}

TEST_F(ScriptLimits, ANestedHandlerHasABudgetOfItsOwn)
{
    own.SetOnLog({});
    run("own.OnLog = () => { while (true); }");
    proc("CallHandler", [this]() -> QString {
        try {
            own.OnLog()(&own, "");
        } catch (const EScriptError& error) {
            return error.message();
        }
        return {};
    });
    // the outer script goes on after the inner ones were interrupted, longer together than its own budget
    EXPECT_EQ(run("[CallHandler(), CallHandler(), CallHandler()].join()").toString(),
              QStringList(3, "club.js:1: interrupted after 50 ms").join(u','));
    EXPECT_EQ(failing("CallHandler(); while (true);"), "club.js: interrupted after 50 ms");
}

TEST_F(ScriptLimits, TheBudgetIsOfEachRun)
{
    engine->setTimeBudget(2s);
    QElapsedTimer timer;
    timer.start();
    run("own.OnLog = () => { for (let i = 0; i < 1000; ++i); }");
    while (timer.elapsed() < 2'500) {
        ASSERT_NO_THROW(own.OnLog()(&own, ""));
    }
}

TEST_F(ScriptLimits, EndlessRecursionIsAnError)
{
    engine->setTimeBudget(10min);
    EXPECT_EQ(raisedByHandler("function f() { f() }"),
              "club.js:1: RangeError: Maximum call stack size exceeded.");
    EXPECT_TRUE(failing("function g() { return own.TimeOut + g() } g()").contains("Maximum call stack"));
    EXPECT_TRUE(failing("const p = new Proxy({}, {get(t, n) { return p[n] }}); p.x").contains("call stack"));
    EXPECT_TRUE(
        failing("const o = {toString() { return '' + o }}; own.DoorIndex = '' + o").contains("call stack"));
    EXPECT_EQ(run("function h() { h() } try { h() } catch (e) { e instanceof RangeError }").toBool(), true);
    EXPECT_EQ(run("1 + 1").toInt(), 2);
}

TEST_F(ScriptLimits, AStackIsShownInPart)
{
    engine->setTimeBudget(10min);
    try {
        run("function f() { f() }\nf()");
        FAIL();
    } catch (const EScriptError& error) {
        const QStringList calls = error.failure().Stack.split(u'\n');
        EXPECT_EQ(calls.size(), 21);
        EXPECT_EQ(calls.first(), "f@club.js:1");
        EXPECT_EQ(calls.last(), "...");
    }
}

TEST_F(ScriptLimits, AScriptThatTakesAllMemoryIsInterrupted)
{
    if (js::memoryInUse() == 0) {
        GTEST_SKIP() << "the system does not tell";
    }
    engine->setTimeBudget(10min);
    engine->setMemoryBudget(qint64(64) << 20);
    EXPECT_EQ(raisedByHandler("() => { const all = []; for (;;) all.push(new Array(1000).fill(1)) }"),
              "club.js:1: interrupted, it took more than 64 MB of memory");
    EXPECT_EQ(run("1 + 1").toInt(), 2);
}

TEST(ScriptWatchdog, PausesWhileNothingOfTheScriptRuns)
{
    std::atomic<int> interrupted = 0;
    js::TWatchdog dog([&](bool on) { interrupted += on ? 1 : 0; });
    EXPECT_TRUE(dog.pause()); // nothing runs
    dog.resume();
    dog.begin(20ms, 1 << 30);
    ASSERT_TRUE(dog.pause());
    std::this_thread::sleep_for(60ms);
    EXPECT_EQ(interrupted, 0);
    dog.begin(10min, 1 << 30); // inside
    EXPECT_EQ(dog.end(), js::TWatchdog::TEnd::Normal);
    std::this_thread::sleep_for(60ms);
    EXPECT_EQ(interrupted, 0);
    dog.resume();
    while (interrupted == 0) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_FALSE(dog.pause());
    EXPECT_EQ(dog.end(), js::TWatchdog::TEnd::TooLong);
    EXPECT_TRUE(dog.pause());
}

} // namespace
