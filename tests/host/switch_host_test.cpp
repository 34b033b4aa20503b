// Lamps that are paid for, day and night, with boards that behave and boards that do not.

#include "host/lamp_fixture.h"
#include "support/text_printers.h"
#include "tnv5/common/date_time_text.h"

#include <random>

namespace tnv5::host {
namespace {

const QString kAnna = QStringLiteral("1");
const QString kBoris = QStringLiteral("2");
const QString k100A = QStringLiteral("100A");
const QString k100B = QStringLiteral("100B");
const QString kOn1 = QStringLiteral("100A 1 on");
const QString kOff1 = QStringLiteral("100A 1 off");
const QString kOn2 = QStringLiteral("100B 1 on");
const QString kOff2 = QStringLiteral("100B 1 off");

constexpr qint64 kSoonMs = TSwitchHost::kLookMs + 10;

/// The boards have been heard.
class TSwitchHostTest : public TLampFixture
{
protected:
    TSwitchHostTest() { hearBoards(); }

    /// Whether the lamp went off as soon as `until`, and not before.
    void expectOffAt(qint64 until) const
    {
        ASSERT_FALSE(switchedAt.isEmpty());
        EXPECT_GE(switchedAt.last(), until);
        EXPECT_LE(switchedAt.last(), until + kSoonMs);
    }
};

TEST_F(TSwitchHostTest, PaidTimeIsOnTimeOnAndOffAgain)
{
    const qint64 began = clock.nowMs();
    EXPECT_TRUE(host->sell(kAnna, kSun1, 5));
    clock.advance(10);
    EXPECT_EQ(switched, QStringList({kOn1})) << "at once, not with the next sweep";
    EXPECT_EQ(balance(), 750);
    minutes(4.9);
    EXPECT_TRUE(sun1());
    minutes(0.2);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    expectOffAt(began + 5 * 60'000);
    EXPECT_EQ(news, QStringList({QStringLiteral("Sun 1  Anna Berg (1)  5 min for 2.50, until 12:05:10"),
                                 QStringLiteral("Sun 1  Anna Berg (1)  5 min for 2.50, over")}));
    ASSERT_EQ(times().size(), 1);
    const TLampTime time = times()[0];
    EXPECT_EQ(time.card, kAnna);
    EXPECT_EQ(time.member, anna);
    EXPECT_EQ(time.ending, TLampEnding::Over);
    EXPECT_EQ(toText(time.began), QStringLiteral("2026-01-05 12:00:10.000"));
    EXPECT_EQ(toText(time.until), QStringLiteral("2026-01-05 12:05:10.000"));
    minutes(10);
    EXPECT_EQ(switched.size(), 2) << "once on, once off";
    EXPECT_EQ(balance(), 750);
    EXPECT_EQ(troubles, QStringList());
}

TEST_F(TSwitchHostTest, ALampOfBoardBIsTheFirstRelayOfThatBoard)
{
    EXPECT_TRUE(host->sell(kAnna, kSun2, 1));
    minutes(2);
    EXPECT_EQ(switched, QStringList({kOn2, kOff2}));
    EXPECT_EQ(balance(), 930);
}

TEST_F(TSwitchHostTest, LampsDoNotDisturbEachOther)
{
    host->sell(kAnna, kSun1, 3);
    seconds(1);
    host->sell(kBoris, kSun2, 1);
    minutes(1.5);
    EXPECT_TRUE(sun1());
    EXPECT_FALSE(sun2());
    host->sell(kBoris, kSun2, 1);
    minutes(5);
    EXPECT_EQ(switched, QStringList({kOn1, kOn2, kOff2, kOn2, kOff2, kOff1}));
}

TEST_F(TSwitchHostTest, MoreTimeWhileItIsOnIsAddedAtTheEnd)
{
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, 2);
    minutes(1);
    EXPECT_TRUE(host->sell(kBoris, kSun1, 3));
    EXPECT_EQ(host->lamps()[0].secondsLeft, 4 * 60);
    minutes(10);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    expectOffAt(began + 5 * 60'000);
    ASSERT_EQ(times().size(), 2);
    EXPECT_EQ(toText(times()[1].until), QStringLiteral("2026-01-05 12:05:10.000"));
}

TEST_F(TSwitchHostTest, WhatThereIsToSee)
{
    host->sell(kAnna, kSun1, 5);
    seconds(90.5);
    const QList<TLampState> lamps = host->lamps();
    ASSERT_EQ(lamps.size(), 2);
    EXPECT_EQ(lamps[0].lamp.name, kSun1);
    EXPECT_TRUE(lamps[0].on);
    EXPECT_TRUE(lamps[0].answers);
    EXPECT_EQ(lamps[0].name, QStringLiteral("Anna Berg"));
    EXPECT_EQ(lamps[0].secondsLeft, 210);
    EXPECT_FALSE(lamps[1].on);
    EXPECT_EQ(lamps[1].secondsLeft, 0);
    EXPECT_EQ(lamps[1].name, QString());
}

TEST_F(TSwitchHostTest, StoppedAtTheDesk)
{
    host->sell(kAnna, kSun1, 5);
    minutes(1);
    host->sell(kBoris, kSun1, 5);
    EXPECT_TRUE(host->stop(kSun1));
    clock.advance(10);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    EXPECT_EQ(times()[0].ending, TLampEnding::Stopped);
    EXPECT_EQ(times()[1].ending, TLampEnding::Stopped);
    EXPECT_FALSE(host->stop(kSun1));
    EXPECT_FALSE(host->stop(QStringLiteral("Moon")));
}

TEST_F(TSwitchHostTest, ShortMinutesForDemonstrations)
{
    host->MinuteMs = 1'000;
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, 3);
    minutes(1);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    expectOffAt(began + 3'000);
}

// ---- who gets nothing

TEST_F(TSwitchHostTest, ASuspendedMemberIsRefusedByTheCheck)
{
    club.setSuspended(anna, true);
    EXPECT_FALSE(host->sell(kAnna, kSun1, 5));
    minutes(1);
    EXPECT_EQ(switched, QStringList());
    EXPECT_EQ(balance(), 1'000);
    EXPECT_EQ(times()[0].ending, TLampEnding::Refused);
    EXPECT_EQ(news, QStringList({QStringLiteral("Sun 1  Anna Berg (1)  5 min for 2.50, refused")}));
    EXPECT_TRUE(host->sell(kBoris, kSun1, 1)) << "the lamp is free";
}

TEST_F(TSwitchHostTest, WhatIsNotSold)
{
    EXPECT_FALSE(host->sell(QStringLiteral("9"), kSun1, 5));
    EXPECT_FALSE(host->sell(kAnna, QStringLiteral("Moon"), 5));
    EXPECT_FALSE(host->sell(kAnna, kSun1, 0));
    EXPECT_FALSE(host->sell(kAnna, kSun1, TLampBooks::kMaxMinutes + 1));
    minutes(1);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("card 9 is unknown, nothing is sold"),
                                     QStringLiteral("5 min on \"Moon\" are not sold"),
                                     QStringLiteral("0 min on \"Sun 1\" are not sold"),
                                     QStringLiteral("1441 min on \"Sun 1\" are not sold")}));
    EXPECT_EQ(times().size(), 0);
    EXPECT_EQ(switched, QStringList());
}

TEST_F(TSwitchHostTest, AWishThatNobodyPaidForIsRefused)
{
    device->p_hw_CheckStatus(QStringLiteral("0.0.0.0"), k100A, QStringLiteral("1"), QStringLiteral("ON"),
                             platform::Now() + 1);
    minutes(1);
    EXPECT_EQ(switched, QStringList());
    EXPECT_EQ(device->StackItem(0)->Status, QStringLiteral("OFF"));
}

// ---- people at the boards

TEST_F(TSwitchHostTest, SwitchedOnAtTheBoardWithoutPayingItGoesOff)
{
    for (const bool reporting : {false, true}) {
        bus.setReporting(k100A, reporting);
        takeSwitched();
        bus.switchRelay(k100A, 1, true, reporting ? 3'600'000 : 0);
        seconds(9);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1})) << reporting;
        minutes(10);
        EXPECT_EQ(switched.size(), 2) << reporting;
    }
    EXPECT_EQ(times().size(), 0);
}

TEST_F(TSwitchHostTest, SwitchedOffAtTheBoardPaidTimeGoesOn)
{
    for (const bool reporting : {false, true}) {
        bus.setReporting(k100A, reporting);
        host->sell(kAnna, kSun1, 2);
        minutes(1);
        takeSwitched();
        bus.switchRelay(k100A, 1, false);
        seconds(9);
        EXPECT_EQ(switched, QStringList({kOff1, kOn1})) << reporting;
        minutes(2);
        EXPECT_EQ(switched, QStringList({kOff1, kOn1, kOff1})) << reporting;
    }
}

// The board is quicker than its answers about the state of its relays: a command at the wrong moment would
// switch on again what has just gone off.
TEST_F(TSwitchHostTest, SwitchedOffAtTheBoardAtTheVeryEndItStaysOff)
{
    bus.setReporting(k100A);
    for (qint64 ms = -600; ms <= 600; ms += 50) {
        takeSwitched();
        host->sell(kAnna, kSun1, 1);
        clock.advance(60'000 + ms);
        if (bus.relayOn(k100A, 1)) {
            bus.switchRelay(k100A, 1, false);
        }
        seconds(20);
        EXPECT_FALSE(sun1()) << ms;
        EXPECT_LE(switched.count(kOn1), 2) << ms;
    }
}

TEST_F(TSwitchHostTest, ReportingBoardsAreSwitchedOnceEach)
{
    bus.setReporting(k100A);
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, 2);
    minutes(5);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    expectOffAt(began + 120'000);
}

TEST_F(TSwitchHostTest, PaidForALampThatIsOnAlreadyItStaysOn)
{
    bus.switchRelay(k100A, 1, true);
    seconds(2); // its board has told, nobody has switched it off yet, or just so
    takeSwitched();
    const bool lit = sun1();
    const qint64 began = clock.nowMs();
    EXPECT_TRUE(host->sell(kAnna, kSun1, 1));
    seconds(30);
    EXPECT_TRUE(sun1()) << lit;
    minutes(1);
    EXPECT_FALSE(sun1());
    ASSERT_EQ(times().size(), 1);
    EXPECT_LE(common::WholeMs(times()[0].began) - began, TSwitchHost::kPatienceMs);
    EXPECT_EQ(balance(), 950);
}

TEST_F(TSwitchHostTest, ARelayThatIsNoLampIsNeverCommanded)
{
    bus.setReporting(k100B);
    bus.switchRelay(k100A, 2, true);
    bus.switchRelay(k100B, 2, true, 3'600'000); // says "SS2", which would be a relay of board A
    bus.switchRelay(k100B, 3, true, 3'600'000); // says "SS3", which would be the lamp on the first relay
    host->sell(kAnna, kSun1, 2);
    minutes(10);
    bus.switchRelay(k100A, 2, false);
    minutes(10);
    clock.jumpTo(testkit::TManualClock::at(23, 55));
    minutes(10);
    bus.switchRelay(k100A, 2, true);
    minutes(10);
    EXPECT_TRUE(bus.relayOn(k100A, 2));
    EXPECT_EQ(bus.counts(k100A).RelayOrders, 2) << "on and off of the lamp";
    EXPECT_EQ(bus.counts(k100B).RelayOrders, 0);
}

// ---- boards that do not answer

TEST_F(TSwitchHostTest, ABoardThatDiedIsToldAndItsLampGoesOffWhenItIsBack)
{
    host->sell(kAnna, kSun1, 2);
    minutes(1);
    bus.setFaults(k100A, {.Dead = true});
    minutes(3);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("Sun 1: its board 100A does not answer")}));
    EXPECT_TRUE(sun1()) << "nobody can help it";
    EXPECT_EQ(times()[0].ending, TLampEnding::Over);
    bus.setFaults(k100A, {});
    seconds(15);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    minutes(10);
    EXPECT_EQ(switched.size(), 2);
    EXPECT_EQ(troubles.value(1), QStringLiteral("Sun 1: its board 100A answers again"));
    EXPECT_EQ(troubles.size(), 2);
}

TEST_F(TSwitchHostTest, ABoardThatLostItsPowerLightsAgain)
{
    host->sell(kAnna, kSun1, 5);
    minutes(1);
    bus.restart(k100A);
    seconds(6);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn1}));
    bus.setFaults(k100A, {.Dead = true});
    bus.restart(k100A);
    minutes(1);
    bus.setFaults(k100A, {});
    seconds(15);
    EXPECT_TRUE(sun1());
    minutes(5);
    EXPECT_FALSE(sun1());
    EXPECT_EQ(switched.size(), 6);
}

TEST_F(TSwitchHostTest, NothingIsSoldOnABoardThatHasGone)
{
    bus.setFaults(k100A, {.Dead = true});
    minutes(1);
    EXPECT_FALSE(host->sell(kAnna, kSun1, 5));
    EXPECT_EQ(balance(), 1'000);
    EXPECT_EQ(times()[0].ending, TLampEnding::Unanswered);
    bus.setFaults(k100A, {});
    minutes(1);
    EXPECT_EQ(switched, QStringList());
    EXPECT_TRUE(host->sell(kAnna, kSun1, 5));
}

TEST_F(TSwitchHostTest, AClockThatIsSetMakesNoBoardGoneOrAlive)
{
    constexpr qint64 kHour = 3'600'000;
    for (const qint64 jump : {kHour, -2 * kHour}) {
        clock.jumpTo(clock.nowMs() + jump);
        EXPECT_TRUE(host->lamps()[0].answers) << jump;
        EXPECT_TRUE(host->sell(kAnna, kSun1, 1)) << jump;
        minutes(2);
    }
    EXPECT_EQ(times().last().ending, TLampEnding::Over);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn1, kOff1}));
    EXPECT_EQ(troubles, QStringList());

    bus.setFaults(k100A, {.Dead = true});
    seconds(1);
    clock.jumpTo(clock.nowMs() - kHour);
    seconds(20);
    EXPECT_FALSE(host->lamps()[0].answers) << "nobody hears it for an hour";
    EXPECT_FALSE(host->sell(kAnna, kSun1, 1));
}

class TSwitchHostSilence : public TLampFixture
{
};

TEST_F(TSwitchHostSilence, AnOrderOnABoardThatNeverSpokeIsGivenUp)
{
    EXPECT_TRUE(host->sell(kAnna, kSun1, 5)) << "it may yet answer";
    EXPECT_FALSE(host->sell(kBoris, kSun1, 5)) << "one after the other";
    seconds(7);
    EXPECT_EQ(times()[0].ending, TLampEnding::Unanswered);
    EXPECT_EQ(balance(), 1'000);
    EXPECT_EQ(troubles, QStringList({QStringLiteral("Sun 1 is being switched on for somebody else"),
                                     QStringLiteral("Device 100A does not working")}));
    EXPECT_EQ(news, QStringList({QStringLiteral("Sun 1  Anna Berg (1)  5 min for 2.50, unanswered")}));
    hearBoards();
    minutes(10);
    EXPECT_EQ(switched, QStringList());
    EXPECT_TRUE(host->sell(kAnna, kSun1, 1));
    minutes(2);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
}

TEST_F(TSwitchHostSilence, AnOrderIsCarriedOutWhenTheBoardIsHeardInTime)
{
    for (int ms = 0; ms < 3'000; ms += 250) {
        bus.setPingInterval(0);
        end();
        start();
        takeSwitched();
        ASSERT_TRUE(host->sell(kAnna, kSun1, 1));
        clock.advance(ms);
        bus.ping(k100A);
        seconds(8);
        EXPECT_EQ(switched, QStringList({kOn1})) << ms << qPrintable(news.join(u'\n') + troubles.join(u'\n'));
        minutes(1);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1})) << ms;
        news.clear();
    }
}

// ---- restarts

TEST_F(TSwitchHostTest, ARestartWhileItIsOnChangesNothing)
{
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, 5);
    minutes(1);
    end();
    seconds(20);
    start();
    minutes(1);
    EXPECT_EQ(host->lamps()[0].secondsLeft, 160);
    EXPECT_TRUE(host->lamps()[0].on);
    minutes(5);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    expectOffAt(began + 5 * 60'000);
    EXPECT_EQ(balance(), 750) << "charged once";
    EXPECT_EQ(troubles, QStringList());
}

TEST_F(TSwitchHostTest, ARestartFindsItOver)
{
    for (const bool reporting : {false, true}) {
        bus.setReporting(k100A, reporting);
        takeSwitched();
        host->sell(kAnna, kSun1, 5);
        minutes(1);
        end();
        minutes(10);
        EXPECT_TRUE(sun1());
        start();
        seconds(kPingMs / 1'000 + 4);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1})) << reporting;
        EXPECT_EQ(times().last().ending, TLampEnding::Over);
        minutes(10);
        EXPECT_EQ(switched.size(), 2) << reporting;
    }
}

TEST_F(TSwitchHostTest, ARestartFindsTheLampOffForWhichTimeRuns)
{
    host->sell(kAnna, kSun1, 5);
    minutes(1);
    end();
    bus.restart(k100A);
    start();
    seconds(10);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn1}));
    minutes(5);
    EXPECT_FALSE(sun1());
}

TEST_F(TSwitchHostTest, ARestartForgetsOrdersThatNobodyWaitsForAnyMore)
{
    end();
    elsewhere(QStringLiteral("INSERT INTO lamp_time (ordered, lamp, card, member, minutes, cents)"
                             " VALUES ('2026-01-05 11:00:00.000', 'Sun 1', '1', 1, 5, 250)"));
    start();
    minutes(1);
    EXPECT_EQ(switched, QStringList());
    EXPECT_EQ(times()[0].ending, TLampEnding::Unanswered);
    EXPECT_EQ(balance(), 1'000);
}

// ---- midnight

TEST_F(TSwitchHostTest, AcrossMidnightAndEveryMinuteAroundIt)
{
    clock.jumpTo(testkit::TManualClock::at(23, 57));
    seconds(10);
    for (int round = 0; round < 100; ++round) {
        takeSwitched();
        const qint64 began = clock.nowMs();
        ASSERT_TRUE(host->sell(kAnna, kSun1, 1));
        clock.advance(60'000 - 5);
        EXPECT_TRUE(sun1()) << clock.nowMs();
        clock.advance(5 + kSoonMs);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1})) << round;
        expectOffAt(began + 60'000);
        clock.advance(5'090); // of all ways to lie between the sweeps
    }
}

TEST_F(TSwitchHostTest, AWholeDayAndAWholeNight)
{
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, TLampBooks::kMaxMinutes);
    host->sell(kBoris, kSun2, 720);
    minutes(10);
    clock.jumpTo(testkit::TManualClock::at(23, 50));
    minutes(30);
    EXPECT_TRUE(sun1());
    EXPECT_FALSE(sun2());
    clock.jumpTo(began + 24 * 3'600'000LL - 300'000);
    minutes(5.1);
    EXPECT_EQ(switched, QStringList({kOn1, kOn2, kOff2, kOff1}));
    expectOffAt(began + 24 * 3'600'000LL);
    clock.jumpTo(testkit::TManualClock::at(23, 55) + platform::kMsPerDay);
    minutes(10);
    EXPECT_EQ(switched.size(), 4) << "and it stays off on the next days";
}

TEST_F(TSwitchHostTest, AnUnpaidLampIsFoundAtAnyTimeOfTheDay)
{
    bus.setReporting(k100A);
    for (int hour = 0; hour < 24; ++hour) {
        clock.jumpTo(testkit::TManualClock::at(hour, 59, 58));
        bus.switchRelay(k100A, 1, true, 120'000);
        seconds(10);
        EXPECT_FALSE(sun1()) << hour;
    }
    EXPECT_EQ(switched.size(), 48);
}

// ---- all of it at once

/// A night in which everything happens.
class TSwitchHostNights : public TLampFixture, public ::testing::WithParamInterface<unsigned>
{
protected:
    bool paidFor(const QString& lamp)
    {
        const QList<TLampTime> all = books.open();
        return std::any_of(all.begin(), all.end(), [&](const TLampTime& time) {
            return time.lamp == lamp && time.running(platform::Now());
        });
    }

    void happen()
    {
        const QString board = chance(2) ? k100A : k100B;
        const QString lamp = chance(2) ? kSun1 : kSun2;
        switch (random() % 9) {
        case 0:
        case 1:
        case 2:
            host->sell(chance(2) ? kAnna : kBoris, lamp, 1 + static_cast<int>(random() % 3));
            return; // nothing that needs time to be mended
        case 3:
            host->stop(lamp);
            return;
        case 4:
            bus.switchRelay(board, 1, chance(2), chance(2) ? 30'000 : 0);
            break;
        case 5:
            bus.restart(board);
            break;
        case 6:
            bus.setFaults(board, {.Dead = chance(2), .LateAnswerMs = static_cast<int>(random() % 1'500)});
            break;
        case 7:
            bus.setReporting(board, chance(2));
            return;
        default:
            end();
            start();
            break;
        }
        disturbedAt = clock.nowMs();
    }

    bool chance(unsigned of) { return random() % of == 0; }

    TLampBooks books{club};

    std::mt19937 random{GetParam()};
    qint64 disturbedAt = 0;
};

TEST_P(TSwitchHostNights, LampsAreOnAsSold)
{
    constexpr qint64 kMendedMs = 25'000;
    clock.jumpTo(testkit::TManualClock::at(23, 40));
    hearBoards();
    int checks = 0;
    int lit = 0;
    for (int second = 0; second < 600; ++second) {
        if (chance(25)) {
            happen();
        }
        clock.advance(600 + static_cast<int>(random() % 800));
        if (second % 60 == 59) { // somebody repairs what is dead, and nothing happens for a while
            for (const QString& board : {k100A, k100B}) {
                bus.setFaults(board, {});
            }
            bus.switchRelay(k100A, 1, sun1()); // ends a time set at the board
            bus.switchRelay(k100B, 1, sun2());
            clock.advance(kMendedMs);
            for (int look = 0; look < 40; ++look) {
                clock.advance(1'000);
                const bool paid1 = paidFor(kSun1);
                const bool paid2 = paidFor(kSun2);
                clock.advance(kSoonMs);
                if (paidFor(kSun1) == paid1 && paidFor(kSun2) == paid2) {
                    ASSERT_EQ(sun1(), paid1) << second << ' ' << look;
                    ASSERT_EQ(sun2(), paid2) << second << ' ' << look;
                    ++checks;
                    lit += int(paid1) + int(paid2);
                }
            }
        }
    }
    EXPECT_GT(checks, 300);
    EXPECT_GT(lit, 30);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TSwitchHostNights, ::testing::Range(1U, 5U));

// ---- the line

TEST_F(TSwitchHostTest, LateAnswersDoNotMakeItFlicker)
{
    for (const int late : {100, 900, 1'700}) {
        bus.setFaults(k100A, {.LateAnswerMs = late});
        for (int round = 0; round < 10; ++round) {
            takeSwitched();
            host->sell(kAnna, kSun1, 1);
            minutes(1.2);
            EXPECT_EQ(switched, QStringList({kOn1, kOff1})) << late << ' ' << round;
            clock.advance(730);
        }
    }
}

// It ends in the moment of a poll: the board's answer was under way when the command went out.
TEST_F(TSwitchHostTest, SoldAgainWhileAnOldAnswerSaysThatItIsOn)
{
    for (const int pause : {10, 500, 1'000, 1'500, 2'500, 4'500}) {
        takeSwitched();
        ASSERT_EQ(clock.nowMs() % 2'000, 0);
        host->sell(kAnna, kSun1, 1);
        minutes(1);
        clock.advance(pause);
        EXPECT_TRUE(host->sell(kBoris, kSun1, 1));
        seconds(3);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn1})) << pause;
        minutes(1);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn1, kOff1})) << pause;
        seconds(10);
        clock.advance(2'000 - clock.nowMs() % 2'000);
    }
}

TEST_F(TSwitchHostTest, ALostCommandIsRepeated)
{
    port.OnWritten = [this](const QByteArray& bytes) {
        if (!bytes.contains("RL")) {
            line.after(kLineMs, [this, bytes] { stream.feed(bytes); });
        }
    };
    host->sell(kAnna, kSun1, 1);
    seconds(5);
    EXPECT_FALSE(sun1());
    port.OnWritten = [this](const QByteArray& bytes) {
        line.after(kLineMs, [this, bytes] { stream.feed(bytes); });
    };
    seconds(6);
    EXPECT_TRUE(sun1());
    minutes(1);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
}

TEST_F(TSwitchHostTest, APortThatFailsEndsNothing)
{
    const auto old = platform::setExceptionHandler([](const QString&, const std::exception_ptr&) {});
    port.WriteFailure = QStringLiteral("broken");
    EXPECT_TRUE(host->sell(kAnna, kSun1, 1));
    seconds(10);
    EXPECT_FALSE(sun1());
    port.WriteFailure.reset();
    seconds(10);
    EXPECT_TRUE(sun1());
    minutes(1);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    platform::setExceptionHandler(old);
}

// ---- the books

TEST_F(TSwitchHostTest, BooksThatAreLockedForAMomentDelayTheBeginning)
{
    host->sell(kAnna, kSun1, 1);
    minutes(2);
    takeSwitched();
    bool began = false;
    whileLocked([&] {
        TLampTime order;
        EXPECT_THROW(host->sell(kAnna, kSun1, 1), EDatabase);
        seconds(1);
        began = sun1();
    });
    EXPECT_FALSE(began);
    EXPECT_EQ(times().size(), 1) << "nothing was ordered";
}

TEST_F(TSwitchHostTest, AnOrderWaitsForBooksThatAreLocked)
{
    elsewhere(QStringLiteral("CREATE TRIGGER locked BEFORE UPDATE ON lamp_time BEGIN"
                             " SELECT RAISE(ABORT, 'not now'); END"));
    EXPECT_TRUE(host->sell(kAnna, kSun1, 1));
    seconds(4);
    EXPECT_FALSE(sun1());
    EXPECT_EQ(balance(), 1'000);
    EXPECT_EQ(troubles.size(), 1) << "told once";
    EXPECT_TRUE(troubles[0].startsWith(QStringLiteral("time on Sun 1 cannot begin: not now")));
    elsewhere(QStringLiteral("DROP TRIGGER locked"));
    seconds(4);
    EXPECT_TRUE(sun1());
    EXPECT_EQ(balance(), 950);
}

TEST_F(TSwitchHostTest, PaidTimeEndsAlsoWhenTheBooksAreLocked)
{
    const qint64 began = clock.nowMs();
    host->sell(kAnna, kSun1, 1);
    minutes(0.9);
    whileLocked([&] {
        minutes(0.2);
        EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
        expectOffAt(began + 60'000);
    });
    EXPECT_EQ(troubles.size(), 1);
    seconds(3);
    EXPECT_EQ(times()[0].ending, TLampEnding::Over);
}

TEST_F(TSwitchHostTest, PaidTimeEndsAlsoWhenTheBooksCannotBeRead)
{
    host->sell(kAnna, kSun1, 1);
    minutes(0.5);
    elsewhere(QStringLiteral("ALTER TABLE lamp_time RENAME TO away"));
    minutes(1);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1}));
    elsewhere(QStringLiteral("ALTER TABLE away RENAME TO lamp_time"));
    seconds(3);
    EXPECT_EQ(times()[0].ending, TLampEnding::Over);
    ASSERT_FALSE(troubles.isEmpty());
    EXPECT_EQ(troubles.size(), 1) << qPrintable(troubles.join(u'\n'));
}

TEST_F(TSwitchHostTest, AnotherProgramMayOrderProlongAndEnd)
{
    elsewhere(QStringLiteral("INSERT INTO lamp_time (ordered, lamp, card, member, minutes, cents)"
                             " VALUES ('2026-01-05 12:00:10.000', 'Sun 1', '1', 1, 5, 250)"));
    seconds(2);
    EXPECT_TRUE(sun1());
    EXPECT_EQ(balance(), 750);
    elsewhere(QStringLiteral("UPDATE lamp_time SET until = '2026-01-05 12:20:00.000'"));
    minutes(10);
    EXPECT_TRUE(sun1());
    elsewhere(QStringLiteral("UPDATE lamp_time SET ending = 'stopped', ended = '2026-01-05 12:10:00.000'"));
    seconds(2);
    EXPECT_FALSE(sun1());
}

// ---- lives

TEST_F(TSwitchHostTest, ClosingLeavesTheLampAsItIs)
{
    host->sell(kAnna, kSun1, 1);
    seconds(1);
    host->close();
    host->close();
    EXPECT_FALSE(device->OnCheckSQL());
    EXPECT_FALSE(device->OnNewItem());
    EXPECT_FALSE(device->OnCheckStatus());
    EXPECT_FALSE(device->OnError());
    seconds(30);
    EXPECT_TRUE(times()[0].open());
}

TEST_F(TSwitchHostTest, TheComponentMayGoFirst)
{
    host->sell(kAnna, kSun1, 1);
    device.reset();
    minutes(2);
    EXPECT_EQ(host->lamps().size(), 2);
    EXPECT_TRUE(host->sell(kAnna, kSun2, 1));
    host.reset();
}

TEST_F(TSwitchHostTest, HooksMayRaiseAndSell)
{
    QStringList raised;
    const auto old = platform::setExceptionHandler(
        [&](const QString& message, const std::exception_ptr&) { raised << message; });
    host->OnTime = [this](const TLampTime& time) {
        if (time.ending == TLampEnding::Over && times().size() < 2) {
            host->sell(kBoris, kSun2, 1);
        }
        throw platform::Exception(QStringLiteral("hook"));
    };
    host->sell(kAnna, kSun1, 1);
    minutes(3);
    EXPECT_EQ(switched, QStringList({kOn1, kOff1, kOn2, kOff2}));
    EXPECT_EQ(raised.size(), 4);
    platform::setExceptionHandler(old);
}

} // namespace
} // namespace tnv5::host
