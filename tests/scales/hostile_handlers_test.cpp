// Handlers that weigh again, reset, close the port, destroy the component or the port, raise or replace
// handlers, each at each event of everything that a scale and a host may do.

#include "support/hostile.h"
#include "wire_samples.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const TMischief<TScalesFixture> kMischiefs[] = {
    {"weighs again", [](TScalesFixture& b) { b.scales->GetWeight(true); }},
    {"weighs again and waits", [](TScalesFixture& b) { b.scales->GetWeight(false); }},
    {"resets", [](TScalesFixture& b) { b.scales->Reset(); }},
    {"closes the port", [](TScalesFixture& b) { b.scales->SetConnection(false); }},
    {"destroys the component", [](TScalesFixture& b) { b.scales.reset(); }},
    {"destroys the port", [](TScalesFixture& b) { b.port.reset(); }},
    {"destroys both",
     [](TScalesFixture& b) {
         b.port.reset();
         b.scales.reset();
     }},
    {"raises", [](TScalesFixture&) { throw std::runtime_error("host trouble"); }},
    {"aborts", [](TScalesFixture&) { throw platform::EAbort(); }},
    {"destroys the component and raises",
     [](TScalesFixture& b) {
         b.scales.reset();
         throw std::runtime_error("host trouble");
     }},
    {"takes the port away", [](TScalesFixture& b) { b.scales->SetComport(nullptr); }},
    {"assigns the port again", [](TScalesFixture& b) { b.scales->SetComport(b.port.get()); }},
    {"sets the port up", [](TScalesFixture& b) { b.scales->SetUpComport(); }},
    {"chooses no family", [](TScalesFixture& b) { b.scales->SetScalesType(0); }},
    {"chooses another family",
     [](TScalesFixture& b) { b.scales->SetScalesType(b.scales->ScalesType() % int(samples().size()) + 1); }},
    {"lets more arrive",
     [](TScalesFixture& b) { b.feed("\x80\x00\x06\x01\x02S 00050kg\x04<xx00050>B50\r\nW50kg"_b); }},
    {"polls", [](TScalesFixture& b) { b.scales->SetSendInterval(5'000); }},
    {"lets time pass", [](TScalesFixture& b) { b.clock.advance(6'000); }},
    {"clears the handlers",
     [](TScalesFixture& b) {
         b.scales->SetOnLog({});
         b.scales->SetOnError({});
         b.scales->SetOnWeight({});
     }},
};

/// Runs one step; what its handlers raise is the host's own.
template <class Step>
void attempt(TScalesFixture& fixture, Step&& step)
{
    if (!fixture.scales) {
        return;
    }
    try {
        step();
    } catch (const std::exception&) {
        fixture.trace.note("left");
    }
}

/// Everything that a scale of the family and its host may do, in one run.
void playEverything(TScalesFixture& fixture, const TSample& sample)
{
    fixture.use(sample.type);
    fixture.scales->SetSendInterval(20'000);
    const auto ask = [&](bool safe) { attempt(fixture, [&] { fixture.scales->GetWeight(safe); }); };
    ask(true);
    if (!sample.answer.isEmpty()) {
        fixture.feed(sample.answer);
    }
    fixture.feed(sample.bytes);
    fixture.feed(sample.bytes.first(1));
    fixture.feed(sample.bytes.mid(1));
    fixture.feed("\x01\x02"
                 "F 000000kg\x04");
    fixture.feed("\x01\x02S-000500kg\x04");
    fixture.feed("<xxERROR>xB99999999999\r\n            ERROR?");
    fixture.Waits = {fixture.arrives(sample.answer), fixture.arrives(sample.bytes)};
    ask(false);
    for (int cycle = 0; cycle < 4; ++cycle) {
        fixture.clock.advance(4'100);
        ask(cycle % 2 == 0);
    }
    fixture.clock.advance(20'000);
    attempt(fixture, [&] { fixture.scales->SetLastWeight(77); });
    if (fixture.port) {
        fixture.port->OpenFailure = QStringLiteral("COM7: busy");
        fixture.port->Close();
    }
    attempt(fixture, [&] { fixture.scales->SetConnection(true); });
    attempt(fixture, [&] { fixture.scales->Reset(); });
    attempt(fixture, [&] { fixture.scales->SetComport(nullptr); });
    attempt(fixture, [&] { fixture.scales->Reset(); });
}

/// After all that, the component weighs as if nothing had been.
void expectWeighs(TScalesFixture& fixture, const TSample& sample)
{
    if (!fixture.scales) {
        return;
    }
    fixture.trace.OnLine = {};
    if (!fixture.port) {
        fixture.port = std::make_unique<TMemoryPort>();
    }
    fixture.port->OpenFailure.reset();
    fixture.attach();
    fixture.scales->SetSendInterval(-1);
    fixture.scales->SetComport(fixture.port.get());
    fixture.scales->SetScalesType(sample.type);
    fixture.scales->Reset();
    fixture.Waits = {fixture.arrives(sample.answer), fixture.arrives(sample.bytes)};
    fixture.trace.take();
    EXPECT_EQ(fixture.scales->GetWeight(false), sample.weight);
    EXPECT_EQ(fixture.trace.countOf("weight"), isTold(sample) ? 1 : 0);
}

TEST_P(TEveryFamily, SurvivesEveryHandlerAtEveryEvent)
{
    const qsizetype events = surviveEach<TScalesFixture>(
        kMischiefs, [this](TScalesFixture& fixture) { playEverything(fixture, sample()); },
        [this](TScalesFixture& fixture) { expectWeighs(fixture, sample()); });
    EXPECT_GT(events, 20);
}

TEST_P(TEveryFamily, ADestroyedComponentTouchesNothingMore)
{
    for (const bool safe : {true, false}) {
        int events = 1;
        for (int at = 0; at < events; ++at) {
            TScalesFixture fixture;
            fixture.use(GetParam());
            fixture.clock.advance(4'100);
            int event = 0;
            fixture.trace.OnLine = [&](const QString&) {
                if (event++ == at) {
                    fixture.scales.reset();
                }
            };
            fixture.Waits = {fixture.arrives(sample().answer), fixture.arrives(sample().bytes)};
            const int weight = fixture.scales->GetWeight(safe);
            if (fixture.scales) {
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
        TScalesFixture fixture;
        fixture.use(GetParam());
        fixture.trace.once(line, [&] { fixture.scales.reset(); });
        fixture.feed(sample().answer + sample().bytes);
        fixture.feed(sample().bytes);
    }
}

using Hostile = TScalesTest;

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
