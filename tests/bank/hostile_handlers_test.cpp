// Handlers that close the port, destroy the component or the port, raise, re-enter or replace handlers, each
// at each event of everything that a terminal and a host may do.

#include "bank_fixture.h"
#include "support/hostile.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

const TMischief<TBankFixture> kMischiefs[] = {
    {"closes the port", [](TBankFixture& b) { b.pos->SetConnection(false); }},
    {"opens the port", [](TBankFixture& b) { b.pos->SetConnection(true); }},
    {"destroys the component", [](TBankFixture& b) { b.pos.reset(); }},
    {"destroys the port", [](TBankFixture& b) { b.port.reset(); }},
    {"destroys both",
     [](TBankFixture& b) {
         b.port.reset();
         b.pos.reset();
     }},
    {"raises", [](TBankFixture&) { throw std::runtime_error("host trouble"); }},
    {"aborts", [](TBankFixture&) { throw platform::EAbort(); }},
    {"destroys the component and raises",
     [](TBankFixture& b) {
         b.pos.reset();
         throw std::runtime_error("host trouble");
     }},
    {"takes the port away", [](TBankFixture& b) { b.pos->SetComport(nullptr); }},
    {"assigns the port again", [](TBankFixture& b) { b.pos->SetComport(b.port.get()); }},
    {"chooses no version", [](TBankFixture& b) { b.pos->SetPosType(0); }},
    {"chooses another version", [](TBankFixture& b) { b.pos->SetPosType(3); }},
    {"lets an amount request arrive", [](TBankFixture& b) { b.feed(kAskAmount); }},
    {"lets an answer arrive", [](TBankFixture& b) { b.feed(framed(kAnswerBody)); }},
    {"lets half a frame arrive",
     [](TBankFixture& b) {
         b.feed("\x02"
                "01=");
     }},
    {"lets time pass", [](TBankFixture& b) { b.clock.advance(4'000'000); }},
    {"clears the handlers",
     [](TBankFixture& b) {
         b.pos->SetOnLog({});
         b.pos->SetOnError({});
         b.pos->SetOnRequestAmount({});
         b.pos->SetOnRequestOperation({});
     }},
};

/// Everything that a terminal may say and a host may do, in one run.
void playEverything(TBankFixture& fixture)
{
    const auto connect = [&](bool open) {
        if (fixture.pos) {
            platform::guarded([&] { fixture.pos->SetConnection(open); });
        }
    };
    connect(true);
    fixture.feed(kAskAmount);
    fixture.feed(framed(kCardBody));
    fixture.feed(framed(kAnswerBody));
    fixture.feed(kFinish);
    fixture.feed("\x02\x05\x03?");
    fixture.feed(framed("99=1"));
    fixture.acceptAmount = fixture.acceptCard = fixture.acceptAnswer = false;
    fixture.feed(kAskAmount);
    fixture.feed(framed(kCardBody));
    fixture.feed(framed(kAnswerBody));
    fixture.acceptAmount = fixture.acceptCard = fixture.acceptAnswer = true;
    fixture.feed(kAskAmount);
    fixture.clock.advance(2'000'000);
    if (fixture.port) {
        fixture.port->Close();
        fixture.port->OpenFailure = QStringLiteral("COM7: busy");
    }
    connect(true);
    connect(false);
    if (fixture.pos) {
        fixture.pos->SetComport(nullptr);
    }
    connect(true);
}

/// After all that, the component takes a payment as if nothing had been.
void expectPays(TBankFixture& fixture)
{
    if (!fixture.pos) {
        return;
    }
    fixture.trace.OnLine = {};
    if (!fixture.port) {
        fixture.port = std::make_unique<TMemoryPort>();
        fixture.trace.attach(*fixture.port);
    }
    fixture.port->OpenFailure.reset();
    fixture.attach();
    fixture.acceptAmount = fixture.acceptCard = fixture.acceptAnswer = true;
    fixture.pos->SetPosType(2);
    fixture.pos->SetComport(fixture.port.get());
    fixture.pos->SetConnection(true);
    fixture.trace.take();
    fixture.feed(kAskAmount);
    fixture.feed(framed(kCardBody));
    fixture.feed(framed(kAnswerBody));
    fixture.feed(kFinish);
    const QStringList lines = fixture.trace.take();
    EXPECT_EQ(lines.size(), 9 + 3 + 5 + 2);
    EXPECT_EQ(lines.last(), bare("FINISH"));
}

TEST(Hostile, SurvivesEveryHandlerAtEveryEvent)
{
    EXPECT_GT(surviveEach<TBankFixture>(kMischiefs, playEverything, expectPays), 50);
}

TEST(Hostile, ADestroyedComponentSaysNothingMore)
{
    disturbEach<TBankFixture>(
        playEverything, [](TBankFixture& fixture) { fixture.pos.reset(); },
        [](TBankFixture& fixture, const QStringList& before) { fixture.trace.expect(before); });
}

TEST(Hostile, ThePortMayDestroyTheComponentInsideAWrite)
{
    for (const QByteArray& frame : {kAskAmount, framed(kCardBody), framed(kAnswerBody)}) {
        TBankFixture fixture;
        fixture.port->OnWriting = [&] { fixture.pos.reset(); };
        fixture.feed(frame);
        EXPECT_FALSE(fixture.pos);
        EXPECT_TRUE(fixture.trace.take().filter("raised").isEmpty());
    }
}

} // namespace
