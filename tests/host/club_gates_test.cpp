// Gates of a running club on one port: boards that fall silent, clocks that jump, openings by hand.

#include "club_fixture.h"
#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "tnv5/host/club/club_gates.h"
#include "tnv5/host/club/club_plant.h"

namespace tnv5::host {
namespace {

const QString kGate = QStringLiteral("101T");

TLinePlan planOf(const sim::TPty& pty)
{
    TLinePlan plan;
    plan.name = QStringLiteral("hall");
    plan.port = pty.path();
    return plan;
}

TGatePlan gateOf(const QString& address)
{
    TGatePlan plan;
    plan.line = QStringLiteral("hall");
    plan.gate = {address, QStringLiteral("hall"), TDirection::In};
    return plan;
}

class TClubGatesTest : public TClubFixture
{
protected:
    testkit::TManualClock clock;
    sim::TPty pty{QStringLiteral("hall")};
    TClubDesk desk{club};
    TClubLog log{QStringLiteral("/dev/null")};
    TClubSite site{club, desk, log, [](const QJsonObject&) {}};
};

class TClubBusTest : public TClubGatesTest
{
protected:
    TClubBusTest()
    {
        boards.addBoard(kGate);
        boards.setPingInterval(1'000);
        bus.setGates({gateOf(kGate), gateOf(QStringLiteral("201A"))});
        bus.setLamps({});
        bus.port().start();
        EXPECT_TRUE(lockStep.until([&] { return pty.opened() && answers(kGate); }));
    }

    bool answers(const QString& address)
    {
        for (const QJsonValue& board : bus.boardsState()) {
            if (board.toObject().value(u"address").toString() == address) {
                return board.toObject().value(u"answering").toBool();
            }
        }
        return false;
    }
    /// Looks as often as a running club does. @return whether the board answers after that
    bool answersAfter(int looks)
    {
        for (int i = 0; i < looks; ++i) {
            clock.advance(TClubPlant::kLookMs);
            bus.look();
        }
        return answers(kGate);
    }

    sim::TBoardBus boards{pty};
    TClubBus bus{site, planOf(pty)};
    TLockStep lockStep{clock, pty, bus.port().port()};
};

TEST_F(TClubBusTest, ABoardThatPingsNoMoreIsSilentAfterAWhile)
{
    EXPECT_TRUE(answersAfter(TClubBus::kSilentLooks * 2));
    boards.setPingInterval(0);
    EXPECT_TRUE(answersAfter(TClubBus::kSilentLooks - 1));
    EXPECT_FALSE(answersAfter(2));
    EXPECT_FALSE(answersAfter(TClubBus::kSilentLooks));
    EXPECT_EQ(bus.troubles(), QStringList(QStringLiteral("hall: gate 101T does not answer")));
    boards.setPingInterval(1'000);
    EXPECT_TRUE(answersAfter(1));
    EXPECT_EQ(bus.troubles(), QStringList());
}

TEST_F(TClubBusTest, AClockThatJumpsMakesNoBoardSilentOrAlive)
{
    constexpr qint64 kHour = 3'600'000;
    for (const qint64 jump : {kHour, -2 * kHour}) {
        clock.jumpTo(clock.nowMs() + jump);
        EXPECT_TRUE(answers(kGate)) << jump;
        EXPECT_EQ(bus.troubles(), QStringList()) << jump;
        EXPECT_TRUE(answersAfter(1));
    }
    boards.setPingInterval(0);
    clock.jumpTo(clock.nowMs() - kHour);
    EXPECT_FALSE(answersAfter(TClubBus::kSilentLooks + 1)) << "nobody hears it for an hour";
}

TEST_F(TClubBusTest, AGateWhoseAddressIsLikeARelayBoards)
{
    const QString gate = QStringLiteral("201A");
    boards.addBoard(gate);
    club.setGate(gateOf(gate).gate);
    addMember(QStringLiteral("Anna Berg"), QStringLiteral("10000001"));
    boards.readCard(gate, QStringLiteral("10000001"));
    EXPECT_TRUE(lockStep.until([&] { return boards.counts(gate).Passed == 1; }));
    EXPECT_TRUE(answers(gate));
}

/// Gates whose controller is never told.
class TDeafGates final : public TClubGates
{
public:
    using TClubGates::TClubGates;
    void change(const TLinePlan&) override {}
    void look() override {}

protected:
    bool busy(const QString&) const override { return false; }
    void command(const QString&) override {}
    std::optional<bool> answering(const QString&) const override { return std::nullopt; }
};

TEST_F(TClubGatesTest, AnOpeningThatFailedSignsNoOther)
{
    TDeafGates gates(site, planOf(pty));
    gates.setGates({gateOf(kGate)});
    gates.port().start();
    ASSERT_TRUE(gates.port().open());
    EXPECT_EQ(gates.open(kGate, QStringLiteral("Olga"), QStringLiteral("a pram")),
              "101T could not be told to open");
    EXPECT_FALSE(desk.expectsByHand(kGate));
}

} // namespace
} // namespace tnv5::host
