// Handlers that destroy the component or the port, replace or clear handlers, or pump messages, each at each
// event of whole passes.

#include "event_recorder.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

/// Everything that a host and the controllers may do to the component, in one run. Nothing here touches a
/// component or a port that is gone.
void playEverything(TGateBench& bench)
{
    bench.trace.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    const auto feed = [&](const QByteArray& bytes) {
        if (bench.port) {
            bench.port->feed(bytes);
        }
    };
    feed("$03AR1\r#03ARelay\r");      // unlisted, opened
    feed("$03AP\r$03AG\r");           // passed
    bench.clock.advance(200);         // finished and removed by ticks
    feed("#01DBtn-Activ\r$000900\r"); // exit button, poll
    bench.clock.advance(2'500);       // not answered
    bench.trace.Answers[0] = 0;
    feed("$01AR2\r$02AR3\r"); // refused, one at once and one by a tick
    bench.clock.advance(200);
    bench.trace.Answers[0] = -1;
    feed("$01DR4\r");
    feed("#01DInG-Activ\r#01DRelay\r"); // opened by the in-gate sensor
    bench.clock.advance(4'500);         // timed out
    bench.trace.Answers[0] = 1;
    if (bench.port) {
        bench.port->Close();
    }
    feed("$01AR5\r$02AR6\r"); // neither can be sent, one at once and one by a tick
    bench.clock.advance(200);
}

/// The same by direct calls.
void callEverything(TGateBench& bench)
{
    bench.trace.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}};
    const std::function<void()> calls[] = {
        [&] { bench.gate->p_hw_ProtocolIn("$03AR1"); },
        [&] { bench.gate->p_hw_ProtocolIn("#03AInG-Activ"); },
        [&] { bench.gate->p_hw_ProtocolIn("$000900"); },
        [&] { bench.gate->p_hw_CheckStatus("04A", "1", "R"); },
        [&] { bench.gate->p_hw_CallStackArray(); },
        [&] { bench.gate->p_hw_SQLCheck(0, 2); },
        [&] { bench.gate->p_hw_SendComCommand(0, 1); },
        [&] { bench.gate->p_hw_relay("01D", "3", 1); },
        [&] { bench.gate->p_hw_relay("xxD", "3", 1); },
        [&] { bench.gate->p_hw_CheckStatusAll(); },
        [&] { bench.gate->ShowinternalStatus(bench.gate.get(), "N", "1", "2", "3", "4"); },
        [&] {
            bench.gate->p_hw_ProtocolIn("$03AG");
            if (bench.gate) {
                bench.gate->p_hw_CallStackArray();
            }
        },
    };
    for (const auto& call : calls) {
        if (bench.gate) {
            platform::guarded(call); // what a handler raises may reach a caller
        }
    }
}

using TPlay = void (*)(TGateBench&);
const TPlay kPlays[] = {playEverything, callEverything};

/// The undisturbed run.
QStringList traceOf(TPlay play)
{
    TGateBench bench;
    play(bench);
    return bench.trace.take();
}

/// Plays once for each of its events, and does something inside that event.
void disturbEach(const std::function<void(TGateBench&)>& disturb,
                 const std::function<void(TGateBench&, const QStringList& before)>& verify)
{
    for (const TPlay play : kPlays) {
        const QStringList undisturbed = traceOf(play);
        for (qsizetype i = 0; i < undisturbed.size(); ++i) {
            SCOPED_TRACE(undisturbed[i].toStdString());
            TGateBench bench;
            qsizetype left = i;
            bench.trace.OnLine = [&](const QString&) {
                if (left-- == 0) {
                    disturb(bench);
                }
            };
            play(bench);
            bench.trace.OnLine = {};
            verify(bench, undisturbed.mid(0, i + 1));
        }
    }
}

TEST(HostileHandlers, TheRunReachesEveryEvent)
{
    for (const TPlay play : kPlays) {
        const QStringList lines = traceOf(play);
        for (const QString beginning : {"log %Считано", "log %Отправлено", "error [02]", "img",
                                        "status CHECK", "status COME", "status STACK", "write"}) {
            EXPECT_FALSE(lines.filter(beginning).isEmpty()) << beginning.toStdString();
        }
        for (const int mode : {0, 2}) {
            EXPECT_FALSE(lines.filter(QStringLiteral(" mode %1 ").arg(mode)).isEmpty()) << mode;
        }
    }
    const QStringList lines = traceOf(playEverything);
    EXPECT_FALSE(lines.filter(" mode 1 ").isEmpty());
    EXPECT_FALSE(lines.filter(" mode 3 ").isEmpty());
    EXPECT_FALSE(traceOf(callEverything).filter("error [04]").isEmpty());
}

TEST(HostileHandlers, MayDestroyTheComponent)
{
    disturbEach([](TGateBench& bench) { bench.gate.reset(); },
                [](TGateBench& bench, const QStringList& before) {
                    bench.trace.expect(before); // and not a word more
                    bench.inject("$01AR1");
                    bench.clock.advance(10'000);
                    bench.trace.expect({});
                });
}

TEST(HostileHandlers, MayDestroyTheComponentAndRaise)
{
    disturbEach(
        [](TGateBench& bench) {
            bench.gate.reset();
            throw std::runtime_error("host trouble");
        },
        [](TGateBench& bench, const QStringList& before) {
            QStringList lines = bench.trace.take();
            lines.removeAll("raised host trouble");
            EXPECT_EQ(lines, before);
        });
}

TEST(HostileHandlers, MayRaise)
{
    disturbEach([](TGateBench&) { throw std::runtime_error("host trouble"); },
                [](TGateBench& bench, const QStringList& before) {
                    const QStringList lines = bench.trace.take();
                    EXPECT_EQ(lines.mid(0, before.size()), before);
                    EXPECT_EQ(lines.filter("host trouble").size(), 1); // told once, to one of the two
                    bench.inject("$08AR1");
                    bench.clock.advance(1'000);
                    EXPECT_GE(bench.trace.countOf("check 08A 1 NEW mode 0"), 1); // and the gate works
                });
}

TEST(HostileHandlers, MayDestroyTheComponentInAPumpedLine)
{
    disturbEach(
        [](TGateBench& bench) {
            bench.trace.OnLine = [&bench](const QString& line) {
                if (line.contains("#09ZBye")) {
                    bench.gate.reset();
                }
            };
            bench.gate->p_hw_ProtocolIn("#09ZBye");
        },
        [](TGateBench& bench, const QStringList& before) {
            bench.trace.expect(before + QStringList(read("#09ZBye")));
        });
}

TEST(HostileHandlers, MayDestroyThePort)
{
    disturbEach([](TGateBench& bench) { bench.port.reset(); },
                [](TGateBench& bench, const QStringList&) {
                    ASSERT_TRUE(bench.gate);
                    EXPECT_EQ(bench.gate->ComPort(), nullptr);
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                    bench.trace.take();
                    bench.gate->p_hw_CheckStatusAll();
                    bench.trace.expect({kPortClosed});
                });
}

TEST(HostileHandlers, MayDestroyBoth)
{
    disturbEach(
        [](TGateBench& bench) {
            bench.port.reset();
            bench.gate.reset();
        },
        [](TGateBench& bench, const QStringList& before) { bench.trace.expect(before); });
    disturbEach(
        [](TGateBench& bench) {
            bench.gate.reset();
            bench.port.reset();
        },
        [](TGateBench& bench, const QStringList& before) { bench.trace.expect(before); });
}

TEST(HostileHandlers, MayCloseThePort)
{
    disturbEach([](TGateBench& bench) { bench.port->Close(); },
                [](TGateBench& bench, const QStringList& before) {
                    const QStringList lines = bench.trace.take();
                    EXPECT_EQ(lines.mid(0, before.size()), before);
                    EXPECT_TRUE(lines.mid(before.size()).filter("write").isEmpty());
                });
}

TEST(HostileHandlers, MayAssignAnotherPort)
{
    TMemoryPort other;
    disturbEach([&](TGateBench& bench) { bench.gate->SetComport(&other); },
                [&](TGateBench& bench, const QStringList&) {
                    bench.trace.take();
                    bench.inject("#01AOld");
                    bench.trace.expect({});
                    other.feed("#01ANew\r");
                    EXPECT_EQ(bench.trace.countOf(read("#01ANew")), 1);
                });
}

TEST(HostileHandlers, MayClearAllHandlers)
{
    disturbEach(
        [](TGateBench& bench) {
            bench.gate->SetOnLog({});
            bench.gate->SetOnError({});
            bench.gate->SetOnCheckStatus({});
            bench.gate->SetOnCheckSQL({});
            bench.gate->SetOnGetImg({});
        },
        [](TGateBench& bench, const QStringList& before) {
            QStringList lines = bench.trace.take();
            EXPECT_EQ(lines.mid(0, before.size()), before);
            lines.removeIf([](const QString& line) { return line.startsWith("write"); });
            EXPECT_LE(lines.size(), before.size());
        });
}

TEST(HostileHandlers, MayReplaceThemselves)
{
    for (const TPlay play : kPlays) {
        TGateBench bench;
        bench.trace.OnLine = [&](const QString&) { bench.trace.attach(*bench.gate); };
        play(bench);
        bench.trace.expect(traceOf(play));
    }
}

TEST(HostileHandlers, ReplacementIsCalledFromTheNextEventOn)
{
    TGateBench bench;
    bench.gate->SetOnCheckStatus([&](auto&&...) {
        bench.trace.add(true, "old");
        bench.gate->SetOnCheckStatus([&](auto&&...) { bench.trace.add(true, "new"); });
        bench.trace.add(true, "still old");
    });
    bench.inject("$01AR1");
    bench.trace.expect(
        {read("$01AR1"), "img 01A", "old", "still old", "new", "new", check("01A", "1", "NEW", 0)});
}

TEST(HostileHandlers, StayAliveWhileTheyRun)
{
    TGateBench bench;
    bench.gate->SetDeviceList({});
    int outlived = 0;
    // each handler owns something and clears its own event; what it owns must last until it returns
    const auto clearing = [&](auto clear) {
        return [&outlived, clear, owned = std::make_shared<int>(1)](auto&&...) {
            const std::weak_ptr<int> watch = owned;
            clear();
            outlived += watch.expired() ? 0 : 1;
        };
    };
    bench.gate->SetOnLog(clearing([&] { bench.gate->SetOnLog({}); }));
    bench.gate->SetOnError(clearing([&] { bench.gate->SetOnError({}); }));
    bench.gate->SetOnGetImg(clearing([&] { bench.gate->SetOnGetImg({}); }));
    bench.gate->SetOnCheckStatus(clearing([&] { bench.gate->SetOnCheckStatus({}); }));
    bench.gate->SetOnCheckSQL(clearing([&] { bench.gate->SetOnCheckSQL({}); }));
    bench.inject("$01AR1");
    EXPECT_EQ(outlived, 5);
}

TEST(HostileHandlers, MayFeedALine)
{
    disturbEach([](TGateBench& bench) { bench.port->feed("$09ZR9\r#09ZHello\r"); },
                [](TGateBench& bench, const QStringList&) {
                    EXPECT_EQ(bench.trace.countOf(read("$09ZR9")), 1);
                    EXPECT_EQ(bench.trace.countOf(read("#09ZHello")), 1);
                    EXPECT_EQ(bench.trace.countOf("img 09Z"), 1);
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                });
}

TEST(HostileHandlers, MayHandleALineThemselves)
{
    disturbEach([](TGateBench& bench) { bench.gate->p_hw_ProtocolIn("$09ZR9"); },
                [](TGateBench& bench, const QStringList& before) {
                    const QStringList lines = bench.trace.take();
                    EXPECT_EQ(lines.mid(before.size(), 4),
                              QStringList({read("$09ZR9"), "error [02] Device not found 09Z", "img 09Z",
                                           looked("09Z", "9", "NEW")}));
                });
}

TEST(HostileHandlers, MayLetTimePass)
{
    disturbEach([](TGateBench& bench) { bench.clock.advance(5'000); },
                [](TGateBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    bench.clock.advance(60'000);
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                });
}

TEST(HostileHandlers, MayRunThePassThemselves)
{
    disturbEach([](TGateBench& bench) { bench.gate->p_hw_CallStackArray(); },
                [](TGateBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                });
}

TEST(HostileHandlers, DestroyedComponentAnswersItsCaller)
{
    TGateBench bench;
    bench.trace.OnLine = [&](const QString&) { bench.gate.reset(); };
    bench.makePass("01A", "1");
    EXPECT_EQ(bench.gate->p_hw_SQLCheck(0, 2), -1);
    EXPECT_FALSE(bench.gate);
}

TEST(HostileHandlers, PortIsWorthNothingWithoutTheComponent)
{
    TGateBench bench;
    bench.trace.OnLine = [&](const QString& line) {
        if (line.startsWith("log")) {
            bench.gate.reset();
        }
    };
    bench.port->feed("$01AX\r$01AY\r#01AHello\r"); // the rest of the read finds no one
    bench.trace.expect({read("$01AX")});
}

} // namespace
