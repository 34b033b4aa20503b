#include "host/scale_fixture.h"
#include "support/text_printers.h"
#include "tnv5/host/scale_reader.h"

#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

class TScaleReaderTest : public ::testing::Test, protected TScaleOnPort
{
protected:
    TScaleReaderTest() : reader(scales)
    {
        reader.OnReading = [this](int weight) { told << QString::number(weight); };
        reader.OnSteady = [this](int weight) { told << QStringLiteral("steady %1").arg(weight); };
        reader.OnSilent = [this] { told << QStringLiteral("silent"); };
    }

    void questions(int count) { clock.advance(count * TScaleReader::kAskMs); }
    QStringList take() { return std::exchange(told, {}); }

    TScaleReader reader;
    QStringList told;
};

TEST_F(TScaleReaderTest, AsksAtOnceAndAgain)
{
    port.KeepWrites = true;
    reader.start();
    EXPECT_EQ(port.takeWritten(), QByteArray("\x05\x11"));
    clock.advance(TScaleReader::kAskMs - 1);
    EXPECT_EQ(port.takeWritten(), QByteArray());
    clock.advance(1);
    EXPECT_EQ(port.takeWritten(), QByteArray("\x05\x11"));
}

TEST_F(TScaleReaderTest, TellsAWeightAsSoonAsItIsKnown)
{
    load = 250;
    reader.start();
    clock.advance(TScaleReader::kLookMs);
    EXPECT_EQ(take(), QStringList({QStringLiteral("250")}));
}

TEST_F(TScaleReaderTest, TheThirdReadingAlikeIsSteadyAndEachAfterIt)
{
    load = 250;
    reader.start();
    questions(2);
    EXPECT_FALSE(take().contains(QStringLiteral("steady 250")));
    questions(1);
    EXPECT_EQ(take(), QStringList({QStringLiteral("250"), QStringLiteral("steady 250")}));
    questions(2);
    EXPECT_EQ(take(), QStringList({QStringLiteral("250"), QStringLiteral("steady 250"), QStringLiteral("250"),
                                   QStringLiteral("steady 250")}));
}

TEST_F(TScaleReaderTest, AChangeBeginsAnew)
{
    load = 250;
    reader.start();
    questions(2);
    load = 300; // the third question has been asked already
    questions(1);
    EXPECT_TRUE(take().contains(QStringLiteral("steady 250")));
    questions(2);
    EXPECT_EQ(take(), QStringList({QStringLiteral("300"), QStringLiteral("300")}));
    questions(1);
    EXPECT_EQ(take(), QStringList({QStringLiteral("300"), QStringLiteral("steady 300")}));
}

TEST_F(TScaleReaderTest, AnEmptyPlatformIsAReadingOfNothing)
{
    reader.start();
    questions(4);
    EXPECT_EQ(take(), QStringList({QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("0"),
                                   QStringLiteral("0")}));
}

TEST_F(TScaleReaderTest, SilenceIsToldOnceAndIsNoReading)
{
    answering = false;
    reader.start();
    clock.advance(TScaleReader::kPatienceMs - 1);
    EXPECT_EQ(take(), QStringList());
    clock.advance(10 * TScaleReader::kPatienceMs);
    EXPECT_EQ(take(), QStringList({QStringLiteral("silent")}));
    answering = true;
    load = 100;
    questions(2);
    EXPECT_TRUE(take().contains(QStringLiteral("100")));
    answering = false;
    clock.advance(TScaleReader::kPatienceMs + TScaleReader::kAskMs);
    EXPECT_TRUE(take().contains(QStringLiteral("silent")));
}

TEST_F(TScaleReaderTest, SilenceBetweenReadingsIsNotSteady)
{
    load = 250;
    reader.start();
    questions(2);
    answering = false;
    questions(2); // the first of them was asked before
    answering = true;
    take();
    questions(2);
    EXPECT_FALSE(take().contains(QStringLiteral("steady 250")));
}

TEST_F(TScaleReaderTest, SaysNothingOnceStoppedAlsoByItsOwnHook)
{
    load = 250;
    reader.OnSteady = [this](int) { reader.stop(); };
    reader.start();
    questions(3);
    port.takeWritten();
    take();
    questions(10);
    EXPECT_EQ(port.takeWritten(), QByteArray());
    EXPECT_EQ(take(), QStringList());
}

TEST_F(TScaleReaderTest, APortThatIsClosedCountsAsSilent)
{
    reader.start();
    port.Close();
    clock.advance(TScaleReader::kPatienceMs + TScaleReader::kAskMs);
    EXPECT_EQ(told.last(), QStringLiteral("silent"));
}

TEST_F(TScaleReaderTest, AScaleWithoutAPortCountsAsSilent)
{
    scales.SetComport(nullptr);
    reader.start();
    clock.advance(TScaleReader::kPatienceMs);
    EXPECT_EQ(take(), QStringList({QStringLiteral("silent")}));
}

} // namespace
} // namespace tnv5::host
