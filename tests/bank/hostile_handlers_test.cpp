// Handlers that close the port, destroy the component or the port, raise, re-enter or replace handlers, each
// at each event of everything that a terminal and a host may do.

#include "bank_bench.h"

#include "support/text_printers.h"

namespace {

using namespace tnv5;
using namespace tnv5::tests;

using TAction = void (*)(TBankBench& bench);

struct TNamedAction
{
    const char* name;
    TAction action;
};

const TNamedAction kActions[] = {
    {"nothing", [](TBankBench&) {}},
    {"closes the port", [](TBankBench& b) { b.pos->SetConnection(false); }},
    {"opens the port", [](TBankBench& b) { b.pos->SetConnection(true); }},
    {"destroys the component", [](TBankBench& b) { b.pos.reset(); }},
    {"destroys the port", [](TBankBench& b) { b.port.reset(); }},
    {"destroys both",
     [](TBankBench& b) {
         b.port.reset();
         b.pos.reset();
     }},
    {"raises", [](TBankBench&) { throw std::runtime_error("host trouble"); }},
    {"aborts", [](TBankBench&) { throw platform::EAbort(); }},
    {"destroys the component and raises",
     [](TBankBench& b) {
         b.pos.reset();
         throw std::runtime_error("host trouble");
     }},
    {"takes the port away", [](TBankBench& b) { b.pos->SetComport(nullptr); }},
    {"assigns the port again", [](TBankBench& b) { b.pos->SetComport(b.port.get()); }},
    {"chooses no version", [](TBankBench& b) { b.pos->SetPosType(0); }},
    {"chooses another version", [](TBankBench& b) { b.pos->SetPosType(3); }},
    {"lets an amount request arrive", [](TBankBench& b) { b.feed(kAskAmount); }},
    {"lets an answer arrive", [](TBankBench& b) { b.feed(framed(kAnswerBody)); }},
    {"lets half a frame arrive",
     [](TBankBench& b) {
         b.feed("\x02"
                "01=");
     }},
    {"lets time pass", [](TBankBench& b) { b.clock.advance(4'000'000); }},
    {"clears the handlers",
     [](TBankBench& b) {
         b.pos->SetOnLog({});
         b.pos->SetOnError({});
         b.pos->SetOnRequestAmount({});
         b.pos->SetOnRequestOperation({});
     }},
};

/// Everything that a terminal may say and a host may do, in one run.
void playEverything(TBankBench& bench)
{
    const auto connect = [&](bool open) {
        if (bench.pos) {
            platform::guarded([&] { bench.pos->SetConnection(open); });
        }
    };
    connect(true);
    bench.feed(kAskAmount);
    bench.feed(framed(kCardBody));
    bench.feed(framed(kAnswerBody));
    bench.feed(kFinish);
    bench.feed("\x02\x05\x03?");
    bench.feed(framed("99=1"));
    bench.trace.acceptAmount = bench.trace.acceptCard = bench.trace.acceptAnswer = false;
    bench.feed(kAskAmount);
    bench.feed(framed(kCardBody));
    bench.feed(framed(kAnswerBody));
    bench.trace.acceptAmount = bench.trace.acceptCard = bench.trace.acceptAnswer = true;
    bench.feed(kAskAmount);
    bench.clock.advance(2'000'000);
    if (bench.port) {
        bench.port->Close();
        bench.port->OpenFailure = QStringLiteral("COM7: busy");
    }
    connect(true);
    connect(false);
    if (bench.pos) {
        bench.pos->SetComport(nullptr);
    }
    connect(true);
}

/// After all that, the component takes a payment as if nothing had been.
void expectPays(TBankBench& bench)
{
    if (!bench.pos) {
        return;
    }
    bench.trace.OnLine = {};
    if (!bench.port) {
        bench.port = std::make_unique<TMemoryPort>();
        bench.trace.attach(*bench.port);
    }
    bench.port->OpenFailure.reset();
    bench.trace.attach(*bench.pos);
    bench.trace.acceptAmount = bench.trace.acceptCard = bench.trace.acceptAnswer = true;
    bench.pos->SetPosType(2);
    bench.pos->SetComport(bench.port.get());
    bench.pos->SetConnection(true);
    bench.trace.take();
    bench.feed(kAskAmount);
    bench.feed(framed(kCardBody));
    bench.feed(framed(kAnswerBody));
    bench.feed(kFinish);
    const QStringList lines = bench.trace.take();
    EXPECT_EQ(lines.size(), 9 + 3 + 5 + 2);
    EXPECT_EQ(lines.last(), bare("FINISH"));
}

TEST(Hostile, SurvivesEveryHandlerAtEveryEvent)
{
    int events = 1;
    for (int at = 0; at < events; ++at) {
        for (const TNamedAction& hostile : kActions) {
            TBankBench bench;
            int event = 0;
            QString where;
            bench.trace.OnLine = [&](const QString& line) {
                if (event++ == at) {
                    where = line;
                    hostile.action(bench);
                }
            };
            playEverything(bench);
            if (&hostile == kActions) {
                events = std::max(events, event);
            }
            const ::testing::ScopedTrace trace(__FILE__, __LINE__, where.toStdString() + ": " + hostile.name);
            expectPays(bench);
        }
    }
    EXPECT_GT(events, 35);
}

TEST(Hostile, ADestroyedComponentSaysNothingMore)
{
    int events = 1;
    for (int at = 0; at < events; ++at) {
        TBankBench bench;
        int event = 0;
        bool destroyed = false;
        QStringList after;
        bench.port->OnWritten = [&](const QByteArray& bytes) {
            if (destroyed) {
                after << wrote(bytes);
            }
        };
        bench.trace.OnLine = [&](const QString& line) {
            if (destroyed) {
                after << line;
            }
            if (event++ == at) {
                bench.pos.reset();
                destroyed = true;
            }
        };
        playEverything(bench);
        EXPECT_EQ(after, QStringList()) << at;
        events = std::max(events, event + (destroyed ? 1 : 0));
    }
    EXPECT_GT(events, 35);
}

TEST(Hostile, ThePortMayDestroyTheComponentInsideAWrite)
{
    for (const QByteArray& frame : {kAskAmount, framed(kCardBody), framed(kAnswerBody)}) {
        TBankBench bench;
        bench.port->OnWriting = [&] { bench.pos.reset(); };
        bench.feed(frame);
        EXPECT_FALSE(bench.pos);
        EXPECT_TRUE(bench.trace.take().filter("raised").isEmpty());
    }
}

} // namespace
