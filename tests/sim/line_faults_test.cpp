#include "sim/line_faults.h"
#include "sim/memory_stream.h"
#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tnv5::sim;
using tnv5::testkit::TManualClock;

const QByteArray kLine("$01AR12345678\r");

struct LineFaults : ::testing::Test
{
    LineFaults()
    {
        cable->OnRead = [this](const QByteArray& bytes) { heard += bytes; };
    }

    TManualClock clock;
    TMemoryStream stream;
    std::unique_ptr<TLineFaults> cable = std::make_unique<TLineFaults>(stream, 7);
    QByteArray heard;
};

QByteArray withoutNoise(const QByteArray& bytes)
{
    QByteArray lines;
    bool inside = false;
    for (const char c : bytes) {
        inside = inside || c == '$';
        if (inside) {
            lines += c;
        }
        inside = inside && c != '\r';
    }
    return lines;
}

TEST_F(LineFaults, AGoodCablePassesEverythingOnAtOnceAndUnchanged)
{
    cable->write(kLine);
    cable->write({});
    cable->write("#01AHardReset\r");
    EXPECT_EQ(stream.takeWrites(), (QByteArrayList{kLine, "#01AHardReset\r"}));
    stream.feed("$0009001D\r");
    EXPECT_EQ(heard, "$0009001D\r");
}

TEST_F(LineFaults, NoiseStaysBetweenTheLines)
{
    cable->NoisePercent = 100;
    for (int i = 0; i < 200; ++i) {
        cable->write(kLine);
    }
    const QByteArray written = stream.takeWritten();
    EXPECT_EQ(cable->noisyLines(), 200);
    EXPECT_GT(written.size(), 200 * kLine.size() + 200);
    EXPECT_LE(written.size(), 200 * (kLine.size() + cable->MaxNoiseBytes));
    EXPECT_EQ(withoutNoise(written), kLine.repeated(200));
    EXPECT_FALSE(written.contains('#'));
}

TEST_F(LineFaults, NoiseThatMayBeNothingEndsAllTheSame)
{
    cable->NoisePercent = 100;
    for (int value = 0; value < 256; ++value) {
        cable->NoiseAvoids += char(value);
    }
    cable->write(kLine);
    EXPECT_EQ(stream.takeWritten(), kLine);
}

TEST_F(LineFaults, CutLinesArriveWholeInPiecesOneAfterTheOther)
{
    cable->CutPercent = 100;
    cable->write(kLine);
    cable->write("$01AP\r");
    QByteArrayList writes = stream.takeWrites();
    ASSERT_EQ(writes.size(), 1);
    EXPECT_LT(writes.front().size(), kLine.size());
    clock.advance(cable->PieceGapMs - 1);
    EXPECT_TRUE(stream.takeWrites().isEmpty());
    clock.advance(1);
    const QByteArrayList second = stream.takeWrites();
    EXPECT_FALSE(second.isEmpty());
    writes += second;
    clock.advance(1'000);
    writes += stream.takeWrites();
    EXPECT_EQ(writes.join(), kLine + "$01AP\r");
    EXPECT_GE(writes.size(), 4);
    EXPECT_LE(writes.size(), 6);
    EXPECT_EQ(cable->cutLines(), 2);
}

TEST_F(LineFaults, TheShortestLinesCanBeCutOrNot)
{
    cable->CutPercent = 100;
    cable->MaxPieces = 100;
    cable->write("x");
    EXPECT_EQ(stream.takeWritten(), "x");
    cable->write("$\r");
    clock.advance(1'000);
    EXPECT_EQ(stream.takeWrites(), (QByteArrayList{"$", "\r"}));
    cable->MaxPieces = 1;
    cable->write(kLine);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList{kLine});
}

TEST_F(LineFaults, CoalescedLinesGoOutInOneWrite)
{
    cable->CoalesceLines = 3;
    cable->write("a");
    cable->write("b");
    EXPECT_TRUE(stream.takeWrites().isEmpty());
    cable->write("c");
    EXPECT_EQ(stream.takeWrites(), QByteArrayList{"abc"});
    clock.advance(1'000);
    EXPECT_TRUE(stream.takeWrites().isEmpty());
}

TEST_F(LineFaults, AHeldLineDoesNotWaitForEver)
{
    cable->CoalesceLines = 3;
    cable->write("a");
    clock.advance(cable->CoalesceMs - 10);
    cable->write("b");
    clock.advance(10);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList{"ab"});
    cable->write("c");
    cable->CoalesceLines = 0;
    cable->write("d");
    EXPECT_EQ(stream.takeWrites(), (QByteArrayList{"c", "d"}));
}

TEST_F(LineFaults, SilenceStopsBothDirectionsAndLosesWhatWasUnderWay)
{
    cable->CutPercent = 100;
    cable->write(kLine);
    stream.takeWrites();
    cable->setSilent(true);
    cable->write(kLine);
    stream.feed("$0009001D\r");
    clock.advance(1'000);
    EXPECT_TRUE(stream.takeWrites().isEmpty());
    EXPECT_TRUE(heard.isEmpty());
    EXPECT_EQ(cable->lostLines(), 2);
    cable->CutPercent = 0;
    cable->setSilent(false);
    cable->write(kLine);
    EXPECT_EQ(stream.takeWrites(), QByteArrayList{kLine});
    stream.feed("x");
    EXPECT_EQ(heard, "x");
}

TEST_F(LineFaults, TheSameSeedGivesTheSameFaults)
{
    const auto run = [this](unsigned seed) {
        TLineFaults own(stream, seed);
        own.NoisePercent = 40;
        own.CutPercent = 40;
        own.CoalesceLines = 2;
        for (int i = 0; i < 100; ++i) {
            own.write(kLine);
            clock.advance(3);
        }
        clock.advance(10'000);
        return stream.takeWrites();
    };
    const QByteArrayList once = run(42);
    EXPECT_EQ(once, run(42));
    EXPECT_NE(once, run(43));
    EXPECT_EQ(withoutNoise(once.join()), kLine.repeated(100));
}

TEST_F(LineFaults, AFullCableLosesWholeLines)
{
    cable->CutPercent = 100;
    const int lines = int(TLineFaults::kMaxWaiting / kLine.size()) + 500;
    for (int i = 0; i < lines; ++i) {
        cable->write(kLine);
    }
    EXPECT_GT(cable->lostLines(), 400);
    clock.advance(qint64(lines) * 1'000);
    EXPECT_EQ(stream.takeWritten(), kLine.repeated(lines - int(cable->lostLines())));
}

TEST_F(LineFaults, TheOtherSideMayAnswerOrTakeTheCableAwayDuringAWrite)
{
    stream.OnWritten = [this](const QByteArray& bytes) {
        if (bytes == "first") {
            cable->write("answer"); // kept in order, not inside the write under way
        }
    };
    cable->write("first");
    cable->write("second");
    EXPECT_EQ(stream.takeWrites(), (QByteArrayList{"first", "answer", "second"}));
    stream.OnWritten = [this](const QByteArray&) { cable.reset(); };
    cable->write("last");
    EXPECT_EQ(cable, nullptr);
    stream.feed("nobody listens");
    EXPECT_TRUE(heard.isEmpty());
}

} // namespace
