// Thirty-two pairs of relay boards behind the real connector, a lamp on each relay, and people who buy time
// on them across three midnights: what the boards' relays really do is explained by the log of the commands
// and by what happened at the boards, the component's job table agrees with it, and the lamps are on as sold.
//
// By default five minutes around each midnight; with TNV5_LONG=1 all of the three days.

#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "support/text_printers.h"
#include "tnv5/common/date_time_text.h"
#include "tnv5/host/switch_host.h"
#include "tnv5/platform/serial_port.h"

#include <gtest/gtest.h>
#include <random>

namespace tnv5::integration {
namespace {

constexpr int kPairs = 32;
constexpr int kRelaysOfPair = 5;
constexpr int kNights = 3;
constexpr qint64 kMinute = 60'000;
constexpr qint64 kTableMs = 5'000;   // a poll, its answer, and the sweep in between
constexpr qint64 kMendedMs = 20'000; // a ping, a poll, the host's doubts, and a sweep
constexpr qint64 kInTimeMs = 1'000;
const QString kSent = QStringLiteral("%Отправлено на порт% RL0.0.0.0:");
const QString kCard = QStringLiteral("1");

/// A relay, and everything that explains the state it is in.
struct TRelay
{
    QString board;
    int number = 0; // by the board's own count
    QString job;    // by the pair's
    bool on = false;
    qint64 changedAt = 0;
    qint64 disturbedAt = 0; // by anything but the host
    qint64 paidUntil = 0;
    qint64 sent = 0;  // commands in the component's log
    qint64 heard = 0; // commands that reached the bus
    int changes = 0;
};

class TNights
{
public:
    explicit TNights(unsigned seed) : FRandom(seed)
    {
        for (int pair = 0; pair < kPairs; ++pair) {
            addPair(QString::number(pair).rightJustified(3, u'0'));
        }
        port.SetPort(pty.path());
        connector.SetConnectorType(connector::podComPort);
        connector.SetComport(&port);
        device.SetConnector(&connector);
        device.SetOnLog([this](auto*, const QString& text) { onLog(text); });
        bus.OnCommand = [this](const sim::TReceivedCommand& command) { onCommand(command); };
        host.emplace(device, club);
        host->OnTime = [this](const host::TLampTime& time) { onTime(time); };
        host->OnTrouble = [this](const QString& text) { ++troubles[text.left(10)]; };
    }

    void hearBoards()
    {
        ASSERT_TRUE(connector.GetConnected());
        bus.setPingInterval(5'000);
        clock.advance(11'000);
        ASSERT_EQ(device.StackItemsCount(), kPairs * kRelaysOfPair);
        disturbAll();
    }

    /// One second in which something may happen, and a look at everything.
    void second()
    {
        for (int i = 0; i < 2; ++i) {
            if (chance(2)) {
                sell();
            }
        }
        if (chance(4)) {
            happen();
        }
        mend();
        clock.advance(1'000);
        check();
    }

    void jumpTo(qint64 ms)
    {
        clock.jumpTo(ms);
        disturbAll();
    }

    testkit::TManualClock clock{testkit::TManualClock::at(23, 56, 40)};
    host::TDatabase club{QStringLiteral(":memory:")};
    host::TLampBooks books{club};
    sim::TPty pty{QStringLiteral("relays")};
    sim::TBoardBus bus{pty};
    platform::TSerialPort port;
    TLockStep lockStep{clock, pty, port};
    connector::TDeviceConnector connector;
    switching::TSwitchDevice device;
    std::optional<host::TSwitchHost> host;
    std::map<QString, TRelay> relays; // by board and own number
    std::map<QString, int> troubles;
    qint64 sold = 0;
    qint64 checks = 0; // of lamps that nothing had disturbed
    qint64 lit = 0;
    bool wrong = false;

private:
    void addPair(const QString& pair)
    {
        if (FMember == 0) {
            FMember = club.addMember(QStringLiteral("Anna Berg"));
            club.addCard(kCard, FMember);
        }
        bus.addPair(pair);
        for (int logical = 1; logical <= kRelaysOfPair; ++logical) {
            TRelay relay;
            relay.board = pair + (logical <= 2 ? u'A' : u'B');
            relay.number = logical <= 2 ? logical : logical - 2;
            relay.job = QString::number(logical);
            books.setLamp({lampOf(relay), relay.board, relay.job, 10});
            relays[relay.board + QString::number(relay.number)] = relay;
        }
        if (chance(2)) {
            bus.setReporting(pair + u'A'); // whose own numbers are the pair's
        }
    }

    static QString lampOf(const TRelay& relay) { return relay.board + u' ' + relay.job; }
    bool chance(unsigned of) { return FRandom() % of == 0; }
    TRelay& any() { return std::next(relays.begin(), static_cast<int>(FRandom() % relays.size()))->second; }

    void sell()
    {
        const TRelay& relay = any();
        sold += int(host->sell(kCard, lampOf(relay), 1 + static_cast<int>(FRandom() % 3)));
    }

    // At the boards, without the host.
    void happen()
    {
        TRelay& relay = any();
        switch (FRandom() % 4) {
        case 0:
            if (bus.switchRelay(relay.board, relay.number, !relay.on)) { // not a dead board's
                relay.on = !relay.on;
            }
            disturb(relay.board);
            break;
        case 1:
            bus.restart(relay.board);
            for (auto& [key, other] : relays) {
                other.on = other.on && other.board != relay.board;
            }
            disturb(relay.board);
            break;
        case 2:
            bus.setFaults(relay.board, {.Dead = true});
            FDead[relay.board] = clock.nowMs() + 1'000 + static_cast<qint64>(FRandom() % 40'000);
            break;
        default:
            if (!FDead.contains(relay.board)) {
                bus.setFaults(relay.board, {.LateAnswerMs = static_cast<int>(FRandom() % 1'500)});
            }
            break;
        }
    }

    void mend()
    {
        for (auto dead = FDead.begin(); dead != FDead.end();) {
            disturb(dead->first);
            if (clock.nowMs() >= dead->second) {
                bus.setFaults(dead->first, {});
                dead = FDead.erase(dead);
            } else {
                ++dead;
            }
        }
    }

    void disturb(const QString& board)
    {
        for (auto& [key, relay] : relays) {
            if (relay.board == board) {
                relay.disturbedAt = clock.nowMs();
            }
        }
    }

    void disturbAll()
    {
        for (auto& [key, relay] : relays) {
            relay.disturbedAt = clock.nowMs();
        }
    }

    void onLog(const QString& text)
    {
        if (text.startsWith(kSent)) {
            ++relays.at(text.mid(kSent.size())).sent;
        }
    }

    void onCommand(const sim::TReceivedCommand& received)
    {
        const auto command = sim::parseBoardCommand(received.Line);
        if (!command || command->Order != sim::TBoardOrder::Relay) {
            return;
        }
        const QString board = QString::fromLatin1(command->Address);
        TRelay& relay = relays.at(board + QString::number(command->Number));
        ++relay.heard;
        if (!FDead.contains(board)) { // the command changes it over
            relay.on = !relay.on;
            relay.changedAt = clock.nowMs();
            ++relay.changes;
        }
    }

    void onTime(const host::TLampTime& time)
    {
        const QString board = time.lamp.left(4);
        const int logical = time.lamp.right(1).toInt();
        TRelay& relay = relays.at(board + QString::number(logical <= 2 ? logical : logical - 2));
        if (time.open()) {
            relay.paidUntil = common::WholeMs(time.until);
        }
    }

    void check()
    {
        const qint64 now = clock.nowMs();
        for (const auto& [key, relay] : relays) {
            const bool on = bus.relayOn(relay.board, relay.number);
            expect(on == relay.on, relay, "the log does not explain its state");
            expect(relay.sent == relay.heard, relay, "commands were lost");
            const qint64 quiet = now - std::max(relay.changedAt, relay.disturbedAt);
            if (quiet > kTableMs && now - relay.disturbedAt > kMendedMs) {
                const auto job = device.StackItem(device.p_hw_FindDevice(QString(), relay.board, relay.job));
                expect((job->StatusDevice == u"ON") == on, relay, "the job table does not know its state");
            }
            const bool paid = now < relay.paidUntil;
            if (now - relay.disturbedAt > kMendedMs && std::abs(now - relay.paidUntil) > kInTimeMs) {
                expect(on == paid, relay, paid ? "it is not on as sold" : "it is on without being paid for");
                ++checks;
                lit += int(on);
            }
        }
        expect(device.StackItemsCount() == kPairs * kRelaysOfPair, any(), "jobs came or went");
    }

    void expect(bool right, const TRelay& relay, const char* what)
    {
        if (!right && !std::exchange(wrong, true)) {
            ADD_FAILURE() << qPrintable(lampOf(relay)) << " at "
                          << qPrintable(common::DateTimeToText(platform::Now())) << ": " << what;
        }
    }

    std::mt19937 FRandom;
    qint64 FMember = 0;
    std::map<QString, qint64> FDead; // until when
};

TEST(SwitchNights, WhatTheRelaysDoIsExplained)
{
    const bool allDays = qEnvironmentVariableIntValue("TNV5_LONG") != 0;
    TNights nights(20'260'105);
    nights.hearBoards();
    for (int night = 0; night < kNights && !nights.wrong; ++night) {
        const qint64 begin = testkit::TManualClock::at(23, 57) + night * platform::kMsPerDay;
        if (!allDays && night > 0) {
            nights.jumpTo(begin);
        }
        const qint64 end = allDays ? begin + platform::kMsPerDay : begin + 5 * kMinute;
        while (nights.clock.nowMs() < end && !nights.wrong) {
            nights.second();
        }
    }
    EXPECT_GT(nights.sold, 500);
    EXPECT_GT(nights.checks, 50'000);
    EXPECT_GT(nights.lit, 5'000);
    EXPECT_EQ(nights.bus.badCommands(), 0);
    EXPECT_EQ(nights.bus.strayCommands(), 0);
    EXPECT_EQ(nights.bus.skippedBytes(), 0);
    RecordProperty("checks", static_cast<int>(nights.checks));
    std::printf("%lld times sold, %lld states checked, %lld of them on\n",
                static_cast<long long>(nights.sold), static_cast<long long>(nights.checks),
                static_cast<long long>(nights.lit));
}

} // namespace
} // namespace tnv5::integration
