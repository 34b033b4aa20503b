// The line connector against a simulated bus of 64 boards: no line may be lost, no checksum be wrong.

#include "sim/board_bus.h"
#include "sim/memory_stream.h"
#include "sim/pty.h"
#include "support/lock_step.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/connector/device_connector.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

#include <gtest/gtest.h>
#include <map>

namespace tnv5::integration {
namespace {

using connector::TDeviceConnector;
using platform::TTimer;
using sim::boardChecksum;

constexpr int kPairs = 32;
constexpr int kWidth = 20;
constexpr int kKinds = 9; // of things that happen at a board
const QByteArray kLink = QByteArrayLiteral("0.0.0.0:");

/// Stands between the bus and its stream and notes every line that a board says.
class TTap final : public sim::TByteStream
{
public:
    explicit TTap(sim::TByteStream& stream) : FStream(stream)
    {
        FStream.OnRead = [this](const QByteArray& bytes) { deliver(bytes); };
    }
    ~TTap() override { FStream.OnRead = nullptr; }

    void write(const QByteArray& bytes) override
    {
        said.append(bytes);
        FStream.write(bytes);
    }

    QByteArrayList said;

private:
    sim::TByteStream& FStream;
};

QByteArray checked(const QByteArray& line)
{
    return line + boardChecksum(line);
}

/// What must reach the consumer when a board says a line; written down from the wire format.
QByteArrayList routesOf(const QByteArray& said)
{
    const QByteArray line = said.chopped(1);
    const QByteArray address = line.mid(1, 4);
    const auto routed = [&](const QByteArray& body) { return checked('#' + kLink + address + body); };
    const QByteArray same = kLink + line.mid(1);
    if (line.startsWith('$')) {
        if (line.contains("PING")) {
            return {routed("PING")};
        }
        return line.contains("ET") ? QByteArrayList({routed("PING"), '$' + same})
                                   : QByteArrayList({'$' + same});
    }
    if (line.contains("BT")) {
        return {routed("BTPH")};
    }
    if (line.contains("HW")) {
        QByteArrayList lines;
        char number = address.endsWith('A') ? '1' : '3';
        for (const char state : line.mid(line.indexOf("GR=") + 3, address.endsWith('A') ? 2 : 3)) {
            lines << routed(QByteArray("RELAY") + number++ + state);
        }
        return lines << '#' + same;
    }
    return line.contains("GO") ? QByteArrayList({routed("CROSS")}) : QByteArrayList();
}

QByteArrayList allRoutes(const QByteArrayList& said)
{
    QByteArrayList routes;
    for (const QByteArray& line : said) {
        routes += routesOf(line);
    }
    return routes;
}

QByteArrayList sorted(QByteArrayList lines)
{
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// A bus with people and a host that both keep it busy, and what must come of it.
class TBusyBus
{
public:
    TBusyBus(sim::TByteStream& stream, platform::TComPort& port) : tap(stream), bus(tap)
    {
        for (int i = 0; i < kPairs; ++i) {
            bus.addPair(QString::number(i).rightJustified(3, u'0'), i % 3 == 0 ? 0 : kWidth,
                        i % 2 == 0 ? 0 : kWidth);
        }
        bus.Guest = sim::TBehaviour::PassesThrough;
        device.SetConnectorType(connector::podComPort);
        device.SetComport(&port);
        device.SetOnGetData([this](auto*, const QString& line) { routed << line.toLatin1(); });
        device.SetOnError([this](auto*, const QString& text) { errors << text; });
        device.SetOnLog([this](auto*, const QString& text) { sent += text.startsWith(u'$') ? 1 : 0; });
        addresses = bus.addresses();
        act.OnTimer = [this](TTimer*) { step(); };
    }

    void start(int pingMs, int stepMs)
    {
        bus.setPingInterval(pingMs);
        act.SetInterval(stepMs);
        act.SetEnabled(true);
    }

    /// Nothing new begins.
    void stop()
    {
        bus.setPingInterval(0);
        act.SetEnabled(false);
    }

    bool everyBoardPinged(qint64 times) const
    {
        return std::all_of(addresses.begin(), addresses.end(),
                           [&](const QString& each) { return bus.counts(each).Pings >= times; });
    }

    /// The host and the people have done every kind of thing.
    bool everythingDone() const { return steps >= kKinds; }

    bool quiet() const { return bus.rightCommands() == sent && routed.size() == allRoutes(tap.said).size(); }

    void check() const
    {
        EXPECT_EQ(errors, QStringList());
        EXPECT_EQ(bus.badCommands(), 0);
        EXPECT_EQ(bus.strayCommands(), 0);
        EXPECT_EQ(bus.skippedBytes(), 0);
        EXPECT_EQ(bus.rightCommands(), sent);
        EXPECT_EQ(tap.said.size(), bus.linesSaid());
        EXPECT_EQ(sorted(routed), sorted(allRoutes(tap.said)));
        for (const QString& address : addresses) {
            checkBoard(address);
        }
    }

    TTap tap;
    sim::TBoardBus bus;
    TDeviceConnector device;
    TTimer act;
    QStringList addresses;
    QByteArrayList routed;
    QStringList errors;
    qint64 sent = 0;

private:
    struct TShould
    {
        QString row; // what row 2 shows
        bool relay = false;
        qint64 opened = 0;
        qint64 refused = 0;
    };

    QString command(const char* code, const QString& address, const QString& argument = {}) const
    {
        return QString::fromLatin1(code + kLink) + address + argument;
    }

    /// One thing of many, at one board after the other.
    void step()
    {
        const int number = steps++;
        const QString address = addresses[number * 7 % addresses.size()];
        TShould& wanted = should[address];
        switch (number % kKinds) {
        case 0:
            device.SendCommand(command("RL", address, QStringLiteral("1")));
            wanted.relay = !wanted.relay;
            break;
        case 1:
            device.SendCommand(command("GO", address));
            ++wanted.opened;
            break;
        case 2:
            device.SendCommand(command("PH", address));
            ++wanted.refused;
            break;
        case 3:
            show(address, QStringLiteral("No. %1 $").arg(number), wanted);
            break;
        case 4:
            bus.pressButton(address);
            break;
        case 5:
            bus.walkThrough(address);
            break;
        case 6:
            bus.readCard(address, QString::number(10'000'000 + number));
            break;
        case 7:
            bus.say(address, '$', "SS1N");
            break;
        default:
            device.SendCommand(command("HW", address));
        }
    }

    void show(const QString& address, const QString& text, TShould& wanted)
    {
        const connector::DeviceInfo board = device.GetDeviceFromList(QStringLiteral("0.0.0.0"), address);
        device.SendCommand(command("SH", address, QStringLiteral("||%1|||LS|").arg(text)));
        if (board->DisplayLine > 0) {
            const QString before(kWidth / 2 - text.size() / 2, u' ');
            wanted.row = (before + text).leftJustified(kWidth);
        }
    }

    void checkBoard(const QString& address) const
    {
        const sim::TBoardCounts counts = bus.counts(address);
        EXPECT_EQ(counts.Echoes, counts.Pings) << qPrintable(address);
        EXPECT_GT(counts.Hardware, 0) << qPrintable(address);
        const auto found = should.find(address);
        if (found == should.end()) {
            return;
        }
        const TShould& wanted = found->second;
        EXPECT_EQ(bus.relayOn(address, 1), wanted.relay) << qPrintable(address);
        EXPECT_EQ(counts.Opened, wanted.opened) << qPrintable(address);
        EXPECT_EQ(counts.Refused, wanted.refused) << qPrintable(address);
        if (!wanted.row.isEmpty()) {
            EXPECT_EQ(bus.rows(address).value(1), wanted.row) << qPrintable(address);
        }
    }

    int steps = 0;
    std::map<QString, TShould> should;
};

TEST(Bus, AnHourOf64Boards)
{
    constexpr qint64 kHourMs = 3'600'000;
    constexpr int kPingMs = 5'000;
    testkit::TManualClock clock;
    sim::TMemoryStream stream;
    testkit::TMemoryPort port;
    stream.KeepWrites = false;
    port.KeepWrites = false;
    stream.OnWritten = [&](const QByteArray& bytes) { port.feed(bytes); };
    port.OnWritten = [&](const QByteArray& bytes) { stream.feed(bytes); };
    port.Open();
    TBusyBus busy(stream, port);
    busy.start(kPingMs, 250);
    clock.advance(kHourMs + 100);
    busy.stop();
    clock.advance(10'000);
    EXPECT_TRUE(busy.everyBoardPinged(kHourMs / kPingMs));
    EXPECT_EQ(busy.routed, allRoutes(busy.tap.said)); // one line a read: the order too
    busy.check();
}

// A minute; ten with TNV5_LONG=1.
TEST(Bus, OverAPseudoTerminal)
{
    constexpr int kPingMs = 1'000;
    const int seconds = qEnvironmentVariableIntValue("TNV5_LONG") > 0 ? 600 : 60;
    testkit::TManualClock clock;
    sim::TPty pty(QStringLiteral("boards"));
    platform::TSerialPort port;
    port.SetPort(pty.path());
    TLockStep time(clock, pty, port);
    port.Open();
    time.lines.settle();
    TBusyBus busy(pty, port);
    busy.start(kPingMs, 10);
    clock.advance(seconds * 1'000 + 100);
    busy.stop();
    clock.advance(100);
    EXPECT_TRUE(busy.everyBoardPinged(seconds));
    EXPECT_EQ(pty.lostBytes(), 0);
    busy.check();
}

TEST(Bus, RealTimeOverAPseudoTerminal)
{
    sim::TPty pty(QStringLiteral("boards"));
    platform::TSerialPort port;
    port.SetPort(pty.path());
    port.Open();
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    TBusyBus busy(pty, port);
    busy.start(300, 10);
    EXPECT_TRUE(eventually([&] { return busy.everyBoardPinged(1) && busy.everythingDone(); }));
    busy.stop();
    EXPECT_TRUE(eventually([&] { return busy.quiet(); }));
    EXPECT_EQ(pty.lostBytes(), 0);
    busy.check();
}

} // namespace
} // namespace tnv5::integration
