#pragma once

#include "club_fixture.h"
#include "sim/board_bus.h"
#include "sim/memory_stream.h"
#include "tnv5/host/switch_host.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/testing/memory_port.h"

namespace tnv5::host {

const QString kSun1 = QStringLiteral("Sun 1");     // on 100A, relay 1
const QString kSun2 = QStringLiteral("Sun 2");     // on 100B, relay 3: the first of board B
const QString kNoLamp = QStringLiteral("no lamp"); // on 100A, relay 2

/// Two lamps on a pair of simulated relay boards, on a line in memory, with time in hand. Everything that is
/// written arrives `kLineMs` later.
class TLampFixture : public TClubFixture
{
protected:
    static constexpr int kLineMs = 2;
    static constexpr int kPingMs = 5'000;

    TLampFixture()
    {
        anna = addMember(QStringLiteral("Anna Berg"), QStringLiteral("1"));
        boris = addMember(QStringLiteral("Boris Klein"), QStringLiteral("2"));
        club.setBalance(anna, 1'000);
        TLampBooks books(club);
        books.setLamp({kSun1, QStringLiteral("100A"), QStringLiteral("1"), 50});
        books.setLamp({kSun2, QStringLiteral("100B"), QStringLiteral("3"), 70});
        bus.addPair(QStringLiteral("100"));
        bus.OnRelay = [this](const QString& address, int relay, bool on) {
            const QString state = on ? QStringLiteral("on") : QStringLiteral("off");
            switched << QStringLiteral("%1 %2 %3").arg(address).arg(relay).arg(state);
            switchedAt << clock.nowMs();
        };
        stream.OnWritten = [this](const QByteArray& bytes) {
            line.after(kLineMs, [this, bytes] { port.feed(bytes); });
        };
        port.OnWritten = [this](const QByteArray& bytes) {
            line.after(kLineMs, [this, bytes] { stream.feed(bytes); });
        };
        port.Open();
        start();
    }

    /// The host's program begins; the boards go on as they are.
    void start()
    {
        connector = std::make_unique<connector::TDeviceConnector>();
        connector->SetConnectorType(connector::podComPort);
        connector->SetComport(&port);
        device = std::make_unique<switching::TSwitchDevice>();
        device->SetConnector(connector.get());
        host = std::make_unique<TSwitchHost>(*device, club);
        host->OnTime = [this](const TLampTime& time) { news << logLine(time).mid(14); };
        host->OnTrouble = [this](const QString& text) { troubles << text; };
    }

    void end()
    {
        host.reset();
        device.reset();
        connector.reset();
    }

    void hearBoards()
    {
        bus.setPingInterval(kPingMs);
        clock.advance(2 * kPingMs);
    }

    void seconds(double count) { clock.advance(static_cast<qint64>(count * 1'000)); }
    void minutes(double count) { seconds(count * 60); }

    bool sun1() const { return bus.relayOn(QStringLiteral("100A"), 1); }
    bool sun2() const { return bus.relayOn(QStringLiteral("100B"), 1); }
    qint64 balance() { return club.holderOf(QStringLiteral("1"))->member.balance; }
    QList<TLampTime> times() { return TLampBooks(club).timesAfter(0, 1'000); }
    QStringList takeSwitched()
    {
        switchedAt.clear();
        return std::exchange(switched, {});
    }

    testkit::TManualClock clock;
    sim::TMemoryStream stream;
    sim::TBoardBus bus{stream};
    testkit::TMemoryPort port;
    sim::TLater line;
    std::unique_ptr<connector::TDeviceConnector> connector;
    std::unique_ptr<switching::TSwitchDevice> device;
    std::unique_ptr<TSwitchHost> host;
    qint64 anna = 0;
    qint64 boris = 0;
    QStringList switched;
    QList<qint64> switchedAt;
    QStringList news;
    QStringList troubles;
};

} // namespace tnv5::host
