// Handlers that destroy what they are called by, replace themselves, or feed lines, inside each event.

#include "support/hostile_controller.h"
#include "switch_fixture.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Everything that the component does, in short.
void playLines(TSwitchFixture& fixture)
{
    fixture.NewStatus = QString("ON");
    for (const QString line :
         {"#0.0.0.0:000APING5A", "#0.0.0.0:000ARELAY1N4F", "$0.0.0.0:001ASS2N5.1.2026 23:00:00",
          "$0.0.0.0:000ASS3F", "$0.0.0.0:000A90000", "#0.0.0.0:000ARELAY3Y4F", "odd"}) {
        platform::guarded([&] { fixture.inject(line); });
    }
    fixture.clock.advance(3'000);
    fixture.Answers = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    fixture.clock.advance(3'000);
}

void playCalls(TSwitchFixture& fixture)
{
    const std::function<void()> calls[] = {
        [&] { fixture.device->DevicePing(kLink, kBoard, "T"); },
        [&] { fixture.device->DevicePingTime(nullptr); },
        [&] { fixture.device->p_hw_CheckStatus(kLink, kBoard, "1", "ON", platform::Now() + 1.0 / 24); },
        [&] { fixture.device->p_hw_CallStackArray(); },
        [&] { fixture.device->p_hw_CallStackArray(); },
        [&] { fixture.device->p_hw_CallStackArray(); },
        [&] { fixture.device->p_hw_SQLCheck(0, 2); },
        [&] { fixture.device->p_hw_relay(kLink, kBoard, "1"); },
        [&] { fixture.device->p_hw_CheckStatusAll(); },
        [&] { fixture.device->p_hw_checktimeout(0.25, 0.5); },
        [&] { fixture.device->SendCommandToConnector("GO"); },
        [&] { fixture.device->SendToMonitor("x"); },
        [&] { fixture.device->ShowinternalStatus(fixture.device.get(), "N", "1", "2", "3", "4"); },
    };
    for (const auto& call : calls) {
        if (fixture.device) {
            platform::guarded(call);
        }
    }
}

template <TPlay<TSwitchFixture> Play, bool Monitored>
void run(TSwitchFixture& fixture)
{
    if (Monitored) {
        fixture.serve();
    }
    Play(fixture);
}

const TPlay<TSwitchFixture> kRuns[] = {run<playLines, false>, run<playLines, true>, run<playCalls, false>,
                                       run<playCalls, true>};

void disturbEach(const std::function<void(TSwitchFixture&)>& disturb,
                 const std::function<void(TSwitchFixture&, const QStringList& before)>& verify)
{
    tests::disturbEach<TSwitchFixture>(kRuns, disturb, verify);
}

struct THostileSwitch
{
    using Fixture = TSwitchFixture;
    static constexpr char kBye[] = "bye";

    static auto& component(Fixture& fixture) { return fixture.device; }
    static std::span<const TPlay<Fixture>> plays() { return kRuns; }
    static QString read(const QString& line) { return tests::read(line); }
    static void dropLink(Fixture& fixture) { fixture.link.reset(); }
    static void clear(Fixture& fixture)
    {
        fixture.device->SetOnLog({});
        fixture.device->SetOnError({});
        fixture.device->SetOnCheckStatus({});
        fixture.device->SetOnCheckSQL({});
        fixture.device->SetOnNewItem({});
        fixture.device->SetRemoutDevice(switching::podNone);
    }
    static bool isSent(const QString& line) { return line.startsWith("send"); }
    static void expectAlive(Fixture& fixture)
    {
        fixture.trace.take();
        fixture.makeJob("008A!1!OFF!OFF");
        fixture.sweep();
        EXPECT_EQ(fixture.trace.countOf(reached("008A!1!OFF!OFF")), 1);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Switch, HostileController, THostileSwitch);

TEST(HostileHandlers, TheRunsReachEveryEvent)
{
    const QStringList lines = traceOf<TSwitchFixture>(run<playLines, true>);
    for (const QString beginning :
         {"log %Считано", "log %Отправлено", "log $$", "log 0 ", "status XXXSTACK", "status STACK",
          "status CHECK OLD", "new ", "send HW", "send RL", "monitor LOG", "monitor STATUS"}) {
        EXPECT_FALSE(lines.filter(beginning).isEmpty()) << beginning.toStdString();
    }
    EXPECT_FALSE(lines.filter(" mode 0").isEmpty());
    EXPECT_FALSE(lines.filter(" mode 1").isEmpty());
    const QStringList others = traceOf<TSwitchFixture>(run<playCalls, true>);
    EXPECT_FALSE(others.filter("error Device").isEmpty());
    EXPECT_FALSE(others.filter("monitor ERROR").isEmpty());
    EXPECT_FALSE(others.filter(" mode 2").isEmpty());
    EXPECT_FALSE(others.filter(" mode 3").isEmpty());
}

TEST(HostileHandlers, MayDestroyTheComponent)
{
    disturbEach([](TSwitchFixture& fixture) { fixture.device.reset(); },
                [](TSwitchFixture& fixture, const QStringList& before) {
                    EXPECT_FALSE(fixture.device);
                    EXPECT_EQ(fixture.trace.take(), before); // and nothing comes after it
                });
}

TEST(HostileHandlers, MayDestroyTheConnector)
{
    disturbEach([](TSwitchFixture& fixture) { fixture.link.reset(); },
                [](TSwitchFixture& fixture, const QStringList& before) {
                    EXPECT_EQ(fixture.device->Connector(), nullptr);
                    EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
                });
}

TEST(HostileHandlers, MayTakeAwayEveryHandler)
{
    disturbEach(
        [](TSwitchFixture& fixture) {
            fixture.device->SetOnLog({});
            fixture.device->SetOnError({});
            fixture.device->SetOnCheckStatus({});
            fixture.device->SetOnCheckSQL({});
            fixture.device->SetOnNewItem({});
        },
        [](TSwitchFixture& fixture, const QStringList& before) {
            EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
        });
}

TEST(HostileHandlers, MayFeedLinesAndSweep)
{
    disturbEach(
        [](TSwitchFixture& fixture) {
            fixture.inject("#0.0.0.0:009ARELAY1Y4F");
            fixture.inject("$0.0.0.0:009ASS1F");
            fixture.sweep();
        },
        [](TSwitchFixture& fixture, const QStringList& before) {
            EXPECT_EQ(fixture.trace.take().mid(0, before.size()), before);
            fixture.Answers.clear();
            fixture.sweep(); // not left busy
            fixture.sweep();
            EXPECT_FALSE(fixture.trace.take().filter("009A!1").isEmpty());
        });
}

TEST(HostileHandlers, MayRaiseAnywhere)
{
    disturbEach([](TSwitchFixture&) { throw std::runtime_error("host trouble"); },
                [](TSwitchFixture& fixture, const QStringList&) {
                    fixture.trace.take();
                    fixture.makeJob("008A!1!OFF!OFF");
                    fixture.sweep();
                    EXPECT_FALSE(fixture.trace.take().filter("XXXSTACK!008A").isEmpty());
                });
}

} // namespace
