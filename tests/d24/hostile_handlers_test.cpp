// Handlers that destroy the component or the connector, replace or clear handlers, raise, or pump messages,
// each at each event of whole passes.

#include "d24_fixture.h"
#include "support/hostile_controller.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

void allowEverything(TD24Fixture& fixture)
{
    fixture.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {5, 1}};
}

/// Everything that the controllers may do, by lines and ticks. Nothing here touches a component or a
/// connector that is gone.
void playLines(TD24Fixture& fixture)
{
    const auto lines = [&](const QStringList& texts) {
        for (const QString& text : texts) {
            platform::guarded([&] { fixture.inject(text); });
        }
    };
    allowEverything(fixture);
    lines({"$1:001GRQ1AB"}); // opened, repeated, not confirmed
    fixture.clock.advance(4'500);
    lines(
        {"#1:001GPING00", "#1:001GPING00", "#5:005TPING00", "#1:001GDC00", "#1:001GCC00", "#2:002TCROSS00"});
    fixture.clock.advance(1'000);
    lines({"#1:001TBTPH00"}); // the exit button: opened, finished, removed
    fixture.clock.advance(1'600);
    fixture.Answers[0] = 0;
    lines({"$1:002TRQ2AB"}); // refused
    fixture.clock.advance(1'100);
    fixture.Answers[0] = 2;
    lines({"$1:003TRQ3AB", "#1:003TBTPH00", "$1:003TPRAB"}); // held, opened by the button, passed
    fixture.clock.advance(1'000);
    lines({"$1:003TGRAB", "$1:004IRQ4AB", "$1:004IETAB", "$1:004IFKAB", "odd"}); // a display, given up
    fixture.clock.advance(3'100);
}

/// The same by direct calls.
void playCalls(TD24Fixture& fixture)
{
    allowEverything(fixture);
    const std::function<void()> calls[] = {
        [&] { fixture.gate->p_hw_ProtocolIn("$1:001GRQ1AB"); },
        [&] { fixture.gate->p_hw_CheckStatus("1", "001G", "G", "1", "RQ"); },
        [&] { fixture.gate->p_hw_CheckStatus("1", "002T", "T", "1", "RQ"); },
        [&] { fixture.gate->p_hw_SQLCheck(0, 0); },
        [&] { fixture.gate->p_hw_SQLCheck(0, 2); },
        [&] { fixture.gate->p_hw_SendComCommand(0, 1); },
        [&] { fixture.gate->p_hw_SendComCommand(0, 0); },
        // the command finds the link closed, the monitor finds it open again
        [&] { fixture.link ? void(fixture.link->UpNext = {false}) : void(); },
        [&] { fixture.gate->p_hw_SendComCommand(0, 1); },
        [&] { fixture.link ? void(fixture.link->UpNext = {false}) : void(); },
        [&] { fixture.gate->p_hw_relay("1", "001G", "1", 1); },
        [&] { fixture.link ? void(fixture.link->UpNext = {false}) : void(); },
        [&] { fixture.gate->p_hw_CheckStatusAll(); },
        [&] { fixture.gate->DevicePing("1", "001G", "G"); },
        [&] { fixture.gate->DevicePing("2", "001G", "G"); },
        [&] { fixture.gate->DevicePingTime(nullptr); },
        [&] { fixture.gate->p_hw_manual("1", "003T", "OPEN"); },
        [&] { fixture.gate->p_hw_manual("003T", "", "FINISH"); },
        [&] { fixture.gate->p_hw_CallStackArray(); },
        [&] { fixture.gate->p_hw_CallStackArray(); },
        [&] { fixture.gate->ShowinternalStatus(fixture.gate.get(), "N", "1", "2", "3", "4", "5", "6"); },
    };
    for (const auto& call : calls) {
        if (fixture.gate) {
            platform::guarded(call);
        }
    }
    fixture.clock.advance(3'000);
}

/// Everything switched on, in short.
template <TPlay<TD24Fixture> Play, bool Monitored>
void run(TD24Fixture& fixture)
{
    if (Monitored) {
        fixture.serve();
    }
    fixture.gate->SetCheckCross(true);
    fixture.gate->SetCheckET(true);
    fixture.gate->SetTimerInterval(500); // keeps the runs short
    fixture.Message = "|Hello|";
    Play(fixture);
}

const TPlay<TD24Fixture> kRuns[] = {run<playLines, false>, run<playLines, true>, run<playCalls, false>,
                                    run<playCalls, true>};

void disturbEach(const std::function<void(TD24Fixture&)>& disturb,
                 const std::function<void(TD24Fixture&, const QStringList& before)>& verify)
{
    tests::disturbEach<TD24Fixture>(kRuns, disturb, verify);
}

/// Whatever happened, every pass that is left comes to its end.
void expectToFinish(TD24Fixture& fixture)
{
    ASSERT_TRUE(fixture.gate);
    fixture.trace.OnLine = {};
    allowEverything(fixture);
    fixture.gate->SetTimerInterval(200);
    fixture.gate->p_hw_ProtocolIn("odd");
    fixture.clock.advance(20'000);
    EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
}

struct THostileD24
{
    using Fixture = TD24Fixture;
    static constexpr char kBye[] = "bye";

    static auto& component(Fixture& fixture) { return fixture.gate; }
    static std::span<const TPlay<Fixture>> plays() { return kRuns; }
    static QString read(const QString& line) { return tests::read(line); }
    static void dropLink(Fixture& fixture) { fixture.link.reset(); }
    static void clear(Fixture& fixture)
    {
        fixture.gate->SetOnLog({});
        fixture.gate->SetOnError({});
        fixture.gate->SetOnCheckStatus({});
        fixture.gate->SetOnCheckSQL({});
        fixture.gate->SetOnGetImg({});
        fixture.gate->SetRemoutDevice(d24::podNone);
    }
    static bool isSent(const QString& line) { return line.startsWith("send"); }
    static void expectAlive(Fixture& fixture) { expectToFinish(fixture); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(D24, HostileController, THostileD24);

TEST(HostileHandlers, TheConnectorIsFreeAfterADestroyedComponent)
{
    disturbEach([](auto& fixture) { fixture.gate.reset(); },
                [](auto& fixture, const QStringList&) { EXPECT_FALSE(fixture.link->OnGetData()); });
}

TEST(HostileHandlers, TheRunsReachEveryEvent)
{
    const QStringList lines = traceOf<TD24Fixture>(run<playLines, true>);
    for (const QString beginning : {"log %Считано", "log %Отправлено", "img", "status CHECK", "status COME",
                                    "status STACK!5!005T!T!!NOPING", "send SH", "send GO", "send PH",
                                    "send AL", "monitor LOG", "monitor STATUS"}) {
        EXPECT_FALSE(lines.filter(beginning).isEmpty()) << beginning.toStdString();
    }
    for (const int mode : {0, 1, 2, 3, 5}) {
        EXPECT_FALSE(lines.filter(QStringLiteral(" mode %1").arg(mode)).isEmpty()) << mode;
    }
    EXPECT_GE(lines.filter("send GO1:001G").size(), 3); // repeated
    EXPECT_EQ(traceOf<TD24Fixture>(run<playCalls, true>).filter(kPortClosed).size(), 3);
    EXPECT_EQ(traceOf<TD24Fixture>(run<playCalls, true>).filter("monitor ERROR").size(), 3);
}

TEST(HostileHandlers, MayDestroyTheConnector)
{
    disturbEach([](auto& fixture) { fixture.link.reset(); },
                [](auto& fixture, const QStringList& before) {
                    ASSERT_TRUE(fixture.gate);
                    EXPECT_EQ(fixture.gate->Connector(), nullptr);
                    EXPECT_EQ(fixture.trace.countOf("raised"), 0);
                    EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
                    fixture.gate->p_hw_CheckStatusAll();
                    EXPECT_EQ(fixture.trace.countOf(kPortClosed), 1);
                    expectToFinish(fixture);
                });
}

TEST(HostileHandlers, MayCutTheLink)
{
    disturbEach(
        [](auto& fixture) {
            if (fixture.link) {
                fixture.link->Up = false;
            }
        },
        [](auto& fixture, const QStringList& before) {
            EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
            expectToFinish(fixture);
        });
}

TEST(HostileHandlers, MayTakeTheConnectorAway)
{
    disturbEach([](auto& fixture) { fixture.gate->SetConnector(nullptr); },
                [](auto& fixture, const QStringList& before) {
                    const QStringList lines = fixture.trace.take();
                    EXPECT_EQ(lines.mid(0, before.size()), before);
                    EXPECT_LE(lines.mid(before.size()).filter("send ").size(), 0);
                    expectToFinish(fixture);
                });
}

TEST(HostileHandlers, MayAssignAnotherConnector)
{
    TRecorder otherTrace;
    TTestLink other(otherTrace);
    disturbEach([&](auto& fixture) { fixture.gate->SetConnector(&other); },
                [&](auto& fixture, const QStringList&) {
                    EXPECT_EQ(fixture.gate->Connector(), &other);
                    other.GetCommand("odd");
                    EXPECT_EQ(fixture.trace.countOf("raised"), 0);
                    expectToFinish(fixture);
                    otherTrace.take();
                });
}

TEST(HostileHandlers, ReplacementIsCalledFromTheNextEventOn)
{
    TD24Fixture fixture;
    fixture.gate->SetOnCheckStatus([&](auto&&...) {
        fixture.trace.add("old");
        fixture.gate->SetOnCheckStatus([&](auto&&...) { fixture.trace.add("new"); });
        fixture.trace.add("still old");
    });
    fixture.inject("$10.0.0.5:001TRQ7AB");
    fixture.trace.expect({read("$10.0.0.5:001TRQ7AB"), "img 001T", "old", "still old", "new", "new",
                          check(kT, "7", "NEW", 0)});
}

TEST(HostileHandlers, MayFeedALine)
{
    disturbEach([](auto& fixture) { fixture.inject("$9:009TRQ9AB"); },
                [](auto& fixture, const QStringList& before) {
                    EXPECT_EQ(fixture.trace.countOf(read("$9:009TRQ9AB")), 1);
                    EXPECT_EQ(fixture.trace.countOf("raised"), 0);
                    EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
                    expectToFinish(fixture);
                });
}

TEST(HostileHandlers, MayRunPassesUntilEveryRecordIsGone)
{
    disturbEach(
        [](auto& fixture) {
            for (int i = 0; i < fixture.gate->StackItemsCount(); ++i) {
                fixture.gate->StackItem(i)->Status = "CLOSE";
            }
            for (int i = 0; i < 5; ++i) {
                fixture.gate->p_hw_CallStackArray();
            }
        },
        [](auto& fixture, const QStringList& before) {
            EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
            expectToFinish(fixture);
        });
}

TEST(HostileHandlers, DestroyedComponentAnswersItsCaller)
{
    const auto disturbed = [](const std::function<void(TD24Fixture&)>& call) {
        TD24Fixture fixture;
        fixture.Answers = {{2, 7}};
        fixture.makePass(kT, "1");
        fixture.link->Up = true;
        fixture.trace.OnLine = [&](const QString&) { fixture.gate.reset(); };
        call(fixture);
        EXPECT_FALSE(fixture.gate);
    };
    disturbed([](auto& fixture) { EXPECT_EQ(fixture.gate->p_hw_SQLCheck(0, 2), -1); });
    disturbed([](auto& fixture) { EXPECT_TRUE(fixture.gate->p_hw_SendComCommand(0, 1)); });
    disturbed([](auto& fixture) {
        fixture.link->Up = false;
        EXPECT_TRUE(fixture.gate->p_hw_SendComCommand(0, 1));
    });
    disturbed([](auto& fixture) {
        fixture.link->Up = false;
        EXPECT_TRUE(fixture.gate->p_hw_CheckStatusAll());
    });
    disturbed([](auto& fixture) {
        fixture.link->Up = false;
        EXPECT_TRUE(fixture.gate->p_hw_relay("1", "001T", "1", 1));
    });
    disturbed([](auto& fixture) { fixture.gate->p_hw_CheckStatus("1", "009T", "T", "1", "RQ"); });
}

} // namespace
