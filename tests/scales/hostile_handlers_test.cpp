// Handlers that weigh again, reset, close the port, destroy the component or the port, raise or replace
// handlers, each at each event of everything that a scale and a host may do.

#include "wire_samples.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using TAction = void (*)(TScalesBench& bench);

struct TNamedAction
{
    const char* name;
    TAction action;
};

const TNamedAction kActions[] = {
    {"weighs again", [](TScalesBench& b) { b.scales->GetWeight(true); }},
    {"weighs again and waits", [](TScalesBench& b) { b.scales->GetWeight(false); }},
    {"resets", [](TScalesBench& b) { b.scales->Reset(); }},
    {"closes the port", [](TScalesBench& b) { b.scales->SetConnection(false); }},
    {"destroys the component", [](TScalesBench& b) { b.scales.reset(); }},
    {"destroys the port", [](TScalesBench& b) { b.port.reset(); }},
    {"destroys both",
     [](TScalesBench& b) {
         b.port.reset();
         b.scales.reset();
     }},
    {"raises", [](TScalesBench&) { throw std::runtime_error("host trouble"); }},
    {"aborts", [](TScalesBench&) { throw platform::EAbort(); }},
    {"destroys the component and raises",
     [](TScalesBench& b) {
         b.scales.reset();
         throw std::runtime_error("host trouble");
     }},
    {"takes the port away", [](TScalesBench& b) { b.scales->SetComport(nullptr); }},
    {"assigns the port again", [](TScalesBench& b) { b.scales->SetComport(b.port.get()); }},
    {"sets the port up", [](TScalesBench& b) { b.scales->SetUpComport(); }},
    {"chooses no family", [](TScalesBench& b) { b.scales->SetScalesType(0); }},
    {"chooses another family",
     [](TScalesBench& b) { b.scales->SetScalesType(b.scales->ScalesType() % int(samples().size()) + 1); }},
    {"lets more arrive",
     [](TScalesBench& b) { b.feed("\x80\x00\x06\x01\x02S 00050kg\x04<xx00050>B50\r\nW50kg"_b); }},
    {"polls", [](TScalesBench& b) { b.scales->SetSendInterval(5'000); }},
    {"lets time pass", [](TScalesBench& b) { b.clock.advance(6'000); }},
    {"clears the handlers",
     [](TScalesBench& b) {
         b.scales->SetOnLog({});
         b.scales->SetOnError({});
         b.scales->SetOnWeight({});
     }},
};

/// Runs one step; what its handlers raise is the host's own.
template <class Step>
void attempt(TScalesBench& bench, Step&& step)
{
    if (!bench.scales) {
        return;
    }
    try {
        step();
    } catch (const std::exception&) {
        bench.trace.note("left");
    }
}

/// Everything that a scale of the family and its host may do, in one run.
void playEverything(TScalesBench& bench, const TSample& sample)
{
    bench.use(sample.type);
    bench.scales->SetSendInterval(20'000);
    const auto ask = [&](bool safe) { attempt(bench, [&] { bench.scales->GetWeight(safe); }); };
    ask(true);
    if (!sample.answer.isEmpty()) {
        bench.feed(sample.answer);
    }
    bench.feed(sample.bytes);
    bench.feed(sample.bytes.first(1));
    bench.feed(sample.bytes.mid(1));
    bench.feed("\x01\x02"
               "F 000000kg\x04");
    bench.feed("\x01\x02S-000500kg\x04");
    bench.feed("<xxERROR>xB99999999999\r\n            ERROR?");
    bench.Waits = {bench.arrives(sample.answer), bench.arrives(sample.bytes)};
    ask(false);
    for (int cycle = 0; cycle < 4; ++cycle) {
        bench.clock.advance(4'100);
        ask(cycle % 2 == 0);
    }
    bench.clock.advance(20'000);
    attempt(bench, [&] { bench.scales->SetLastWeight(77); });
    if (bench.port) {
        bench.port->OpenFailure = QStringLiteral("COM7: busy");
        bench.port->Close();
    }
    attempt(bench, [&] { bench.scales->SetConnection(true); });
    attempt(bench, [&] { bench.scales->Reset(); });
    attempt(bench, [&] { bench.scales->SetComport(nullptr); });
    attempt(bench, [&] { bench.scales->Reset(); });
}

/// After all that, the component weighs as if nothing had been.
void expectWeighs(TScalesBench& bench, const TSample& sample)
{
    if (!bench.scales) {
        return;
    }
    bench.trace.OnLine = {};
    if (!bench.port) {
        bench.port = std::make_unique<TMemoryPort>();
    }
    bench.port->OpenFailure.reset();
    bench.trace.attach(*bench.scales);
    bench.scales->SetSendInterval(-1);
    bench.scales->SetComport(bench.port.get());
    bench.scales->SetScalesType(sample.type);
    bench.scales->Reset();
    bench.Waits = {bench.arrives(sample.answer), bench.arrives(sample.bytes)};
    bench.trace.take();
    EXPECT_EQ(bench.scales->GetWeight(false), sample.weight);
    EXPECT_EQ(bench.trace.countOf("weight"), isTold(sample) ? 1 : 0);
}

TEST_P(TEveryFamily, SurvivesEveryHandlerAtEveryEvent)
{
    int events = 1;
    for (int at = 0; at < events; ++at) {
        for (const TNamedAction& hostile : kActions) {
            TScalesBench bench;
            int event = 0;
            QString where;
            bench.trace.OnLine = [&](const QString& line) {
                if (event++ == at) {
                    where = line;
                    hostile.action(bench);
                }
            };
            playEverything(bench, sample());
            if (&hostile == kActions) {
                events = std::max(events, event);
            }
            const ::testing::ScopedTrace trace_(__FILE__, __LINE__,
                                                where.toStdString() + ": " + hostile.name);
            expectWeighs(bench, sample());
        }
        if (HasFatalFailure() || HasNonfatalFailure()) {
            return;
        }
    }
    EXPECT_GT(events, 20);
}

TEST_P(TEveryFamily, ADestroyedComponentTouchesNothingMore)
{
    for (const bool safe : {true, false}) {
        int events = 1;
        for (int at = 0; at < events; ++at) {
            TScalesBench bench;
            bench.use(GetParam());
            bench.clock.advance(4'100);
            int event = 0;
            bench.trace.OnLine = [&](const QString&) {
                if (event++ == at) {
                    bench.scales.reset();
                }
            };
            bench.Waits = {bench.arrives(sample().answer), bench.arrives(sample().bytes)};
            const int weight = bench.scales->GetWeight(safe);
            if (bench.scales) {
                break; // there is no such event
            }
            EXPECT_EQ(event, at + 1) << "an event after the end";
            EXPECT_EQ(weight, -1);
            events = event + 1;
        }
    }
}

TEST_P(TEveryFamily, MayBeDestroyedByItsPacket)
{
    for (const QString& line : {kStart, kStop, got(sample().packet)}) {
        TScalesBench bench;
        bench.use(GetParam());
        bench.trace.once(line, [&] { bench.scales.reset(); });
        bench.feed(sample().answer + sample().bytes);
        bench.feed(sample().bytes);
    }
}

class Hostile : public TScalesTest
{
};

TEST_F(Hostile, WeighingInsideOnWeightIsARequestAndTheWeightStays)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    trace.once("weight", [&] { EXPECT_EQ(scales->GetWeight(true), 0); });
    feed("\x01\x02S 000100kg\x04");
    trace.expect(received("\x01\x02S 000100kg\x04") + QStringList{weighed(100)} + sent("\x05"));
    EXPECT_EQ(scales->LastWeight(), 100);
    feed("\x06");
    trace.expect(received("\x06") + sent("\x11"));
}

TEST_F(Hostile, ResetInsideOnWeightBeginsAnew)
{
    use(2);
    ask();
    feed("\x06");
    trace.take();
    trace.once("weight", [&] { scales->Reset(); });
    feed("\x01\x02S 000100kg\x04");
    trace.expect(received("\x01\x02S 000100kg\x04") + QStringList{weighed(100), kResetPort});
    feed("\x06");
    trace.expect(received("\x06") + sent("\x11"));
}

TEST_F(Hostile, ClosingInsideTheReportOfSilence)
{
    use(3);
    for (int i = 0; i < 3; ++i) {
        clock.advance(4'100);
        scales->GetWeight(true);
    }
    trace.take();
    clock.advance(4'100);
    trace.once(kNoAnswer, [&] { port->Close(); });
    scales->GetWeight(true);
    trace.expect({kNoAnswer, kResetPort}); // nothing to write to, then opened again
    EXPECT_TRUE(port->Connected());
}

// Binding to the port empties the buffer, so that no packet can come out of it any more.
TEST_F(Hostile, ResetInsideTheSearchLeavesNoPacket)
{
    for (const TSample& sample : samples()) {
        use(sample.type);
        scales->GetWeight(true);
        if (!sample.answer.isEmpty()) {
            feed(sample.answer);
        }
        for (const QString& line : {kStart, kStop}) {
            trace.take();
            trace.once(line, [&] { scales->Reset(); });
            feed(sample.bytes);
            EXPECT_EQ(trace.countOf("log [03]"), 0) << sample.type << ' ' << line.toStdString();
        }
    }
}

TEST_F(Hostile, WhatArrivesAfterAResetInsideTheSearchIsFramedAnew)
{
    for (const int type : {5, 6, 7, 8}) {
        for (const QString& line : {kStart, kStop}) {
            use(type);
            trace.once(line, [&, type] {
                scales->Reset();
                feed("garbage" + sampleOf(type).bytes);
            });
            feed(sampleOf(type).bytes);
            EXPECT_EQ(trace.take().filter("log [03]"), QStringList{got(sampleOf(type).packet)})
                << type << ' ' << line.toStdString();
            scales->Reset();
        }
    }
}

TEST_F(Hostile, AssigningAnotherPortInsideAnEventMovesTheDialogue)
{
    TMemoryPort other;
    other.Open();
    trace.attach(other);
    use(2);
    ask();
    trace.once("log [03]", [&] { scales->SetComport(&other); });
    feed("\x06");
    EXPECT_EQ(other.takeWritten(), "\x11");
    other.feed("\x01\x02S 000100kg\x04");
    EXPECT_EQ(scales->LastWeight(), 100);
}

} // namespace
