// Sixteen D24 gates of all types behind the real connector, with random passers-by: every pass ends in
// exactly one way, every command arrives, and every display shows the last message.

#include "sim/board_bus.h"
#include "sim/memory_stream.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/common/messages.h"
#include "tnv5/d24/d24_device.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

namespace tnv5::integration {
namespace {

using platform::TTimer;
using sim::TBehaviour;

constexpr int kBoards = 16;
constexpr int kWidth = 20;
const QString kLink = QStringLiteral("0.0.0.0");
const QString kTypes = QStringLiteral("GITD");

enum class TEnd { UnderWay, Refused, TimedOut, Passed, Unanswered };

TEnd endOf(int mode)
{
    switch (mode) {
    case d24::cmTimeout:
        return TEnd::TimedOut;
    case d24::cmFinish:
        return TEnd::Passed;
    case d24::cmNoAnswer:
        return TEnd::Unanswered;
    default:
        return TEnd::UnderWay;
    }
}

/// One board, what the people there have done, and what must have come of it.
struct TPlace
{
    QChar type;
    // whoever is there, or was there last
    QString card;
    TBehaviour behaviour = TBehaviour::PassesThrough;
    bool asked = false; // the host
    TEnd end = TEnd::Refused;
    double began = 0;
    // all of them
    qint64 people = 0;
    qint64 ended = 0;
    qint64 opened = 0;
    qint64 refused = 0;
    QStringList shown = {QString(), QString()};
    double nextAt = 0; // when the next one comes
};

/// The bus, the host and the people.
class TStreet
{
public:
    TStreet(sim::TByteStream& stream, platform::TComPort& port, int pauseMs) : bus(stream), FPauseMs(pauseMs)
    {
        for (int number = 0; number < kBoards; ++number) {
            const QChar type = kTypes[number % kTypes.size()];
            const QString address = QString::number(number).rightJustified(3, u'0') + type;
            bus.addBoard(address, kWidth);
            places[address].type = type;
        }
        bus.Guest = TBehaviour::PassesThrough;
        connector.SetConnectorType(connector::podComPort);
        connector.SetComport(&port);
        connector.SetOnLog([this](auto*, const QString& text) { commands += text.startsWith(u'$') ? 1 : 0; });
        connector.SetOnError([this](auto*, const QString& text) { errors << text; });
        device.SetConnector(&connector);
        device.SetOnError([this](auto*, const QString& text) { errors << text; });
        device.SetOnCheckSQL([this](auto*, const QVariant&, const QVariant& address, const QVariant&,
                                    const QVariant& card, const QVariant&, QImage&, const QVariant& mode,
                                    QVariant& mess, QVariant& result) {
            onCheck(places[address.toString()], card.toString(), mode.toInt(), mess, result);
        });
        device.SetOnCheckStatus([this](auto*, const QVariant& name, const QVariant&, const QVariant&,
                                       const QVariant&, const QVariant&, const QVariant& status,
                                       const QVariant&) {
            crossings += name == common::kCome && status == QStringLiteral("CROSS") ? 1 : 0;
        });
        FLook.OnTimer = [this](TTimer*) { look(); };
    }

    void start(int pingMs, int lookMs)
    {
        bus.setPingInterval(pingMs);
        FLook.SetInterval(lookMs);
        FLook.SetEnabled(true);
    }

    /// At every board somebody shows a card, and passes if allowed.
    void everybodyShows(const QString& card)
    {
        for (auto& [address, place] : places) {
            expect(place, TBehaviour::PassesThrough);
            place.card = card;
            EXPECT_TRUE(bus.readCard(address, card));
        }
    }

    /// Nobody comes any more.
    void stop()
    {
        FComing = false;
        bus.setPingInterval(0);
    }

    bool everyDisplayKnown() const
    {
        int known = 0;
        for (int index = 0; index < connector.DeviceCount(); ++index) {
            known += connector.DeviceItem(index)->DisplayLine == kWidth ? 1 : 0;
        }
        return known == kBoards;
    }

    bool quiet() const
    {
        return std::all_of(places.begin(), places.end(),
                           [this](const auto& entry) { return settled(entry.first, entry.second); }) &&
               device.StackItemsCount() == 0 && bus.rightCommands() == commands && crossings == crossed;
    }

    void check() const
    {
        EXPECT_EQ(errors, QStringList());
        EXPECT_EQ(bus.rightCommands(), commands);
        EXPECT_EQ(bus.badCommands(), 0);
        EXPECT_EQ(bus.strayCommands(), 0);
        EXPECT_EQ(bus.skippedBytes(), 0);
        EXPECT_EQ(crossings, crossed);
        EXPECT_EQ(device.StackItemsCount(), 0);
        EXPECT_EQ(device.DeviceList().size(), kBoards);
        for (const auto& [address, place] : places) {
            EXPECT_GT(place.people, 0) << qPrintable(address);
            EXPECT_EQ(place.ended, place.people) << qPrintable(address);
            EXPECT_EQ(bus.counts(address).Opened, place.opened) << qPrintable(address);
            EXPECT_EQ(bus.counts(address).Refused, place.refused) << qPrintable(address);
            EXPECT_EQ(bus.counts(address).Echoes, bus.counts(address).Pings) << qPrintable(address);
            EXPECT_EQ(bus.rows(address).value(0).trimmed(), place.shown[0]) << qPrintable(address);
            EXPECT_EQ(bus.rows(address).value(1).trimmed(), place.shown[1]) << qPrintable(address);
        }
    }

    qint64 people() const
    {
        qint64 sum = 0;
        for (const auto& [address, place] : places) {
            sum += place.people;
        }
        return sum;
    }

    sim::TBoardBus bus;
    connector::TDeviceConnector connector;
    d24::TTurnStylerDeviceD24 device;
    std::map<QString, TPlace> places;
    QStringList errors;
    qint64 commands = 0;
    qint64 crossings = 0; // reported
    qint64 crossed = 0;

private:
    int random(int below) { return static_cast<int>(FRandom() % static_cast<unsigned>(below)); }

    void onCheck(TPlace& place, const QString& card, int mode, QVariant& mess, QVariant& result)
    {
        EXPECT_EQ(card, place.card);
        EXPECT_EQ(place.end, TEnd::UnderWay) << "a pass ends once";
        // a board opens by its button at once: all of its lines may be there before the component's next tick
        EXPECT_TRUE(place.asked == (mode != d24::cmOpen) || place.card == common::kCardButton)
            << "the host is asked once";
        if (mode == d24::cmOpen) {
            place.asked = true;
            result = int(decide(place, mess));
        } else if (endOf(mode) != TEnd::UnderWay) {
            result = 1;
            finish(place, endOf(mode));
        }
    }

    /// Cards with an odd number are refused.
    bool decide(TPlace& place, QVariant& mess)
    {
        const bool gate = place.type != u'I';
        if (common::IsPseudoCard(place.card)) {
            place.opened += gate && place.card == common::kCardManual ? 1 : 0;
            return true;
        }
        const bool allowed = place.card.toInt() % 2 == 0;
        place.shown = QStringList({QStringLiteral("Card ") + place.card,
                                   allowed ? QStringLiteral("welcome") : QStringLiteral("no")});
        mess = u'|' + place.shown.join(u'|') + QStringLiteral("||||");
        if (allowed) {
            place.opened += gate ? 1 : 0;
        } else {
            place.refused += gate ? 1 : 0;
            finish(place, TEnd::Refused);
        }
        return allowed;
    }

    static void finish(TPlace& place, TEnd end)
    {
        place.end = end;
        ++place.ended;
        const bool spansMidnight = std::floor(place.began) != std::floor(platform::Now());
        if (end != TEnd::Refused && !spansMidnight) { // over midnight a pass times out at once
            EXPECT_TRUE(mayEnd(place, end))
                << qPrintable(QString(place.type)) << ' ' << qPrintable(place.card) << ' ' << int(end);
        }
    }

    static bool mayEnd(const TPlace& place, TEnd end)
    {
        if (place.type == u'I' || place.card == common::kCardManual) {
            return end == TEnd::Passed;
        }
        const bool passes = place.behaviour == TBehaviour::PassesThrough;
        // a gate and the button are done within some ticks, unless the board was faster
        const bool done = (place.card == common::kCardButton && end == TEnd::Passed) ||
                          (place.type == u'G' && end == TEnd::Unanswered);
        return done || end == (passes ? TEnd::Passed : TEnd::TimedOut);
    }

    /// Nobody is there, the host has done with the last one, and every command for the board has arrived.
    bool settled(const QString& address, const TPlace& place) const
    {
        const sim::TBoardCounts counts = bus.counts(address);
        return place.end != TEnd::UnderWay && !bus.gateOpen(address) && counts.Opened == place.opened &&
               counts.Refused == place.refused && device.p_hw_FindDevice(kLink, address) < 0;
    }

    void look()
    {
        if (!FComing || !everyDisplayKnown()) {
            return;
        }
        for (auto& [address, place] : places) {
            if (!settled(address, place)) {
                place.nextAt = platform::Now() + random(FPauseMs) / double(platform::kMsPerDay);
            } else if (platform::Now() >= place.nextAt) {
                come(address, place);
            }
        }
    }

    /// Somebody steps up.
    static void expect(TPlace& place, TBehaviour behaviour)
    {
        place.behaviour = behaviour;
        place.asked = false;
        place.end = TEnd::UnderWay;
        place.began = platform::Now();
        ++place.people;
    }

    void come(const QString& address, TPlace& place)
    {
        const int what = random(20);
        if (what == 0) {
            ++crossed;
            EXPECT_TRUE(bus.walkThrough(address));
            place.nextAt = platform::Now() + random(FPauseMs) / double(platform::kMsPerDay);
            return;
        }
        expect(place, what == 1  ? TBehaviour::WalksAway
                      : what < 5 ? TBehaviour::GivesUp
                                 : TBehaviour::PassesThrough);
        if (what == 18) {
            place.card = common::kCardButton;
            place.opened += place.type != u'I' ? 1 : 0;
            EXPECT_TRUE(bus.pressButton(address, place.behaviour));
        } else if (what == 19) {
            place.card = common::kCardManual;
            device.p_hw_manual(kLink, address, QStringLiteral("OPEN"));
        } else {
            place.card = QString::number(10'000'000 + random(1'000'000));
            EXPECT_TRUE(bus.readCard(address, place.card, place.behaviour));
        }
    }

    TTimer FLook;
    std::mt19937 FRandom;
    int FPauseMs;
    bool FComing = true;
};

TEST(D24, ADayOfSixteenGates)
{
    constexpr qint64 kHourMs = 3'600'000;
    constexpr int kHours = 24;
    testkit::TManualClock clock;
    sim::TMemoryStream stream;
    testkit::TMemoryPort port;
    stream.KeepWrites = false;
    port.KeepWrites = false;
    stream.OnWritten = [&](const QByteArray& bytes) { port.feed(bytes); };
    port.OnWritten = [&](const QByteArray& bytes) { stream.feed(bytes); };
    port.Open();
    TStreet street(stream, port, 600'000);
    street.start(10'000, 1'000);
    for (int hour = 0; hour < kHours; ++hour) {
        clock.advance(kHourMs);
    }
    street.stop();
    clock.advance(60'000);
    EXPECT_TRUE(street.quiet());
    EXPECT_GT(street.people(), 1'000);
    street.check();
}

bool everyPlaceVisited(const TStreet& street)
{
    return std::all_of(street.places.begin(), street.places.end(),
                       [](const auto& place) { return place.second.people > 0; });
}

// A minute; ten with TNV5_LONG=1.
TEST(D24, OverAPseudoTerminal)
{
    const int seconds = qEnvironmentVariableIntValue("TNV5_LONG") > 0 ? 600 : 60;
    testkit::TManualClock clock;
    sim::TPty pty(QStringLiteral("boards"));
    platform::TSerialPort port;
    port.SetPort(pty.path());
    TLockStep time(clock, pty, port);
    port.Open();
    time.lines.settle();
    TStreet street(pty, port, 200);
    street.bus.Delays.ProgressMs = 20;
    street.bus.Delays.PassageMs = 20;
    street.bus.Delays.GiveUpMs = 50;
    street.bus.Delays.OpenMs = 200;
    street.device.SetTimeOut(0);
    street.start(500, 10);
    EXPECT_TRUE(time.until([&] { return street.everyDisplayKnown(); }, 600));
    clock.advance(seconds * 1'000);
    EXPECT_TRUE(everyPlaceVisited(street));
    street.stop();
    EXPECT_TRUE(time.until([&] { return street.quiet(); }, 20'000));
    EXPECT_EQ(pty.lostBytes(), 0);
    street.check();
}

// One after the other and without time-outs, so that nothing depends on how long anything takes.
TEST(D24, RealTimeOverAPseudoTerminal)
{
    sim::TPty pty(QStringLiteral("boards"));
    platform::TSerialPort port;
    port.SetPort(pty.path());
    port.Open();
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    TStreet street(pty, port, 0);
    street.bus.Delays.ProgressMs = 0;
    street.bus.Delays.PassageMs = 0;
    street.device.SetTimeOut(3'600);
    street.bus.setPingInterval(200);
    EXPECT_TRUE(eventually([&] { return street.everyDisplayKnown(); }));
    for (const char* card : {"10000002", "10000003"}) { // the second is refused
        street.everybodyShows(QString::fromLatin1(card));
        EXPECT_TRUE(eventually([&] { return street.quiet(); })) << card;
    }
    street.stop();
    EXPECT_TRUE(eventually([&] { return street.quiet(); }));
    EXPECT_EQ(pty.lostBytes(), 0);
    street.check();
}

} // namespace
} // namespace tnv5::integration
