// Handlers that destroy the component or the port, replace or clear handlers, or pump messages, each at each
// event of whole passes.

#include "support/hostile_controller.h"
#include "turnstile_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Everything that a host and the controllers may do to the component, in one run. Nothing here touches a
/// component or a port that is gone.
void playEverything(TTurnstileFixture& fixture)
{
    fixture.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    fixture.feed("$03AR1\r#03ARelay\r");      // unlisted, opened
    fixture.feed("$03AP\r$03AG\r");           // passed
    fixture.clock.advance(200);               // finished and removed by ticks
    fixture.feed("#01DBtn-Activ\r$000900\r"); // exit button, poll
    fixture.clock.advance(2'500);             // not answered
    fixture.Answers[0] = 0;
    fixture.feed("$01AR2\r$02AR3\r"); // refused, one at once and one by a tick
    fixture.clock.advance(200);
    fixture.Answers[0] = -1;
    fixture.feed("$01DR4\r");
    fixture.feed("#01DInG-Activ\r#01DRelay\r"); // opened by the in-gate sensor
    fixture.clock.advance(4'500);               // timed out
    fixture.Answers[0] = 1;
    if (fixture.port) {
        fixture.port->Close();
    }
    fixture.feed("$01AR5\r$02AR6\r"); // neither can be sent, one at once and one by a tick
    fixture.clock.advance(200);
}

/// The same by direct calls.
void callEverything(TTurnstileFixture& fixture)
{
    fixture.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    const std::function<void()> calls[] = {
        [&] { fixture.gate->p_hw_ProtocolIn("$03AR1"); },
        [&] { fixture.gate->p_hw_ProtocolIn("#03AInG-Activ"); },
        [&] { fixture.gate->p_hw_ProtocolIn("$000900"); },
        [&] { fixture.gate->p_hw_CheckStatus("04A", "1", "R"); },
        [&] { fixture.gate->p_hw_CallStackArray(); },
        [&] { fixture.gate->p_hw_SQLCheck(0, 2); },
        [&] { fixture.gate->p_hw_SendComCommand(0, 1); },
        [&] { fixture.gate->p_hw_relay("01D", "3", 1); },
        [&] { fixture.gate->p_hw_relay("xxD", "3", 1); },
        [&] { fixture.gate->p_hw_CheckStatusAll(); },
        [&] { fixture.gate->ShowinternalStatus(fixture.gate.get(), "N", "1", "2", "3", "4"); },
        [&] {
            fixture.gate->p_hw_ProtocolIn("$03AG");
            if (fixture.gate) {
                fixture.gate->p_hw_CallStackArray();
            }
        },
    };
    for (const auto& call : calls) {
        if (fixture.gate) {
            platform::guarded(call); // what a handler raises may reach a caller
        }
    }
}

const TPlay<TTurnstileFixture> kPlays[] = {playEverything, callEverything};

void disturbEach(const std::function<void(TTurnstileFixture&)>& disturb,
                 const std::function<void(TTurnstileFixture&, const QStringList& before)>& verify)
{
    tests::disturbEach<TTurnstileFixture>(kPlays, disturb, verify);
}

struct THostileTurnstile
{
    using Fixture = TTurnstileFixture;
    static constexpr char kBye[] = "#09ZBye";

    static auto& component(Fixture& fixture) { return fixture.gate; }
    static std::span<const TPlay<Fixture>> plays() { return kPlays; }
    static QString read(const QString& line) { return tests::read(line); }
    static void dropLink(Fixture& fixture) { fixture.port.reset(); }
    static void clear(Fixture& fixture)
    {
        fixture.gate->SetOnLog({});
        fixture.gate->SetOnError({});
        fixture.gate->SetOnCheckStatus({});
        fixture.gate->SetOnCheckSQL({});
        fixture.gate->SetOnGetImg({});
    }
    static bool isSent(const QString& line) { return line.startsWith("write"); }
    static void expectAlive(Fixture& fixture)
    {
        fixture.inject("$08AR1");
        fixture.clock.advance(60'000);
        EXPECT_GE(fixture.trace.countOf("check 08A 1 NEW mode 0"), 1);
        EXPECT_EQ(fixture.trace.countOf("raised"), 0);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Turnstile, HostileController, THostileTurnstile);

TEST(HostileHandlers, TheRunReachesEveryEvent)
{
    for (const auto play : kPlays) {
        const QStringList lines = traceOf<TTurnstileFixture>(play);
        for (const QString beginning : {"log %Считано", "log %Отправлено", "error [02]", "img",
                                        "status CHECK", "status COME", "status STACK", "write"}) {
            EXPECT_FALSE(lines.filter(beginning).isEmpty()) << beginning.toStdString();
        }
        for (const int mode : {0, 2}) {
            EXPECT_FALSE(lines.filter(QStringLiteral(" mode %1 ").arg(mode)).isEmpty()) << mode;
        }
    }
    const QStringList lines = traceOf<TTurnstileFixture>(playEverything);
    EXPECT_FALSE(lines.filter(" mode 1 ").isEmpty());
    EXPECT_FALSE(lines.filter(" mode 3 ").isEmpty());
    EXPECT_FALSE(traceOf<TTurnstileFixture>(callEverything).filter("error [04]").isEmpty());
}

TEST(HostileHandlers, MayDestroyThePort)
{
    disturbEach([](auto& fixture) { fixture.port.reset(); },
                [](auto& fixture, const QStringList&) {
                    ASSERT_TRUE(fixture.gate);
                    EXPECT_EQ(fixture.gate->ComPort(), nullptr);
                    EXPECT_EQ(fixture.trace.countOf("raised"), 0);
                    fixture.trace.take();
                    fixture.gate->p_hw_CheckStatusAll();
                    fixture.trace.expect({kPortClosed});
                });
}

TEST(HostileHandlers, MayCloseThePort)
{
    disturbEach([](auto& fixture) { fixture.port->Close(); },
                [](auto& fixture, const QStringList& before) {
                    const QStringList lines = fixture.trace.take();
                    EXPECT_EQ(lines.mid(0, before.size()), before);
                    EXPECT_TRUE(lines.mid(before.size()).filter("write").isEmpty());
                });
}

TEST(HostileHandlers, MayAssignAnotherPort)
{
    TMemoryPort other;
    disturbEach([&](auto& fixture) { fixture.gate->SetComport(&other); },
                [&](auto& fixture, const QStringList&) {
                    fixture.trace.take();
                    fixture.inject("#01AOld");
                    fixture.trace.expect({});
                    other.feed("#01ANew\r");
                    EXPECT_EQ(fixture.trace.countOf(read("#01ANew")), 1);
                });
}

TEST(HostileHandlers, ReplacementIsCalledFromTheNextEventOn)
{
    TTurnstileFixture fixture;
    fixture.gate->SetOnCheckStatus([&](auto&&...) {
        fixture.trace.add("old");
        fixture.gate->SetOnCheckStatus([&](auto&&...) { fixture.trace.add("new"); });
        fixture.trace.add("still old");
    });
    fixture.inject("$01AR1");
    fixture.trace.expect(
        {read("$01AR1"), "img 01A", "old", "still old", "new", "new", check("01A", "1", "NEW", 0)});
}

TEST(HostileHandlers, StayAliveWhileTheyRun)
{
    TTurnstileFixture fixture;
    fixture.gate->SetDeviceList({});
    int outlived = 0;
    // each handler owns something and clears its own event; what it owns must last until it returns
    const auto clearing = [&](auto clear) {
        return [&outlived, clear, owned = std::make_shared<int>(1)](auto&&...) {
            const std::weak_ptr<int> watch = owned;
            clear();
            outlived += watch.expired() ? 0 : 1;
        };
    };
    fixture.gate->SetOnLog(clearing([&] { fixture.gate->SetOnLog({}); }));
    fixture.gate->SetOnError(clearing([&] { fixture.gate->SetOnError({}); }));
    fixture.gate->SetOnGetImg(clearing([&] { fixture.gate->SetOnGetImg({}); }));
    fixture.gate->SetOnCheckStatus(clearing([&] { fixture.gate->SetOnCheckStatus({}); }));
    fixture.gate->SetOnCheckSQL(clearing([&] { fixture.gate->SetOnCheckSQL({}); }));
    fixture.inject("$01AR1");
    EXPECT_EQ(outlived, 5);
}

TEST(HostileHandlers, MayFeedALine)
{
    disturbEach([](auto& fixture) { fixture.port->feed("$09ZR9\r#09ZHello\r"); },
                [](auto& fixture, const QStringList&) {
                    EXPECT_EQ(fixture.trace.countOf(read("$09ZR9")), 1);
                    EXPECT_EQ(fixture.trace.countOf(read("#09ZHello")), 1);
                    EXPECT_EQ(fixture.trace.countOf("img 09Z"), 1);
                    EXPECT_EQ(fixture.trace.countOf("raised"), 0);
                });
}

TEST(HostileHandlers, MayHandleALineThemselves)
{
    disturbEach([](auto& fixture) { fixture.gate->p_hw_ProtocolIn("$09ZR9"); },
                [](auto& fixture, const QStringList& before) {
                    const QStringList lines = fixture.trace.take();
                    EXPECT_EQ(lines.mid(before.size(), 4),
                              QStringList({read("$09ZR9"), "error [02] Device not found 09Z", "img 09Z",
                                           looked("09Z", "9", "NEW")}));
                });
}

TEST(HostileHandlers, DestroyedComponentAnswersItsCaller)
{
    TTurnstileFixture fixture;
    fixture.trace.OnLine = [&](const QString&) { fixture.gate.reset(); };
    fixture.makePass("01A", "1");
    EXPECT_EQ(fixture.gate->p_hw_SQLCheck(0, 2), -1);
    EXPECT_FALSE(fixture.gate);
}

TEST(HostileHandlers, PortIsWorthNothingWithoutTheComponent)
{
    TTurnstileFixture fixture;
    fixture.trace.each("log", [&] { fixture.gate.reset(); });
    fixture.port->feed("$01AX\r$01AY\r#01AHello\r"); // the rest of the read finds no one
    fixture.trace.expect({read("$01AX")});
}

} // namespace
