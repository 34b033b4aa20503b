#include "sim/scales.h"

#include "program.h"
#include "sim/line_faults.h"
#include "sim/memory_stream.h"
#include "sim/pty.h"
#include "support/bytes.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>
#include <memory>

namespace tnv5::sim {
namespace {

using tests::operator""_b;

const QByteArray kAskThree = "\x00\x00\x03"_b;
const QByteArray kAskFour = "\x00\x00\x03\x00\x00\x00\x00\x00"_b;
const QByteArray kAskFive = "<\x00!>"_b;

class SimulatedScale : public ::testing::Test
{
protected:
    TSimulatedScale& use(int family)
    {
        scale.reset(); // it clears the stream when it goes
        scale = std::make_unique<TSimulatedScale>(stream, family);
        return *scale;
    }

    QByteArray answerTo(const QByteArray& request)
    {
        stream.feed(request);
        return stream.takeWritten();
    }

    /// What a scale that talks by itself says in one period.
    QByteArray saysByItself()
    {
        stream.takeWritten();
        clock.advance(100);
        return stream.takeWritten();
    }

    testkit::TManualClock clock;
    TMemoryStream stream;
    std::unique_ptr<TSimulatedScale> scale;
};

TEST_F(SimulatedScale, Family1TellsWhetherItHasSettledAndThenTheWeight)
{
    use(1).put(12'345);
    EXPECT_EQ(answerTo("D"), "\x80\x00"_b);
    EXPECT_EQ(answerTo("E"), "\x39\x30"_b);
    scale->put(65'535);
    EXPECT_EQ(answerTo("E"), "\xFF\xFF"_b);
    scale->put(0);
    EXPECT_EQ(answerTo("DE"), "\x80\x00\x00\x00"_b);
}

TEST_F(SimulatedScale, Family1HasNoSettledWeightWhileItMovesAndOutOfRange)
{
    use(1).put(1'000, 500);
    EXPECT_EQ(answerTo("D"), "\x00\x00"_b);
    clock.advance(500);
    EXPECT_EQ(answerTo("D"), "\x80\x00"_b);
    for (const int weight : {65'536, -1, -100'000}) {
        scale->put(weight);
        EXPECT_EQ(answerTo("D"), "\x00\x00"_b) << weight;
        EXPECT_EQ(answerTo("E"), "\x00\x00"_b) << weight;
    }
}

TEST_F(SimulatedScale, Family2IsADialogueOfControlCharacters)
{
    use(2).put(1'234);
    EXPECT_EQ(answerTo("\x05"), "\x06");
    EXPECT_EQ(answerTo("\x11"), "\x01\x02S 01.234kge\x03\x04");
    scale->put(-50);
    EXPECT_EQ(answerTo("\x11").left(10), "\x01\x02S-00.050");
    scale->put(100'000);
    EXPECT_EQ(answerTo("\x11").left(10), "\x01\x02"
                                         "F --.---");
    scale->put(2'000, 300);
    EXPECT_EQ(answerTo("\x11").left(4), "\x01\x02U ");
    clock.advance(300);
    EXPECT_EQ(answerTo("\x11").left(10), "\x01\x02S 02.000");
}

TEST_F(SimulatedScale, TheCheckByteOfFamily2IsNeverAControlCharacter)
{
    use(2);
    for (const int weight : {-9'999, -1, 0, 1, 7, 98, 555, 8'642, 31'719, 99'999, 100'000}) {
        scale->put(weight);
        EXPECT_GE(answerTo("\x11").at(12), ' ') << weight;
    }
}

TEST_F(SimulatedScale, Families3And4SendTheLastDigitFirst)
{
    use(3).put(1'500);
    EXPECT_EQ(answerTo(kAskThree), "005100000000000000");
    scale->put(-25);
    EXPECT_EQ(answerTo(kAskThree), "52000-000000000000");
    scale->put(1'000'000);
    EXPECT_EQ(answerTo(kAskThree), "      000000000000");
    use(4).put(987'654);
    EXPECT_EQ(answerTo(kAskFour), "45678900000000000");
}

TEST_F(SimulatedScale, Family5SendsFiveCharactersBetweenBrackets)
{
    use(5).put(750);
    EXPECT_EQ(answerTo(kAskFive), "<\x00!00750\x0D>"_b);
    scale->put(-50);
    EXPECT_EQ(answerTo(kAskFive), "<\x00!-0050\x0D>"_b);
    scale->put(100'000);
    EXPECT_EQ(answerTo(kAskFive), "<\x00!     \x0D>"_b);
}

TEST_F(SimulatedScale, Family6SendsALine)
{
    use(6).put(850);
    EXPECT_EQ(answerTo("\x05\r"), "B 00.850 kg\r\n");
    scale->put(-850);
    EXPECT_EQ(answerTo("\x05\r"), "B --.--- kg\r\n");
}

TEST_F(SimulatedScale, Family7TalksByItself)
{
    use(7).put(1'250);
    EXPECT_EQ(saysByItself(), "\x02ST  01250 g NET\r\n");
    EXPECT_EQ(answerTo("\x05\r"), "");
    scale->put(-40);
    EXPECT_EQ(saysByItself(), "\x02ST  -0040 g NET\r\n");
    scale->put(2'000, 1'000);
    EXPECT_EQ(saysByItself(), "\x02US  00980 g NET\r\n");
    scale->put(200'000);
    EXPECT_EQ(saysByItself(), "\x02ST        g NET\r\n");
}

TEST_F(SimulatedScale, Family8TalksByItself)
{
    use(8).put(2'340);
    EXPECT_EQ(saysByItself(), "W 02.340kg");
    scale->put(-1);
    EXPECT_EQ(saysByItself(), "W --.---kg");
    scale->setPeriodMs(10);
    stream.takeWritten();
    clock.advance(100);
    EXPECT_EQ(stream.takeWrites().size(), 10);
    EXPECT_EQ(scale->requests(), 0);
}

TEST_F(SimulatedScale, FindsRequestsHoweverTheyAreCutAndWhateverIsAround)
{
    use(4);
    for (const char byte : "noise" + kAskFour) {
        stream.feed(QByteArray(1, byte));
    }
    EXPECT_EQ(stream.takeWrites().size(), 1);
    EXPECT_EQ(answerTo(kAskThree), "");
    use(3);
    stream.feed("\x00\x00"_b + kAskThree + kAskThree);
    EXPECT_EQ(stream.takeWrites().size(), 2);
    EXPECT_EQ(scale->requests(), 2);
    EXPECT_EQ(scale->answers(), 2);
    EXPECT_EQ(answerTo(QByteArray(100'000, 'x')), "");
}

TEST_F(SimulatedScale, StopsAnsweringAndAnswersLate)
{
    use(5).DelayMs = 200;
    EXPECT_EQ(answerTo(kAskFive), "");
    scale->put(5); // what is on the platform when the answer goes out is what it says
    clock.advance(200);
    EXPECT_EQ(stream.takeWritten(), "<\x00!00005\x0D>"_b);
    stream.feed(kAskFive);
    scale->setAnswering(false);
    stream.feed(kAskFive);
    clock.advance(1'000);
    EXPECT_EQ(stream.takeWritten(), "");
    EXPECT_EQ(scale->requests(), 3);
    EXPECT_EQ(scale->answers(), 1);
    scale->setAnswering(true);
    stream.feed(kAskFive);
    clock.advance(200);
    EXPECT_EQ(stream.takeWrites().size(), 1);
}

TEST_F(SimulatedScale, IsOverloadedAboveItsCapacity)
{
    use(6).setCapacity(3'000);
    scale->put(3'000);
    EXPECT_EQ(answerTo("\x05\r"), "B 03.000 kg\r\n");
    scale->put(3'001);
    EXPECT_TRUE(scale->load().Over);
    EXPECT_EQ(answerTo("\x05\r"), "B --.--- kg\r\n");
    scale->setCapacity(2'000'000'000);
    EXPECT_EQ(scale->capacity(), 99'999);
}

TEST_F(SimulatedScale, AWeightThatMovesAgainSettlesAnew)
{
    use(8).put(1'000, 500);
    clock.advance(400);
    scale->put(3'000, 500);
    EXPECT_EQ(scale->load().Weight, 1'750);
    clock.advance(400);
    EXPECT_FALSE(scale->load().Settled);
    clock.advance(100);
    EXPECT_TRUE(scale->load().Settled);
    EXPECT_EQ(scale->load().Weight, 3'000);
    scale->put(2'000'000'000);
    scale->put(2'000'000'000, 10);
    EXPECT_EQ(scale->load().Weight, 2'000'000'000);
}

TEST_F(SimulatedScale, NumbersThatAreNoFamilyAreRefused)
{
    int behindTheLast = 1;
    while (scaleWire(behindTheLast) != nullptr) {
        ++behindTheLast;
    }
    for (const int family : {-1, 0, behindTheLast}) {
        EXPECT_THROW(use(family), platform::Exception) << family;
    }
}

TEST_F(SimulatedScale, ABadCableBreaksPacketsAndAddsNoiseOutsideThem)
{
    TLineFaults cable(stream, 3);
    TSimulatedScale noisy(cable, 5);
    noisy.put(123);
    cable.NoiseAvoids = noisy.marks();
    cable.NoisePercent = 100;
    cable.CutPercent = 100;
    for (int round = 0; round < 50; ++round) {
        stream.feed(kAskFive);
        clock.advance(100);
        const QByteArrayList pieces = stream.takeWrites();
        const QByteArray said = pieces.join();
        EXPECT_GE(pieces.size(), 2);
        EXPECT_TRUE(said.endsWith("<\x00!00123\x0D>"_b));
        EXPECT_EQ(said.count('<'), 1);
    }
}

TEST(SimulatedScaleOnAPty, IsUnpluggedAndComesBack)
{
    TPty pty(QStringLiteral("scale"));
    TSimulatedScale scale(pty, 6);
    scale.put(850);
    for (int round = 0; round < 2; ++round) {
        const TProgram program(pty.path());
        ASSERT_TRUE(program.valid());
        ASSERT_TRUE(program.write("\x05\r"));
        EXPECT_EQ(program.readUntil(13), "B 00.850 kg\r\n");
        pty.unplug();
        EXPECT_TRUE(program.hungUp());
        pty.plug();
    }
}

} // namespace
} // namespace tnv5::sim
