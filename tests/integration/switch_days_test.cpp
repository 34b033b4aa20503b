// Thirty-two pairs of relay boards behind the real connector, and a host that decides by throwing dice, for
// three whole days (one under sanitizers): at every sweep the true state of each of the 160 relays is
// explained by the commands in the log and by what happened at the board, the job table agrees with it, and
// each command follows from a question that the host has answered with yes. One pair pings, so that it is
// polled and may be meddled with; the others only hear.

#include "sim/board_bus.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "support/sanitized.h"
#include "support/text_printers.h"
#include "tnv5/common/date_time_text.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/switch/switch_device.h"

#include <deque>
#include <gtest/gtest.h>
#include <random>

namespace tnv5::integration {
namespace {

constexpr int kPairs = 32;
constexpr int kPinging = 1;
constexpr int kRelaysOfPair = 5;
constexpr int kDays = tests::kSanitized ? 1 : 3;
constexpr qint64 kSweepMs = 3'000;
constexpr qint64 kPolledMs = 2'100; // until a poll has shown what was done at a board
const QString kSent = QStringLiteral("%Отправлено на порт% RL0.0.0.0:");
const QString kLink = QStringLiteral("0.0.0.0");
const QString kOn = QStringLiteral("ON");
const QString kOff = QStringLiteral("OFF");

struct TRelay
{
    QString board;
    int number = 0;               // by the board's own count
    QString logical;              // by the pair's
    bool on = false;              // as commands and hands have left it
    bool pings = false;           // its board
    qint64 touchedAt = -kSweepMs; // by a hand, last
    qint64 endsAt = 0;            // when the host switches it off; 0: never
    switching::PRFidInfo job;
};

class TDays
{
public:
    TDays()
    {
        for (int pair = 0; pair < kPairs; ++pair) {
            addPair(QStringLiteral("%1").arg(pair, 3, 10, QLatin1Char('0')), pair < kPinging);
        }
        bus.setReporting(QStringLiteral("000A")); // whose own numbers are the pair's
        bus.setReporting(QStringLiteral("001A"));
        bus.OnCommand = [this](const sim::TReceivedCommand& command) { onCommand(command); };
        port.SetPort(pty.path());
        connector.SetConnectorType(connector::podComPort);
        connector.SetComport(&port);
        device.SetConnector(&connector);
        device.SetOnLog([this](auto*, const QString& text) { onLog(text); });
        device.SetOnError([this](auto*, const QString& text) { onError(text); });
        device.SetOnCheckSQL([this](auto*, auto& board, auto& relay, auto& status, auto& actual, auto& mode,
                                    QVariant& result) {
            result = answer(byJob(board.toString(), relay.toString()), status.toString(), actual.toString(),
                            mode.toInt());
        });
        device.SetOnNewItem(
            [this](auto*, auto&, auto&, auto&, auto&, QVariant& wanted) { wanted = chance(2) ? kOn : kOff; });
    }

    void hearBoards()
    {
        ASSERT_TRUE(connector.GetConnected());
        for (const TRelay& relay : FRelays) {
            if (relay.pings) {
                bus.ping(relay.board);
            }
        }
        clock.advance(2 * kSweepMs);
        ASSERT_EQ(device.DeviceList().size(), 2 * kPinging);
        ASSERT_EQ(device.StackItemsCount(), kPinging * kRelaysOfPair);
    }

    /// The time between two sweeps, in which something may happen, and a look at everything.
    void step()
    {
        const qint64 pause = 1 + qint64(FRandom() % (kSweepMs - 1));
        clock.advance(pause);
        if (chance(20)) {
            order();
        }
        if (chance(40)) {
            meddle();
        }
        clock.advance(kSweepMs - pause);
        endTimes();
        check();
    }

    testkit::TManualClock clock{testkit::TManualClock::at(18, 0)};
    sim::TPty pty{QStringLiteral("relays")};
    sim::TBoardBus bus{pty};
    platform::TSerialPort port;
    TLockStep lockStep{clock, pty, port};
    connector::TDeviceConnector connector;
    switching::TSwitchDevice device;
    qint64 commands = 0;
    qint64 touches = 0;
    qint64 states = 0; // checked
    qint64 lit = 0;
    qint64 questions[4] = {};
    qint64 asleep = 0; // runs until tomorrow, and is not asked about today
    qint64 awoken = 0; // was over yesterday, and is asked about today
    bool wrong = false;

private:
    void addPair(const QString& pair, bool pings)
    {
        bus.addPair(pair);
        for (int logical = 1; logical <= kRelaysOfPair; ++logical) {
            TRelay relay;
            relay.board = pair + (logical <= 2 ? u'A' : u'B');
            relay.number = logical <= 2 ? logical : logical - 2;
            relay.logical = QString::number(logical);
            relay.pings = pings;
            FByNumber[relay.board + QString::number(relay.number)] = FRelays.size();
            FByJob[relay.board + relay.logical] = FRelays.size();
            FRelays.push_back(relay);
        }
    }

    bool chance(unsigned of) { return FRandom() % of == 0; }
    TRelay& byNumber(const QString& key) { return FRelays.at(FByNumber.at(key)); }
    TRelay& byJob(const QString& board, const QString& relay) { return FRelays.at(FByJob.at(board + relay)); }

    // ---- the host

    void order()
    {
        TRelay& relay = FRelays[FRandom() % FRelays.size()];
        const bool on = !chance(3);
        const qint64 minutes = chance(4) ? qint64(FRandom() % 900) : 1 + qint64(FRandom() % 30);
        const double until = platform::Now() + double(minutes) / 1440;
        EXPECT_EQ(device.p_hw_CheckStatus(kLink, relay.board, relay.logical, on ? kOn : kOff, until),
                  on ? kOn : kOff);
        relay.endsAt = on && !chance(4) ? clock.nowMs() + minutes * 60'000 : 0; // some are forgotten
    }

    /// A job that is over is the host's to end.
    void endTimes()
    {
        for (TRelay& relay : FRelays) {
            if (relay.endsAt != 0 && clock.nowMs() >= relay.endsAt) {
                relay.endsAt = 0;
                device.p_hw_CheckStatus(kLink, relay.board, relay.logical, kOff, platform::Now());
            }
        }
    }

    int answer(const TRelay& relay, const QString& status, const QString& actual, int mode)
    {
        const char* const expected[][2] = {{"ON", "OFF"}, {"OFF", "ON"}, {"ON", "ON"}};
        expect(mode == switching::cmNoAnswer
                   ? actual == "NOTINLINE"
                   : status == QLatin1String(expected[mode][0]) && actual == QLatin1String(expected[mode][1]),
               relay, "a question does not fit the states");
        ++questions[mode];
        if (mode == switching::cmRunning) {
            const qint64 ends = common::WholeMs(relay.job->Finishtime);
            expect(clock.nowMs() % platform::kMsPerDay < ends % platform::kMsPerDay, relay,
                   "a job is asked about whose time is over");
            awoken += int(ends < clock.nowMs());
        }
        const int yes = mode == switching::cmRunning ? int(chance(60)) : int(!chance(5));
        FGranted = yes == 1 && mode != switching::cmNoAnswer ? &relay : nullptr;
        return yes == 1 ? 1 : static_cast<int>(FRandom() % 2) * 2; // 0 or 2: not yes
    }

    void onLog(const QString& text)
    {
        if (text.startsWith(kSent)) {
            const QString key = text.mid(kSent.size());
            FSent.push_back(key);
            expect(std::exchange(FGranted, nullptr) == &byNumber(key), byNumber(key),
                   "it is commanded without permission");
            ++commands;
        }
    }

    void onError(const QString& text)
    {
        if (!text.endsWith(QLatin1String(" does not working"))) {
            ADD_FAILURE() << qPrintable(text);
            wrong = true;
        }
    }

    // ---- the boards

    void onCommand(const sim::TReceivedCommand& received)
    {
        const auto command = sim::parseBoardCommand(received.Line);
        if (!command || command->Order != sim::TBoardOrder::Relay) {
            return;
        }
        const QString key = QString::fromLatin1(command->Address) + QString::number(command->Number);
        TRelay& relay = byNumber(key);
        expect(!FSent.empty() && FSent.front() == key, relay, "it hears what is not in the log");
        if (!FSent.empty()) {
            FSent.pop_front();
        }
        relay.on = !relay.on; // the command changes it over
    }

    /// Somebody switches a relay at its board, or the board loses its power.
    void meddle()
    {
        TRelay& relay = FRelays[FRandom() % (kPinging * kRelaysOfPair)];
        const bool power = chance(4);
        if (power) {
            bus.restart(relay.board);
        } else {
            bus.switchRelay(relay.board, relay.number, !relay.on);
            relay.on = !relay.on;
        }
        for (TRelay& other : FRelays) {
            if (other.board == relay.board) {
                other.on = other.on && !power;
                other.touchedAt = clock.nowMs();
            }
        }
        ++touches;
    }

    // ---- what must be so

    void check()
    {
        expect(FSent.empty(), FRelays[0], "a command in the log was heard by nobody");
        for (; FLinked < device.StackItemsCount(); ++FLinked) {
            const auto job = device.StackItem(FLinked);
            byJob(job->Device, job->Relay).job = job;
        }
        const qint64 now = clock.nowMs();
        for (const TRelay& relay : FRelays) {
            const bool on = bus.relayOn(relay.board, relay.number);
            expect(on == relay.on, relay, "the log does not explain its state");
            if (now - relay.touchedAt > kPolledMs) {
                expect(on == (relay.job && relay.job->StatusDevice == kOn), relay,
                       "the job table does not know its state");
            }
            ++states;
            lit += int(on);
            if (relay.job && relay.job->Status == kOn && relay.job->StatusDevice == kOn) {
                const qint64 ends = common::WholeMs(relay.job->Finishtime);
                asleep += int(ends > now && ends % platform::kMsPerDay < now % platform::kMsPerDay);
            }
        }
    }

    void expect(bool right, const TRelay& relay, const char* what)
    {
        if (!right && !std::exchange(wrong, true)) {
            ADD_FAILURE() << qPrintable(relay.board) << ' ' << relay.number << " at "
                          << qPrintable(common::DateTimeToText(platform::Now())) << ": " << what;
        }
    }

    std::mt19937 FRandom{20'260'105};
    std::vector<TRelay> FRelays;
    std::map<QString, std::size_t> FByNumber;
    std::map<QString, std::size_t> FByJob;
    std::deque<QString> FSent; // in the log, and on their way
    const TRelay* FGranted = nullptr;
    int FLinked = 0; // jobs that their relays know
};

TEST(SwitchDays, EveryStateIsExplained)
{
    TDays days;
    days.hearBoards();
    const qint64 end = days.clock.nowMs() + kDays * platform::kMsPerDay;
    while (days.clock.nowMs() < end && !days.wrong) {
        days.step();
    }
    EXPECT_EQ(days.device.StackItemsCount(), kPairs * kRelaysOfPair);
    EXPECT_GT(days.commands, kDays * 1'000);
    EXPECT_GT(days.touches, kDays * 500);
    EXPECT_GT(days.lit, kDays * 100'000);
    EXPECT_GT(days.asleep, kDays * 50);
    EXPECT_GT(days.awoken, kDays * 2);
    for (const qint64 asked : days.questions) {
        EXPECT_GT(asked, 50);
    }
    EXPECT_EQ(days.bus.badCommands(), 0);
    EXPECT_EQ(days.bus.strayCommands(), 0);
    EXPECT_EQ(days.bus.skippedBytes(), 0);
    std::printf("%lld commands, %lld states checked, %lld of them on, %lld questions about running jobs\n",
                static_cast<long long>(days.commands), static_cast<long long>(days.states),
                static_cast<long long>(days.lit), static_cast<long long>(days.questions[2]));
}

} // namespace
} // namespace tnv5::integration
