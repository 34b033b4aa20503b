// Testing a card decision without hardware and without waiting: the port is in memory, time is in your hand.

#include <cstdio>
#include <tnv5/answers/gate_answers.h>
#include <tnv5/testing/manual_clock.h>
#include <tnv5/testing/wire.h>

using namespace tnv5;

namespace {

// the decision under test: members' cards begin with 7, and the club is open from 7 to 22 o'clock
bool mayEnter(const QString& card, platform::TDateTime timeOfDay)
{
    return card.startsWith(u'7') && timeOfDay >= 7.0 / 24 && timeOfDay < 22.0 / 24;
}

void testDecision()
{
    testkit::TManualClock clock(testkit::TManualClock::at(21, 59, 50));
    testkit::TMemoryPort port;
    testkit::TWire wire(port);
    turnstile::TTurnStylerDevice gate;
    gate.SetComport(&port);
    answers::TGateAnswers answers(gate);
    answers.onCard([](const answers::TCardQuestion& question) {
        return mayEnter(question.card, platform::TimeOfDay()) ? answers::TAnswer::open()
                                                              : answers::TAnswer::refuse();
    });
    port.Open();

    wire.inject("$01AR7001\r"); // a member before closing time
    wire.expect("$01A10366\r"); // open
    wire.inject("#01ARelay 1\r$01AP\r$01AG\r");
    clock.advance(200);
    wire.expectNothing();

    wire.inject("$01AR5001\r"); // a stranger
    wire.expect("$01A00064\r"); // refused

    clock.advance(10'000);
    wire.inject("$01AR7001\r"); // the member again, at ten
    wire.expect("$01A00064\r"); // refused
}

} // namespace

int main()
{
    try {
        testDecision();
        std::puts("the decision is right");
        return 0;
    } catch (const testkit::EExpectation& error) {
        std::puts(qUtf8Printable(error.message()));
        return 1;
    }
}
