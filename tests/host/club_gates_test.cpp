// Gates of a running club on one port: boards and controllers that fall silent, clocks that jump, openings by
// hand.

#include "club_fixture.h"
#include "sim/board_bus.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "tnv5/host/club/club_gates.h"
#include "tnv5/host/club/club_plant.h"

namespace tnv5::host {
namespace {

const QString kGate = QStringLiteral("101T");
const QString kDeadGate = QStringLiteral("102T");
const QString kAnna = QStringLiteral("10000001");
const QString kBoris = QStringLiteral("10000002");

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
    QStringList logged; // the log tells its last lines when it ends
    TClubLog log{QStringLiteral("/dev/null")};
    TClubSite site{club, desk, log, [](const QJsonObject&) {}};

    TClubGatesTest()
    {
        log.OnLine = [this](const TLogLine& line) { logged << line.text; };
    }
    /// Looks as often as a running club does.
    void look(TClubGates& gates, int times)
    {
        for (int i = 0; i < times; ++i) {
            clock.advance(TClubPlant::kLookMs);
            gates.look();
        }
        clock.advance(10); // the log is written a moment later
    }
    static bool isBusy(const TClubGates& gates, const QString& address)
    {
        for (const QJsonValue& gate : gates.gatesState()) {
            if (gate.toObject().value(u"address").toString() == address) {
                return gate.toObject().value(u"busy").toBool();
            }
        }
        return false;
    }
    static QString open(TClubGates& gates, const QString& address)
    {
        return gates.open(address, QStringLiteral("Olga"), QStringLiteral("a pram"));
    }
};

// ---- lines

class TClubLineTest : public TClubGatesTest
{
protected:
    TClubLineTest()
    {
        QList<TGatePlan> plans;
        for (const QString& address : {kB, k1A, k2A}) {
            gates.addController(address);
            plans << gateOf(address);
            club.setGate(plans.last().gate);
        }
        addMember(QStringLiteral("Anna Berg"), kAnna);
        line.setGates(plans);
        line.port().start();
        EXPECT_TRUE(lockStep.until([&] { return pty.opened(); }));
    }

    const QString kB = QStringLiteral("05B"); // neither the turnstile's letter nor the door's
    const QString k1A = QStringLiteral("01A");
    const QString k2A = QStringLiteral("02A");
    sim::TClassicLine gates{pty};
    TClubLine line{site, planOf(pty)};
    TLockStep lockStep{clock, pty, line.port().port()};
};

TEST_F(TClubLineTest, AGateOfAnyLetterIsFreeAgainWhenItsControllerToldNoEnd)
{
    gates.readCard(kB, kAnna, sim::TBehaviour::WalksAway);
    EXPECT_TRUE(lockStep.until([&] { return gates.counts(kB).Opened == 1; }));
    look(line, TClubLine::kPassLooks - 1);
    EXPECT_TRUE(isBusy(line, kB)) << "a person may be slow";
    EXPECT_EQ(open(line, kB), "somebody is passing at 05B");
    look(line, 1);
    clock.advance(1'000);
    EXPECT_FALSE(isBusy(line, kB));
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::TimedOut);
    EXPECT_TRUE(logged.contains(QStringLiteral("05B tells no end of a pass; it ends as \"timed out\"")))
        << qPrintable(logged.join(u'\n'));

    gates.readCard(kB, kAnna);
    EXPECT_TRUE(lockStep.until([&] { return gates.counts(kB).Opened == 2; })) << "the next card is heard";
}

TEST_F(TClubLineTest, APassIsNotEndedForTheOnesBeforeItOrByAClock)
{
    for (int person = 0; person < 3; ++person) {
        gates.readCard(k1A, kAnna, sim::TBehaviour::GivesUp);
        EXPECT_TRUE(lockStep.until([&] { return gates.counts(k1A).GaveUp == person + 1; }));
        look(line, TClubLine::kPassLooks / 2);
    }
    gates.readCard(kB, kAnna, sim::TBehaviour::WalksAway);
    EXPECT_TRUE(lockStep.until([&] { return gates.counts(kB).Opened == 1; }));
    look(line, 1);
    clock.jumpTo(clock.nowMs() + 3'600'000);
    look(line, TClubLine::kPassLooks - 2);
    EXPECT_TRUE(isBusy(line, kB));
    EXPECT_FALSE(logged.join(u'\n').contains(QStringLiteral("tells no end")));
}

TEST_F(TClubLineTest, OpenedByHandWhileOtherPassesEnd)
{
    addMember(QStringLiteral("Boris Klein"), kBoris);
    gates.readCard(k1A, kAnna, sim::TBehaviour::WalksAway);
    gates.readCard(k2A, kBoris, sim::TBehaviour::WalksAway);
    EXPECT_TRUE(lockStep.until([&] { return gates.totals().Opened == 2; }));
    clock.jumpTo(clock.nowMs() + 60'000); // both are over, and no sweep has seen it yet
    EXPECT_EQ(open(line, kB), QString());
    EXPECT_TRUE(lockStep.until([&] { return gates.counts(kB).Opened == 1; }));
    clock.advance(1'000);
    ASSERT_EQ(journal().size(), 3);
    EXPECT_EQ(journal()[0].ending, TEnding::TimedOut);
    EXPECT_EQ(journal()[1].ending, TEnding::TimedOut);
    EXPECT_EQ(journal()[2].who, "Olga");
    EXPECT_EQ(journal()[2].note, "a pram");
}

// ---- buses

class TClubBusTest : public TClubGatesTest
{
protected:
    TClubBusTest()
    {
        boards.addBoard(kGate);
        boards.setPingInterval(1'000);
        setGates({kGate});
        bus.port().start();
        EXPECT_TRUE(lockStep.until([&] { return pty.opened() && answers(kGate); }));
    }

    void setGates(const QStringList& addresses)
    {
        QList<TGatePlan> plans;
        for (const QString& address : addresses) {
            plans << gateOf(address);
            club.setGate(plans.last().gate);
        }
        bus.setGates(plans);
        bus.setLamps({});
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
    /// @return whether the board answers after so many looks
    bool answersAfter(int looks)
    {
        look(bus, looks);
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
    EXPECT_TRUE(answersAfter(TClubBus::kSilentLooks - 2)) << "the look behind its last ping counts";
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
    setGates({kGate, gate});
    addMember(QStringLiteral("Anna Berg"), kAnna);
    boards.readCard(gate, kAnna);
    EXPECT_TRUE(lockStep.until([&] { return boards.counts(gate).Passed == 1; }));
    EXPECT_TRUE(answers(gate));
}

TEST_F(TClubBusTest, ABoardThatIsDeadSinceBeforeTheStartIsReported)
{
    setGates({kGate, kDeadGate});
    look(bus, TClubBus::kSilentLooks - 1);
    EXPECT_EQ(bus.troubles(), QStringList()) << "it may need its time";
    EXPECT_FALSE(logged.contains(QStringLiteral("102T has never answered")));
    look(bus, 1);
    EXPECT_EQ(bus.troubles(), QStringList(QStringLiteral("hall: gate 102T does not answer")));
    EXPECT_EQ(open(bus, kDeadGate), "102T does not answer");
    look(bus, 3);
    EXPECT_EQ(logged.count(QStringLiteral("102T has never answered")), 1);
    EXPECT_EQ(journal().size(), 0) << "it has not opened";

    logged.clear();
    boards.addBoard(kDeadGate);
    look(bus, 2);
    EXPECT_EQ(bus.troubles(), QStringList());
    EXPECT_EQ(logged.filter(kDeadGate), QStringList(QStringLiteral("102T answers")));
    EXPECT_EQ(open(bus, kDeadGate), QString());
}

TEST_F(TClubBusTest, APortThatIsBackGivesItsBoardsTime)
{
    boards.setPingInterval(0);
    pty.unplug();
    EXPECT_TRUE(lockStep.until([&] { return !bus.port().open(); }));
    EXPECT_FALSE(answersAfter(TClubBus::kSilentLooks * 2));
    EXPECT_EQ(bus.troubles().size(), 2) << "the port, and the gate that answered";
    pty.plug();
    EXPECT_TRUE(lockStep.until([&] { return bus.port().open() && pty.opened(); }));
    logged.clear();
    look(bus, TClubBus::kSilentLooks - 1);
    EXPECT_EQ(bus.troubles(), QStringList());
    look(bus, 1);
    EXPECT_EQ(bus.troubles(), QStringList(QStringLiteral("hall: gate 101T does not answer")));
    EXPECT_EQ(logged.filter(kGate), QStringList(QStringLiteral("101T does not answer any more")));
}

TEST_F(TClubBusTest, OpenedByHandWhileOtherPassesEnd)
{
    const QString third = QStringLiteral("103T");
    boards.addBoard(kDeadGate);
    boards.addBoard(third);
    setGates({kGate, kDeadGate, third});
    addMember(QStringLiteral("Anna Berg"), kAnna);
    addMember(QStringLiteral("Boris Klein"), kBoris);
    boards.readCard(kDeadGate, kAnna, sim::TBehaviour::WalksAway);
    boards.readCard(third, kBoris, sim::TBehaviour::WalksAway);
    EXPECT_TRUE(lockStep.until(
        [&] { return boards.counts(kDeadGate).Opened == 1 && boards.counts(third).Opened == 1; }));
    clock.jumpTo(clock.nowMs() + 60'000);
    clock.advance(10); // one sweep has seen that both are over
    EXPECT_EQ(open(bus, kGate), QString());
    EXPECT_TRUE(lockStep.until([&] { return boards.counts(kGate).Opened == 1; }));
    clock.advance(1'000);
    ASSERT_EQ(journal().size(), 3);
    EXPECT_EQ(journal()[0].ending, TEnding::TimedOut);
    EXPECT_EQ(journal()[1].ending, TEnding::TimedOut);
    EXPECT_EQ(journal()[2].who, "Olga");
}

TEST_F(TClubBusTest, WhoEntersAtAGateThatTellsNothingIsInside)
{
    const QString gate = QStringLiteral("104G");
    boards.addBoard(gate);
    setGates({kGate, gate});
    addMember(QStringLiteral("Anna Berg"), kAnna);
    boards.readCard(gate, kAnna);
    EXPECT_TRUE(lockStep.until([&] { return boards.counts(gate).Opened == 1; }));
    clock.advance(1'000);
    ASSERT_EQ(journal().size(), 1);
    EXPECT_EQ(journal()[0].ending, TEnding::Passed);
    EXPECT_TRUE(club.holderOf(kAnna)->member.inside);
    boards.readCard(gate, kAnna);
    clock.advance(1'000);
    ASSERT_EQ(journal().size(), 2);
    EXPECT_EQ(journal()[1].refusal, TRefusal::AlreadyInside);
}

// What somebody switches at a pair of boards that the club does not know stays as it is, whether the club has
// lamps elsewhere, had some, or has none.
TEST_F(TClubBusTest, RelaysThatAreNoLampsAreLeftAlone)
{
    constexpr int kLongMs = 60'000;
    QStringList switched;
    boards.OnRelay = [&](const QString& address, int relay, bool on) {
        switched << QStringLiteral("%1 %2 %3").arg(address).arg(relay).arg(on);
    };
    boards.addPair(QStringLiteral("201"));
    boards.addPair(QStringLiteral("202"));
    boards.switchRelay(QStringLiteral("201A"), 1, true);
    clock.advance(kLongMs);
    TLampPlan sun;
    sun.bus = QStringLiteral("hall");
    sun.lamp = {QStringLiteral("Sun"), QStringLiteral("202A"), QStringLiteral("1"), 50};
    TLampBooks(club).setLamp(sun.lamp);
    bus.setLamps({sun});
    clock.advance(kLongMs);
    EXPECT_TRUE(answers(QStringLiteral("202A")));
    bus.setLamps({});
    boards.switchRelay(QStringLiteral("201B"), 2, true);
    clock.advance(kLongMs);
    boards.switchRelay(QStringLiteral("201A"), 1, false);
    clock.advance(kLongMs);
    EXPECT_EQ(switched.join(u' '), "201A 1 1 201B 2 1 201A 1 0");
}

TEST_F(TClubBusTest, LampsWhoseBooksCannotBeReadAreTriedAgain)
{
    TLampPlan sun;
    sun.bus = QStringLiteral("hall");
    sun.lamp = {QStringLiteral("Sun"), QStringLiteral("201A"), QStringLiteral("1"), 50};
    TLampBooks(club).setLamp(sun.lamp);
    elsewhere(QStringLiteral("ALTER TABLE lamp RENAME TO lamp_away"));
    EXPECT_THROW(bus.setLamps({sun}), EDatabase);
    EXPECT_TRUE(bus.hasLamp(QStringLiteral("Sun")));
    EXPECT_EQ(bus.sellTime(QStringLiteral("Sun"), kAnna, 5), "the books of the lamps cannot be read now");
    EXPECT_EQ(bus.lampsState().size(), 0);
    elsewhere(QStringLiteral("ALTER TABLE lamp_away RENAME TO lamp"));
    bus.setLamps({sun});
    EXPECT_EQ(bus.lampsState().size(), 1);
    EXPECT_EQ(bus.sellTime(QStringLiteral("Sun"), kAnna, 5), "card 10000001 is unknown, nothing is sold");
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
    int passes() const override { return 2; }
    void sweep() override { ++sweeps; }
    std::optional<bool> answering(const QString&) const override { return std::nullopt; }

public:
    int sweeps = 0;
};

TEST_F(TClubGatesTest, AnOpeningThatFailedSignsNoOther)
{
    TDeafGates gates(site, planOf(pty));
    gates.setGates({gateOf(kGate)});
    gates.port().start();
    ASSERT_TRUE(gates.port().open());
    EXPECT_EQ(open(gates, kGate), "101T could not be told to open");
    EXPECT_EQ(gates.sweeps, 2) << "as often as there are passes, and no oftener";
    EXPECT_FALSE(desk.expectsByHand(kGate));
}

} // namespace
} // namespace tnv5::host
