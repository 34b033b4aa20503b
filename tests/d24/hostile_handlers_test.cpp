// Handlers that destroy the component or the connector, replace or clear handlers, raise, or pump messages,
// each at each event of whole passes.

#include "d24_bench.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

void allowEverything(TBench& bench)
{
    bench.Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {5, 1}};
}

/// Everything that the controllers may do, by lines and ticks. Nothing here touches a component or a
/// connector that is gone.
void playLines(TBench& bench)
{
    const auto lines = [&](const QStringList& texts) {
        for (const QString& text : texts) {
            platform::guarded([&] { bench.inject(text); });
        }
    };
    allowEverything(bench);
    lines({"$1:001GRQ1AB"}); // opened, repeated, not confirmed
    bench.clock.advance(4'500);
    lines(
        {"#1:001GPING00", "#1:001GPING00", "#5:005TPING00", "#1:001GDC00", "#1:001GCC00", "#2:002TCROSS00"});
    bench.clock.advance(1'000);
    lines({"#1:001TBTPH00"}); // the exit button: opened, finished, removed
    bench.clock.advance(1'600);
    bench.Answers[0] = 0;
    lines({"$1:002TRQ2AB"}); // refused
    bench.clock.advance(1'100);
    bench.Answers[0] = 2;
    lines({"$1:003TRQ3AB", "#1:003TBTPH00", "$1:003TPRAB"}); // held, opened by the button, passed
    bench.clock.advance(1'000);
    lines({"$1:003TGRAB", "$1:004IRQ4AB", "$1:004IETAB", "$1:004IFKAB", "odd"}); // a display, given up
    bench.clock.advance(3'100);
}

/// The same by direct calls.
void playCalls(TBench& bench)
{
    allowEverything(bench);
    const std::function<void()> calls[] = {
        [&] { bench.gate->p_hw_ProtocolIn("$1:001GRQ1AB"); },
        [&] { bench.gate->p_hw_CheckStatus("1", "001G", "G", "1", "RQ"); },
        [&] { bench.gate->p_hw_CheckStatus("1", "002T", "T", "1", "RQ"); },
        [&] { bench.gate->p_hw_SQLCheck(0, 0); },
        [&] { bench.gate->p_hw_SQLCheck(0, 2); },
        [&] { bench.gate->p_hw_SendComCommand(0, 1); },
        [&] { bench.gate->p_hw_SendComCommand(0, 0); },
        [&] { bench.link ? void(bench.link->Up = false) : void(); },
        [&] { bench.gate->p_hw_SendComCommand(0, 1); },
        [&] { bench.gate->p_hw_relay("1", "001G", "1", 1); },
        [&] { bench.gate->p_hw_CheckStatusAll(); },
        [&] { bench.link ? void(bench.link->Up = true) : void(); },
        [&] { bench.gate->DevicePing("1", "001G", "G"); },
        [&] { bench.gate->DevicePing("2", "001G", "G"); },
        [&] { bench.gate->DevicePingTime(nullptr); },
        [&] { bench.gate->p_hw_manual("1", "003T", "OPEN"); },
        [&] { bench.gate->p_hw_manual("003T", "", "FINISH"); },
        [&] { bench.gate->p_hw_CallStackArray(); },
        [&] { bench.gate->p_hw_CallStackArray(); },
        [&] { bench.gate->ShowinternalStatus(bench.gate.get(), "N", "1", "2", "3", "4", "5", "6"); },
    };
    for (const auto& call : calls) {
        if (bench.gate) {
            platform::guarded(call);
        }
    }
    bench.clock.advance(3'000);
}

using TPlay = void (*)(TBench&);

struct TRun : TBench
{
    explicit TRun(bool monitored)
    {
        gate->SetRemoutDevice(monitored ? d24::podServer : d24::podNone);
        gate->SetCheckCross(true);
        gate->SetCheckET(true);
        gate->SetTimerInterval(500); // keeps the runs short
        Message = "|Hello|";
    }
};

struct TVariant
{
    TPlay play;
    bool monitored;
};

const TVariant kVariants[] = {{playLines, false}, {playLines, true}, {playCalls, false}, {playCalls, true}};

/// The undisturbed run.
QStringList traceOf(const TVariant& variant)
{
    TRun bench(variant.monitored);
    variant.play(bench);
    return bench.trace.take();
}

/// Plays once for each of its events, and does something inside that event.
void disturbEach(const std::function<void(TBench&)>& disturb,
                 const std::function<void(TBench&, const QStringList& before)>& verify)
{
    for (const TVariant& variant : kVariants) {
        const QStringList undisturbed = traceOf(variant);
        for (qsizetype i = 0; i < undisturbed.size(); ++i) {
            SCOPED_TRACE(undisturbed[i].toStdString());
            TRun bench(variant.monitored);
            qsizetype left = i;
            bench.trace.OnLine = [&](const QString&) {
                if (left-- == 0) {
                    disturb(bench);
                }
            };
            variant.play(bench);
            bench.trace.OnLine = {};
            verify(bench, undisturbed.mid(0, i + 1));
            if (::testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

/// Whatever happened, every pass that is left comes to its end.
void expectToFinish(TBench& bench)
{
    ASSERT_TRUE(bench.gate);
    bench.trace.OnLine = {};
    allowEverything(bench);
    bench.gate->SetTimerInterval(200);
    bench.gate->p_hw_ProtocolIn("odd");
    bench.clock.advance(20'000);
    EXPECT_EQ(bench.gate->StackItemsCount(), 0);
}

TEST(HostileHandlers, TheRunsReachEveryEvent)
{
    const QStringList lines = traceOf({playLines, true});
    for (const QString beginning : {"log %Считано", "log %Отправлено", "img", "status CHECK", "status COME",
                                    "status STACK!5!005T!T!!NOPING", "send SH", "send GO", "send PH",
                                    "send AL", "monitor LOG", "monitor STATUS"}) {
        EXPECT_FALSE(lines.filter(beginning).isEmpty()) << beginning.toStdString();
    }
    for (const int mode : {0, 1, 2, 3, 5}) {
        EXPECT_FALSE(lines.filter(QStringLiteral(" mode %1").arg(mode)).isEmpty()) << mode;
    }
    EXPECT_GE(lines.filter("send GO1:001G").size(), 3); // repeated
    EXPECT_EQ(traceOf({playCalls, true}).filter(kPortClosed).size(), 3);
    EXPECT_EQ(traceOf({playCalls, true}).filter("monitor ERROR").size(), 3);
}

TEST(HostileHandlers, MayDestroyTheComponent)
{
    disturbEach([](TBench& bench) { bench.gate.reset(); },
                [](TBench& bench, const QStringList& before) {
                    bench.trace.expect(before); // and not a word more
                    EXPECT_FALSE(bench.link->OnGetData());
                    bench.inject("$1:001TRQ1AB");
                    bench.clock.advance(10'000);
                    bench.trace.expect({});
                });
}

TEST(HostileHandlers, MayDestroyTheComponentAndRaise)
{
    disturbEach(
        [](TBench& bench) {
            bench.gate.reset();
            throw std::runtime_error("host trouble");
        },
        [](TBench& bench, const QStringList& before) {
            QStringList lines = bench.trace.take();
            EXPECT_LE(lines.removeAll("raised host trouble"), 1);
            EXPECT_EQ(lines, before);
        });
}

TEST(HostileHandlers, MayDestroyTheComponentInAPumpedLine)
{
    disturbEach(
        [](TBench& bench) {
            bench.trace.OnLine = [&bench](const QString& line) {
                if (line.contains("bye")) {
                    bench.gate.reset();
                }
            };
            bench.gate->p_hw_ProtocolIn("bye");
        },
        [](TBench& bench, const QStringList& before) {
            bench.trace.expect(before + QStringList(read("bye")));
        });
}

TEST(HostileHandlers, MayDestroyTheConnector)
{
    disturbEach([](TBench& bench) { bench.link.reset(); },
                [](TBench& bench, const QStringList& before) {
                    ASSERT_TRUE(bench.gate);
                    EXPECT_EQ(bench.gate->Connector(), nullptr);
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    bench.gate->p_hw_CheckStatusAll();
                    EXPECT_EQ(bench.trace.countOf(kPortClosed), 1);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, MayDestroyBoth)
{
    disturbEach(
        [](TBench& bench) {
            bench.link.reset();
            bench.gate.reset();
        },
        [](TBench& bench, const QStringList& before) { bench.trace.expect(before); });
    disturbEach(
        [](TBench& bench) {
            bench.gate.reset();
            bench.link.reset();
        },
        [](TBench& bench, const QStringList& before) { bench.trace.expect(before); });
}

TEST(HostileHandlers, MayCutTheLink)
{
    disturbEach(
        [](TBench& bench) {
            if (bench.link) {
                bench.link->Up = false;
            }
        },
        [](TBench& bench, const QStringList& before) {
            EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
            expectToFinish(bench);
        });
}

TEST(HostileHandlers, MayTakeTheConnectorAway)
{
    disturbEach([](TBench& bench) { bench.gate->SetConnector(nullptr); },
                [](TBench& bench, const QStringList& before) {
                    const QStringList lines = bench.trace.take();
                    EXPECT_EQ(lines.mid(0, before.size()), before);
                    EXPECT_LE(lines.mid(before.size()).filter("send ").size(), 0);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, MayAssignAnotherConnector)
{
    TTrace otherTrace;
    TTestLink other(otherTrace);
    disturbEach([&](TBench& bench) { bench.gate->SetConnector(&other); },
                [&](TBench& bench, const QStringList&) {
                    EXPECT_EQ(bench.gate->Connector(), &other);
                    other.GetCommand("odd");
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                    expectToFinish(bench);
                    otherTrace.take();
                });
}

TEST(HostileHandlers, MayClearAllHandlers)
{
    disturbEach(
        [](TBench& bench) {
            bench.gate->SetOnLog({});
            bench.gate->SetOnError({});
            bench.gate->SetOnCheckStatus({});
            bench.gate->SetOnCheckSQL({});
            bench.gate->SetOnGetImg({});
            bench.gate->SetRemoutDevice(d24::podNone);
        },
        [](TBench& bench, const QStringList& before) {
            QStringList lines = bench.trace.take();
            EXPECT_EQ(lines.mid(0, before.size()), before);
            lines = lines.mid(before.size());
            lines.removeIf([](const QString& line) { return line.startsWith("send"); });
            EXPECT_EQ(lines, QStringList());
            expectToFinish(bench);
        });
}

TEST(HostileHandlers, MayReplaceThemselves)
{
    for (const TVariant& variant : kVariants) {
        TRun bench(variant.monitored);
        bench.trace.OnLine = [&](const QString&) {
            bench.attachTexts();
            bench.attachCheckSQL();
        };
        variant.play(bench);
        bench.trace.expect(traceOf(variant));
    }
}

TEST(HostileHandlers, ReplacementIsCalledFromTheNextEventOn)
{
    TBench bench;
    bench.gate->SetOnCheckStatus([&](auto&&...) {
        bench.trace.add("old");
        bench.gate->SetOnCheckStatus([&](auto&&...) { bench.trace.add("new"); });
        bench.trace.add("still old");
    });
    bench.inject("$10.0.0.5:001TRQ7AB");
    bench.trace.expect({read("$10.0.0.5:001TRQ7AB"), "img 001T", "old", "still old", "new", "new",
                        check(kT, "7", "NEW", 0)});
}

TEST(HostileHandlers, MayFeedALine)
{
    disturbEach([](TBench& bench) { bench.inject("$9:009TRQ9AB"); },
                [](TBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.countOf(read("$9:009TRQ9AB")), 1);
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, MayLetTimePass)
{
    disturbEach([](TBench& bench) { bench.clock.advance(5'000); },
                [](TBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.countOf("raised"), 0);
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, MayRunThePassThemselves)
{
    disturbEach([](TBench& bench) { bench.gate->p_hw_CallStackArray(); },
                [](TBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, MayRunPassesUntilEveryRecordIsGone)
{
    disturbEach(
        [](TBench& bench) {
            for (int i = 0; i < bench.gate->StackItemsCount(); ++i) {
                bench.gate->StackItem(i)->Status = "CLOSE";
            }
            for (int i = 0; i < 5; ++i) {
                bench.gate->p_hw_CallStackArray();
            }
        },
        [](TBench& bench, const QStringList& before) {
            EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
            expectToFinish(bench);
        });
}

TEST(HostileHandlers, MayRaise)
{
    disturbEach([](TBench&) { throw std::runtime_error("host trouble"); },
                [](TBench& bench, const QStringList& before) {
                    EXPECT_EQ(bench.trace.take().mid(0, before.size()), before);
                    expectToFinish(bench);
                });
}

TEST(HostileHandlers, DestroyedComponentAnswersItsCaller)
{
    const auto disturbed = [](const std::function<void(TBench&)>& call) {
        TBench bench;
        bench.Answers = {{2, 7}};
        bench.makePass(kT, "1");
        bench.link->Up = true;
        bench.trace.OnLine = [&](const QString&) { bench.gate.reset(); };
        call(bench);
        EXPECT_FALSE(bench.gate);
    };
    disturbed([](TBench& bench) { EXPECT_EQ(bench.gate->p_hw_SQLCheck(0, 2), -1); });
    disturbed([](TBench& bench) { EXPECT_TRUE(bench.gate->p_hw_SendComCommand(0, 1)); });
    disturbed([](TBench& bench) {
        bench.link->Up = false;
        EXPECT_TRUE(bench.gate->p_hw_SendComCommand(0, 1));
    });
    disturbed([](TBench& bench) {
        bench.link->Up = false;
        EXPECT_TRUE(bench.gate->p_hw_CheckStatusAll());
    });
    disturbed([](TBench& bench) {
        bench.link->Up = false;
        EXPECT_TRUE(bench.gate->p_hw_relay("1", "001T", "1", 1));
    });
    disturbed([](TBench& bench) { bench.gate->p_hw_CheckStatus("1", "009T", "T", "1", "RQ"); });
}

} // namespace
