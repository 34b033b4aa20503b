#include "classic_fixture.h"
#include "sim/line_faults.h"

#include <random>

namespace tnv5::sim {
namespace {

using ClassicFaults = TClassicFixture;

TEST_F(ClassicFaults, ASilentControllerObeysButAnswersNothing)
{
    TControllerFaults faults;
    faults.Silent = true;
    line->setFaults(kTurnstile, faults);
    line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    EXPECT_EQ(command(kOpenTurnstile), "");
    EXPECT_TRUE(line->gateOpen(kTurnstile));
    EXPECT_EQ(heardIn(60'000), "$01AP\r$01AG\r");
    EXPECT_EQ(command("$01A10367\r"), "");
    EXPECT_EQ(command(kPoll), "#02DWait-Card\r");
    line->setFaults(kTurnstile, {});
    EXPECT_EQ(command(kPoll), "#01AWait-Card\r#02DWait-Card\r");
}

TEST_F(ClassicFaults, ADeadControllerNeitherHearsNorSpeaks)
{
    TControllerFaults faults;
    faults.Dead = true;
    line->setFaults(kTurnstile, faults);
    line->setFaults(QStringLiteral("09A"), faults);
    EXPECT_EQ(line->readCard(kTurnstile, kCard), 0U);
    EXPECT_EQ(line->pressButton(kTurnstile), 0U);
    EXPECT_FALSE(line->hardReset(kTurnstile));
    EXPECT_EQ(command(kOpenTurnstile + "$01A10367\r" + kPoll), "#02DWait-Card\r");
    EXPECT_FALSE(line->gateOpen(kTurnstile));
    EXPECT_EQ(line->counts(kTurnstile).Commands, 0);
}

TEST_F(ClassicFaults, AControllerThatDiesDuringAPassageSaysNoMore)
{
    line->readCard(kTurnstile, kCard);
    command(kOpenTurnstile);
    TControllerFaults faults;
    faults.Dead = true;
    line->setFaults(kTurnstile, faults);
    EXPECT_EQ(heardIn(60'000), "");
    EXPECT_FALSE(line->gateOpen(kTurnstile));
}

TEST_F(ClassicFaults, ALateAnswerDoesNotDelayTheGate)
{
    TControllerFaults faults;
    faults.LateAnswerMs = 2'500;
    line->setFaults(kTurnstile, faults);
    line->readCard(kTurnstile, kCard, TBehaviour::WalksAway);
    stream.takeWrites();
    EXPECT_EQ(command(kOpenTurnstile), "");
    EXPECT_TRUE(line->gateOpen(kTurnstile));
    EXPECT_EQ(heardIn(2'499), "");
    EXPECT_EQ(heardIn(1), "#01ARelay 1\r");
}

TEST_F(ClassicFaults, AControllerMayTakeEveryCommandForAWrongOne)
{
    TControllerFaults faults;
    faults.HearsWrong = true;
    line->setFaults(kTurnstile, faults);
    const quint64 id = line->readCard(kTurnstile, kCard);
    stream.takeWrites();
    EXPECT_EQ(command(kOpenTurnstile), "#01ACRC-ERROR\r");
    EXPECT_EQ(fate(id), TFate::Waiting);
    EXPECT_EQ(line->counts(kTurnstile).BadCommands, 1);
    EXPECT_FALSE(line->commands().back().Right);
    EXPECT_EQ(command(kOpenDoor), "#02DRelay 3\r");
}

TEST_F(ClassicFaults, ADeviceWorksThroughABadCable)
{
    line.reset();
    TLineFaults cable(stream, 11);
    cable.CutPercent = 100;
    line = std::make_unique<TClassicLine>(cable);
    line->addController(kTurnstile);
    const quint64 id = line->readCard(kTurnstile, kCard);
    stream.feed("$01A1");
    stream.feed("0366\r");
    clock.advance(60'000);
    EXPECT_EQ(stream.takeWritten(), "$01AR12345678\r#01ARelay 1\r$01AP\r$01AG\r");
    EXPECT_TRUE(line->reading(id).Passed);
    cable.setSilent(true);
    stream.feed(kPoll);
    EXPECT_EQ(heardIn(60'000), "");
    line.reset();
}

TEST_F(ClassicFaults, AnyBytesFromTheOtherSideAreTaken)
{
    std::mt19937 random(3);
    const QByteArray often("$0123456789AD\r");
    for (int i = 0; i < 20'000; ++i) {
        QByteArray bytes;
        for (auto left = random() % 24; left > 0; --left) {
            bytes += random() % 4 == 0 ? char(random() % 256) : often[qsizetype(random() % 14)];
        }
        stream.feed(bytes);
        clock.advance(random() % 50);
        stream.takeWrites();
    }
    stream.feed("\r");
    clock.advance(60'000);
    stream.takeWrites();
    EXPECT_EQ(command(kPoll), "#01AWait-Card\r#02DWait-Card\r");
}

} // namespace
} // namespace tnv5::sim
