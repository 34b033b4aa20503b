#include "support/text_printers.h"
#include "tnv5/host/port_keeper.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace tnv5::host {
namespace {

class TPortKeeperTest : public ::testing::Test
{
protected:
    TPortKeeperTest() : keeper(port)
    {
        keeper.OnOpened = [this] { told.append(QStringLiteral("opened")); };
        keeper.OnLost = [this](const QString& why) { told.append(QStringLiteral("lost: ") + why); };
        keeper.OnCannotOpen = [this](const QString& why) { told.append(QStringLiteral("cannot: ") + why); };
    }

    testkit::TManualClock clock;
    testkit::TMemoryPort port;
    TPortKeeper keeper;
    QStringList told;
};

TEST_F(TPortKeeperTest, OpensAtOnce)
{
    EXPECT_TRUE(keeper.start());
    EXPECT_TRUE(port.Connected());
    clock.advance(60'000);
    EXPECT_EQ(told, QStringList({QStringLiteral("opened")}));
}

TEST_F(TPortKeeperTest, OpensAgainWhatWentAway)
{
    keeper.start();
    port.Close();
    clock.advance(TPortKeeper::kWatchMs + TPortKeeper::kFirstPauseMs);
    EXPECT_TRUE(port.Connected());
    EXPECT_EQ(told, QStringList({QStringLiteral("opened"), QStringLiteral("lost: the port was closed"),
                                 QStringLiteral("opened")}));
    EXPECT_EQ(keeper.openings(), 2);
}

TEST_F(TPortKeeperTest, AnErrorOfThePortIsNoticedAtOnceAndGivesTheReason)
{
    keeper.start();
    port.Close();
    port.raiseError(platform::TComExceptionKind::Resource, QStringLiteral("unplugged"), 5, QString());
    clock.advance(1);
    EXPECT_EQ(told.last(), QStringLiteral("lost: the device is gone"));
}

TEST_F(TPortKeeperTest, AnErrorOfAnOpenPortIsNoLoss)
{
    keeper.start();
    port.raiseError(platform::TComExceptionKind::Unknown, QStringLiteral("parity"), 5, QString());
    clock.advance(1'000);
    EXPECT_EQ(told, QStringList({QStringLiteral("opened")}));
}

TEST_F(TPortKeeperTest, ChangesAreToldTriesAreNot)
{
    port.OpenFailure = QStringLiteral("not there");
    EXPECT_FALSE(keeper.start());
    clock.advance(60'000);
    EXPECT_EQ(told, QStringList({QStringLiteral("cannot: not there")}));
    port.OpenFailure = QStringLiteral("busy");
    clock.advance(TPortKeeper::kLongestPauseMs);
    port.OpenFailure.reset();
    clock.advance(TPortKeeper::kLongestPauseMs);
    EXPECT_EQ(told, QStringList({QStringLiteral("cannot: not there"), QStringLiteral("cannot: busy"),
                                 QStringLiteral("opened")}));
}

TEST_F(TPortKeeperTest, PausesGrowAndStartSmallAgain)
{
    port.OpenFailure = QStringLiteral("not there");
    keeper.start();
    clock.advance(60'000);
    port.OpenFailure.reset();
    clock.advance(TPortKeeper::kLongestPauseMs);
    ASSERT_TRUE(port.Connected());
    clock.advance(TPortKeeper::kSteadyMs);

    port.Close();
    clock.advance(TPortKeeper::kWatchMs + TPortKeeper::kFirstPauseMs);
    EXPECT_TRUE(port.Connected()) << "after a steady time a short pause is enough";
}

TEST_F(TPortKeeperTest, APortThatOpensAndGoesAtOnceIsNotTriedAllTheTime)
{
    keeper.start();
    for (int ms = 0; ms < 60'000; ++ms) {
        clock.advance(1);
        if (port.Connected()) {
            port.Close();
            port.raiseError(platform::TComExceptionKind::Resource, QStringLiteral("gone"), 5, QString());
        }
    }
    EXPECT_LT(keeper.openings(), 25);
}

TEST_F(TPortKeeperTest, StopLeavesThePortAsItIs)
{
    keeper.start();
    keeper.stop();
    EXPECT_TRUE(port.Connected());
    port.Close();
    port.raiseError(platform::TComExceptionKind::Resource, QStringLiteral("gone"), 5, QString());
    clock.advance(60'000);
    EXPECT_FALSE(port.Connected());
}

TEST_F(TPortKeeperTest, APortThatSomeoneElseOpenedIsKeptToo)
{
    port.OpenFailure = QStringLiteral("not there");
    keeper.start();
    port.OpenFailure.reset();
    port.Open();
    clock.advance(TPortKeeper::kLongestPauseMs);
    EXPECT_EQ(told.last(), QStringLiteral("opened"));
}

} // namespace
} // namespace tnv5::host
