// A host that says what each relay is to be and nothing else, on a simulated pair of boards.

#include "sim/board_bus.h"
#include "sim/later.h"
#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/answers/relay_answers.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace tnv5::answers {
namespace {

constexpr int kLineMs = 2;
constexpr int kPingMs = 5'000;

class TRelayAnswersTest : public ::testing::Test
{
protected:
    TRelayAnswersTest()
    {
        platform::setExceptionHandler(
            [this](const QString& text, const std::exception_ptr&) { raised << text; });
        bus.addPair("100");
        bus.OnRelay = [this](const QString& address, int relay, bool on) {
            switched << QStringLiteral("%1 %2 %3").arg(address).arg(relay).arg(on ? "on" : "off");
        };
        stream.OnWritten = [this](const QByteArray& bytes) {
            line.after(kLineMs, [this, bytes] { port.feed(bytes); });
        };
        port.OnWritten = [this](const QByteArray& bytes) {
            line.after(kLineMs, [this, bytes] { stream.feed(bytes); });
        };
        port.Open();
        connector.SetConnectorType(connector::podComPort);
        connector.SetComport(&port);
        start();
    }
    ~TRelayAnswersTest() override { platform::setExceptionHandler({}); }

    void start()
    {
        device = std::make_unique<switching::TSwitchDevice>();
        device->SetConnector(&connector);
        device->SetOnError([this](auto*, const QString& text) { errors << text; });
        answers = std::make_unique<TRelayAnswers>(*device);
        answers->onRelay("100A", "1", [this](const TRelayQuestion&) { return lit; });
    }
    void hearBoards()
    {
        bus.setPingInterval(kPingMs);
        clock.advance(2 * kPingMs);
    }
    bool on() const { return bus.relayOn("100A", 1); }

    testkit::TManualClock clock;
    sim::TMemoryStream stream;
    sim::TBoardBus bus{stream};
    testkit::TMemoryPort port;
    sim::TLater line;
    connector::TDeviceConnector connector;
    std::unique_ptr<switching::TSwitchDevice> device;
    std::unique_ptr<TRelayAnswers> answers;
    bool lit = false;
    QStringList switched;
    QStringList errors;
    QStringList raised;
};

TEST_F(TRelayAnswersTest, ARelayBecomesWhatItsHandlerSays)
{
    hearBoards();
    EXPECT_EQ(switched, QStringList());
    lit = true;
    clock.advance(TRelayCaution::kLookMs + 2 * kLineMs);
    EXPECT_TRUE(on());
    clock.advance(3'600'000);
    EXPECT_EQ(switched, QStringList("100A 1 on")) << "once, and not changed over again";
    lit = false;
    clock.advance(TRelayCaution::kLookMs + 2 * kLineMs);
    EXPECT_FALSE(on());
    clock.advance(3'600'000);
    EXPECT_EQ(switched, QStringList({"100A 1 on", "100A 1 off"}));
}

TEST_F(TRelayAnswersTest, AlsoAroundMidnight)
{
    hearBoards();
    clock.advance((24 - 12) * 3'600'000 - 70'000); // a minute before
    lit = true;
    clock.advance(5'000);
    EXPECT_TRUE(on());
    clock.advance(2 * 3'600'000);
    EXPECT_TRUE(on());
    lit = false;
    clock.advance(5'000);
    EXPECT_FALSE(on());
    EXPECT_EQ(switched.size(), 2);
}

TEST_F(TRelayAnswersTest, AtOnceWhenTheHostAsksForIt)
{
    hearBoards();
    lit = true;
    answers->look();
    clock.advance(2 * kLineMs);
    EXPECT_TRUE(on());
}

TEST_F(TRelayAnswersTest, QuickChangesEndAsTheHandlerSays)
{
    hearBoards();
    for (int change = 0; change < 41; ++change) {
        lit = !lit;
        clock.advance(170);
    }
    clock.advance(20'000);
    EXPECT_TRUE(lit);
    EXPECT_TRUE(on());
}

TEST_F(TRelayAnswersTest, WhatSomebodyDoesAtTheBoardIsPutRight)
{
    hearBoards();
    bus.switchRelay("100A", 1, true);
    clock.advance(15'000);
    EXPECT_FALSE(on()) << "nobody wants it on";
    lit = true;
    clock.advance(15'000);
    EXPECT_TRUE(on());
    bus.switchRelay("100A", 1, false);
    clock.advance(15'000);
    EXPECT_TRUE(on());
    bus.restart("100A");
    EXPECT_FALSE(on());
    clock.advance(20'000);
    EXPECT_TRUE(on());
}

TEST_F(TRelayAnswersTest, ARestartedHostFindsItsRelays)
{
    hearBoards();
    lit = true;
    clock.advance(10'000);
    answers.reset();
    device.reset();
    EXPECT_TRUE(on());
    start();
    clock.advance(15'000);
    EXPECT_EQ(switched, QStringList("100A 1 on")) << "it stays on";
    answers.reset();
    device.reset();
    lit = false;
    start();
    clock.advance(15'000);
    EXPECT_EQ(switched, QStringList({"100A 1 on", "100A 1 off"}));
}

TEST_F(TRelayAnswersTest, RelaysWithoutAHandlerAreLeftAlone)
{
    hearBoards();
    bus.switchRelay("100A", 2, true);
    bus.switchRelay("100B", 1, true);
    clock.advance(60'000);
    EXPECT_TRUE(bus.relayOn("100A", 2));
    EXPECT_TRUE(bus.relayOn("100B", 1));
    bus.switchRelay("100A", 2, false);
    clock.advance(60'000);
    EXPECT_FALSE(bus.relayOn("100A", 2));
}

TEST_F(TRelayAnswersTest, AHandlerThatRaisesLeavesItsRelayAlone)
{
    hearBoards();
    lit = true;
    clock.advance(5'000);
    answers->onRelay("100A", "1",
                     [](const TRelayQuestion&) -> bool { throw std::runtime_error("no books"); });
    clock.advance(1'000);
    EXPECT_EQ(raised, QStringList(QList<QString>(4, "no books")));
    clock.advance(20'000);
    EXPECT_EQ(switched, QStringList("100A 1 on"));
}

TEST_F(TRelayAnswersTest, ABoardThatNeverAnsweredIsToldAndTriedAgain)
{
    bus.setFaults("100A", {.Dead = true});
    lit = true;
    clock.advance(30'000);
    EXPECT_TRUE(errors.contains("Device 100A does not working"));
    EXPECT_FALSE(on());
    bus.setFaults("100A", {});
    hearBoards();
    clock.advance(20'000);
    EXPECT_TRUE(on());
}

TEST_F(TRelayAnswersTest, AHandlerMayEndWhatAsksIt)
{
    hearBoards();
    answers->onRelay("100A", "1", [this](const TRelayQuestion&) {
        answers.reset();
        return true;
    });
    clock.advance(5'000);
    EXPECT_FALSE(answers);
    start();
    clock.advance(5'000);
    answers->onRelay("100A", "1", [this](const TRelayQuestion&) {
        device.reset();
        return true;
    });
    clock.advance(5'000);
    EXPECT_FALSE(device);
    answers.reset();
    EXPECT_EQ(raised, QStringList());
}

TEST_F(TRelayAnswersTest, AHandlerMayAddRelays)
{
    hearBoards();
    answers->onRelay("100A", "1", [this](const TRelayQuestion&) {
        answers->onRelay("100B", "3", [](const TRelayQuestion&) { return true; });
        return false;
    });
    clock.advance(10'000);
    EXPECT_EQ(switched, QStringList("100B 1 on"));
}

} // namespace
} // namespace tnv5::answers
